// The report in the form that was asked for.
#pragma once

#include "base/output_file.h"
#include "report/json.h"
#include "report/text.h"

namespace bgp_rehearse {

// False, with errno set, when not all of it could be written.
[[nodiscard]] inline bool write_report(const Report& report, bool json, bool colour, int file)
{
    if (!json) {
        return write_text_report(report, colour, file);
    }
    const std::string text = json_report(report);
    return write_all(file, text.data(), text.size());
}

}  // namespace bgp_rehearse

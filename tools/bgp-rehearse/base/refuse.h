// Files that the user names and that cannot be what they are to be.
#pragma once

#include <fmt/format.h>

#include <string>

#include "base/exit_status.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

// Throws CommandError (BadInput): "FILE: WHY".
[[noreturn]] inline void refuse(const std::string& file, const std::string& why)
{
    throw CommandError(ExitStatus::BadInput, fmt::format("{}: {}", escaped(file), escaped(why)));
}

}  // namespace bgp_rehearse

// Text that is put together line by line.
#pragma once

#include <fmt/format.h>

#include <string>
#include <utility>

namespace bgp_rehearse {

class LineWriter {
protected:
    template <typename... Arguments>
    void line(fmt::format_string<Arguments...> format, Arguments&&... arguments)
    {
        out_ += fmt::format(format, std::forward<Arguments>(arguments)...);
        out_ += '\n';
    }

    std::string out_;
};

}  // namespace bgp_rehearse

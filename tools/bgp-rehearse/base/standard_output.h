// What the command prints.
#pragma once

#include <string_view>

namespace bgp_rehearse {

// Writes all of it to standard output. Throws CommandError (NotWritten) when that is closed, full or a broken pipe.
void print_out(std::string_view text);

// Writes to standard error, where nobody hears of a failure.
void print_message(std::string_view text) noexcept;

}  // namespace bgp_rehearse

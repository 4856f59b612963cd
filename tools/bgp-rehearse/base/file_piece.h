// A piece of a file that is written.
#pragma once

#include <cstddef>
#include <string_view>

namespace bgp_rehearse {

// Puts a text in place of `size` bytes, whatever its own size: what stands behind moves. False, with errno set, when that
// could not be done; the file is one to read and write.
[[nodiscard]] bool replace_in_file(int file, std::size_t place, std::size_t size, std::string_view text);

}  // namespace bgp_rehearse

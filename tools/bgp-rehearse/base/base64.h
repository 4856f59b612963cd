// Bytes as text of 64 characters.
#pragma once

#include <string>
#include <string_view>

namespace bgp_rehearse {

std::string base64_of(std::string_view bytes);

}  // namespace bgp_rehearse

// What a file looks like by its first bytes.
#pragma once

#include <string>
#include <string_view>

namespace bgp_platform::xml {

// Whether it may be compressed data or an archive: it is neither text, nor XML in any of its encodings, nor nothing but
// zeros.
bool may_be_packed(std::string_view head);

// What is said about a beginning that no XML document has; empty when it may be one.
std::string why_no_xml(std::string_view head);

}  // namespace bgp_platform::xml

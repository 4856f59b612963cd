// How messages show a text that came from outside.
#pragma once

#include <string>
#include <string_view>

namespace bgp_platform::schema {

// The text between double quotes: at most its first 200 bytes (whole UTF-8 characters, "..." behind the quotes when
// cut), with control characters, quotes and backslashes escaped.
std::string in_quotes(std::string_view text);

// The text's first 200 bytes (whole UTF-8 characters), "..." behind them when cut; nothing is escaped.
std::string shortened(std::string_view text);

}  // namespace bgp_platform::schema

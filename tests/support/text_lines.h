// Lines, without their ends.
#pragma once

#include <sstream>
#include <string>
#include <vector>

namespace bgp_test {

using Lines = std::vector<std::string>;

inline Lines operator+(Lines lines, const Lines& more)
{
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

// Of a text.
inline Lines lines_of(const std::string& text)
{
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

}  // namespace bgp_test

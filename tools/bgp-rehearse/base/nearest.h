// What a mistyped word was meant to be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace bgp_rehearse {

// The known word nearest to one that is none of them, when it is near enough to have been meant: one slip (a letter
// missing, added, wrong, or two exchanged) in up to five letters, and one more for each three beyond. Else empty.
std::string nearest(std::string_view word, const std::vector<std::string>& known);

// "; did you mean --interfaces?", or nothing.
std::string did_you_mean(std::string_view word, const std::vector<std::string>& known);

}  // namespace bgp_rehearse

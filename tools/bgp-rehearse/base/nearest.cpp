#include "base/nearest.h"

#include <algorithm>
#include <numeric>

namespace bgp_rehearse {

namespace {

// How many letters must be added, taken away, replaced or exchanged with their neighbour to make the one of the other.
std::size_t slips_between(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> two_above(to.size() + 1);
    std::vector<std::size_t> above(to.size() + 1);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        two_above.swap(above);
        above.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t replaced = above[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            row[j] = std::min({replaced, above[j] + 1, row[j - 1] + 1});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
                row[j] = std::min(row[j], two_above[j - 2] + 1);
            }
        }
    }
    return row.back();
}

}  // namespace

std::string nearest(std::string_view word, const std::vector<std::string>& known)
{
    std::string best;
    std::size_t fewest = std::max<std::size_t>(1, word.size() / 3) + 1;
    for (const std::string& each : known) {
        const std::size_t slips = slips_between(word, each);
        if (slips < fewest) {
            fewest = slips;
            best = each;
        }
    }
    return best;
}

std::string did_you_mean(std::string_view word, const std::vector<std::string>& known)
{
    const std::string meant = nearest(word, known);
    return meant.empty() ? std::string() : "; did you mean " + meant + "?";
}

}  // namespace bgp_rehearse

#include "sweep/trail.h"

#include <algorithm>

#include "judge/call_site.h"

namespace bgp_rehearse {

void Trail::take_line(std::string_view line)
{
    lines_.push_back({calls().size(), std::string(line)});
    steps_.take(line);
    if (steps_from_.empty() || steps_from_.back().second != steps_.current()) {
        steps_from_.emplace_back(calls().size(), steps_.current());
    }
}

Site Trail::site_of(std::size_t call) const
{
    const auto after = std::upper_bound(steps_from_.begin(), steps_from_.end(), call,
                                        [](std::size_t at, const auto& step) { return at < step.first; });
    return {after == steps_from_.begin() ? "update" : std::prev(after)->second, calls()[call].function,
            without_keys(calls()[call].path)};
}

bool Trail::logged_after(std::size_t call, std::string_view beginning) const
{
    return std::any_of(lines_.begin(), lines_.end(), [&](const Line& line) {
        return line.calls == call + 1 && line.text.compare(0, beginning.size(), beginning) == 0;
    });
}

std::string Trail::lines_after(std::size_t call) const
{
    std::string text;
    for (const Line& line : lines_) {
        if (line.calls == call + 1) {
            text += (text.empty() ? "" : " | ") + line.text;
        }
    }
    return text;
}

bool Trail::logged(std::string_view beginning) const
{
    return std::any_of(lines_.begin(), lines_.end(),
                       [&](const Line& line) { return line.text.compare(0, beginning.size(), beginning) == 0; });
}

}  // namespace bgp_rehearse

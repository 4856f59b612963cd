// What one upgrade did, in order: its calls, the step that each was made in, and the lines logged after each.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "calls/recorder.h"
#include "judge/upgrade_steps.h"
#include "sweep/site.h"

namespace bgp_rehearse {

class Trail {
public:
    // The calls are those of a recorder that is on, and outlives the trail.
    explicit Trail(const bgp_platform::capi::Recorder& recorder) : recorder_(recorder) {}

    void take_line(std::string_view line);  // as it is logged

    const std::vector<bgp_platform::capi::RecordedCall>& calls() const noexcept { return recorder_.calls(); }
    Site site_of(std::size_t call) const;
    bool logged_after(std::size_t call, std::string_view beginning) const;  // before the next call
    std::string lines_after(std::size_t call) const;                        // the same, for a message
    bool logged(std::string_view beginning) const;

private:
    struct Line {
        std::size_t calls;  // so many came before it
        std::string text;
    };

    const bgp_platform::capi::Recorder& recorder_;
    UpgradeSteps steps_{[] { return CallTotals{}; }};  // only asked which step is on
    std::vector<Line> lines_;
    std::vector<std::pair<std::size_t, std::string>> steps_from_;  // the step that is on from a call
};

}  // namespace bgp_rehearse

// An upgrade that is followed while it runs, in the process that it may end, and judged when it has returned.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device.h"
#include "judge/judgement.h"
#include "report/model.h"
#include "run/library.h"
#include "run/messages.h"
#include "run/request.h"
#include "run/watch.h"

namespace bgp_rehearse {

class FollowedUpgrade {
public:
    using TakeLine = std::function<void(std::string_view line)>;

    // Sets up the loaded device to be followed: what the parent has to know goes through the teller, calls and log lines
    // are noted in the watch as they come, and `take_line` gets each line of the log, too. All of them outlive this.
    FollowedUpgrade(const UpgradeLibrary& library, bgp_platform::Device& device, const Teller& teller,
                    const Watch& watch, TakeLine take_line = {});
    FollowedUpgrade(const FollowedUpgrade&) = delete;
    FollowedUpgrade& operator=(const FollowedUpgrade&) = delete;

    // From now on lines that can tell of no step are not even made: for one whose log nobody will ask for.
    void pass_over_other_lines();

    // Runs it. False: an exception left it.
    bool run(const UpgradeLimits& limits);

    // What there is to tell of one that returned.
    int result() const noexcept { return *result_; }  // of update()
    const std::vector<Step>& steps() const noexcept { return steps_.all(); }
    const FailedCalls& failed_calls() const noexcept { return failed_calls_; }
    const std::vector<LogPart>& log_parts() const noexcept { return log_parts_.all(); }

    struct Judged {
        std::optional<std::string> check;  // --commit-check: what is not valid, "" when all is
        Judgement judgement;
    };
    // Throws std::logic_error when the account of rows does not close.
    Judged judged(const RunOptions& options) const;

private:
    void follow_log(TakeLine take_line);
    void follow_failures();

    const UpgradeLibrary& library_;
    bgp_platform::Device& device_;
    const Teller& teller_;
    const Watch& watch_;
    UpgradeSteps steps_;
    LogParts log_parts_;
    FailedCalls failed_calls_;
    std::optional<int> result_;
};

}  // namespace bgp_rehearse

// Which steps of the upgrade ran, which had nothing to do and why, and what each asked of the C API: told from the log,
// line by line, while the upgrade writes it.
//
//     UpgradeSteps steps([&device] { return totals_of(device.calls()); });
//     device.log_sink = [&steps](std::string_view line) { steps.take(line); };
//     update(...);
//     steps.returned();
//     for (const Step& step : steps.all()) ...
//
// Each step writes its first line before its first call and its last line after its last one, so that each call belongs
// to one step. Calls outside of the steps belong to "update", which decides on them.
//
// Where a step did not run and the log does not say why, the contract's conditions for it do, one after the other: they
// are asked of whoever knows the stored configuration (stored_condition.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "calls/recorder.h"
#include "contract/step.h"

namespace bgp_rehearse {

struct CallTotals {
    std::size_t reads = 0;
    std::size_t writes = 0;
    std::size_t failed_writes = 0;  // of the writes
    std::size_t sessions = 0;       // calls that begin or end a session, or ask for more time
    std::size_t connections = 0;
};

CallTotals totals_of(const bgp_platform::capi::CallCounts& counts) noexcept;

// What came of a step; of several runs that which stands last here counts.
enum class StepOutcome {
    NotRun,
    CannotRun,  // it did not run because a value that it needs could not be read
    NothingToDo,
    Ran,
    Failed,  // it gave up
    Ended,   // the upgrade ended in it
};

// "did not run", "could not run", "nothing to do", "ran", "failed", "ended"
const char* name_of(StepOutcome outcome) noexcept;

struct Step {
    const char* name = "";   // of its function
    const char* title = "";  // in network words
    StepOutcome outcome = StepOutcome::NotRun;
    std::string text;      // why, in network words; empty where there is nothing to say
    std::string line;      // the log's line that says so, without its line end; empty where the log is silent
    std::size_t runs = 0;  // one for each entity that it ran for
    CallTotals calls;      // of all its runs
};

class UpgradeSteps {
public:
    // Whether what was stored when the upgrade began meets a condition.
    using Holds = std::function<bool(const bgp_contract::Condition&)>;

    // `calls_so_far` is asked at the borders of steps for all calls since the upgrade began, `holds` at the end of the
    // upgrade; without it every condition counts as met.
    explicit UpgradeSteps(std::function<CallTotals()> calls_so_far, Holds holds = {});

    // Takes a line of the log at the time that it is written. True when it began or ended a step or told what decides on
    // one that is passed over; the other lines need not be given.
    bool take(std::string_view line);

    // The step that runs now, "update" between the steps.
    const char* current() const noexcept { return steps_[current_].name; }
    std::size_t current_number() const noexcept { return current_ + 1; }  // its place among all, from 1

    // Whether take() may know a line of such a format (printf): what stands before its first conversion tells.
    bool may_know(const char* format) const noexcept;

    // The end of the upgrade: update() returned, or the upgrade ended where it was, after so many calls.
    void returned();
    void ended(const CallTotals& calls);

    // "update" and then the steps in their order; none when no line of the log told of any.
    const std::vector<Step>& all() const noexcept;

private:
    void begin(std::size_t step);
    void finish(StepOutcome outcome, const bgp_contract::Line* told = nullptr, std::string_view line = {});
    bool take_in_step(std::string_view line);
    bool take_entities(std::string_view line);
    bool take_reason(std::string_view line);
    bool take_reason(std::string_view line, const bgp_contract::Lines& lines, StepOutcome outcome, std::size_t step);
    void not_one_entity(Step* step) const;
    void settle_calls(const CallTotals& so_far);
    void give_reasons(std::size_t first_missed);
    void give_condition(std::size_t step);

    std::function<CallTotals()> calls_so_far_;
    Holds holds_;
    std::unordered_set<uint64_t> heads_;  // how the lines begin that take() can know
    std::vector<Step> steps_;
    std::size_t current_ = 0;
    std::size_t last_begun_ = 0;
    std::optional<long> entities_;  // that update() found; negative: they cannot be counted
    bool told_ = false;
    CallTotals settled_;  // calls that are in a step's count
};

}  // namespace bgp_rehearse

#include "judge/upgrade_steps.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

#include "contract/steps.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::kSteps;
using bgp_contract::Texts;

constexpr std::size_t kUpdate = 0;  // update() itself; the steps follow it

bool begins_with(std::string_view line, const char* beginning)
{
    return line.substr(0, std::strlen(beginning)) == beginning;
}

bool is_one_of(std::string_view line, const Texts& lines)
{
    return std::any_of(lines.begin(), lines.end(), [line](const char* each) { return begins_with(line, each); });
}

// The first characters of a line as one number. Every line that tells of a step has more than these.
uint64_t head_of(std::string_view line)
{
    char front[sizeof(uint64_t)] = {};
    line.copy(front, sizeof front);
    uint64_t head = 0;
    std::memcpy(&head, front, sizeof head);
    return head;
}

void add_heads(const bgp_contract::Step& step, std::unordered_set<uint64_t>* heads)
{
    heads->insert({head_of(step.first_line), head_of(step.last_line)});
    for (const Texts& lines : {step.nothing_to_do, step.failed, step.passed_over}) {
        for (const char* const line : lines) {
            heads->insert(head_of(line));
        }
    }
}

std::string trimmed(std::string_view line)
{
    return std::string(line.substr(0, line.find_last_not_of(" \n") + 1));
}

CallTotals operator-(const CallTotals& all, const CallTotals& part)
{
    return {all.reads - part.reads, all.writes - part.writes, all.failed_writes - part.failed_writes};
}

void add(const CallTotals& more, CallTotals* totals)
{
    totals->reads += more.reads;
    totals->writes += more.writes;
    totals->failed_writes += more.failed_writes;
}

}  // namespace

CallTotals totals_of(const bgp_platform::capi::CallCounts& counts) noexcept
{
    return {counts.reads(), counts.writes(), counts.failed_write_count()};
}

const char* name_of(StepOutcome outcome) noexcept
{
    switch (outcome) {
        case StepOutcome::NotRun:
            return "did not run";
        case StepOutcome::NothingToDo:
            return "nothing to do";
        case StepOutcome::Ran:
            return "ran";
        case StepOutcome::Failed:
            return "failed";
        case StepOutcome::Ended:
            break;
    }
    return "ended";
}

UpgradeSteps::UpgradeSteps(std::function<CallTotals()> calls_so_far)
    : calls_so_far_(std::move(calls_so_far)), steps_(std::size(kSteps))
{
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        steps_[i].name = kSteps[i].name;
        add_heads(kSteps[i], &heads_);
    }
}

bool UpgradeSteps::take(std::string_view line)
{
    const bool known = heads_.count(head_of(line)) > 0 && (take_in_step(line) || take_reason(line));
    told_ = told_ || known;
    return known;
}

bool UpgradeSteps::take_in_step(std::string_view line)
{
    const bgp_contract::Step& running = kSteps[current_];
    if (is_one_of(line, running.failed)) {
        finish(StepOutcome::Failed, line);
    } else if (is_one_of(line, running.nothing_to_do)) {
        finish(StepOutcome::NothingToDo, line);
    } else if (begins_with(line, running.last_line)) {
        finish(StepOutcome::Ran, {});
    } else {
        for (std::size_t step = 0; step < steps_.size(); ++step) {
            if (begins_with(line, kSteps[step].first_line)) {
                begin(step);
                return true;
            }
        }
        return false;
    }
    return true;
}

// Kept for each step that it may explain; a step that begins after all forgets it.
bool UpgradeSteps::take_reason(std::string_view line)
{
    bool known = false;
    for (std::size_t step = 0; current_ == kUpdate && step < steps_.size(); ++step) {
        if (steps_[step].runs == 0 && is_one_of(line, kSteps[step].passed_over)) {
            steps_[step].text = trimmed(line);
            known = true;
        }
    }
    return known;
}

void UpgradeSteps::begin(std::size_t step)
{
    if (current_ != kUpdate) {
        finish(StepOutcome::Ran, {});
    }
    settle_calls(calls_so_far_());
    current_ = step;
    last_begun_ = step;
    Step& begun = steps_[step];
    if (begun.runs == 0) {
        begun.text.clear();
    }
    ++begun.runs;
}

void UpgradeSteps::finish(StepOutcome outcome, std::string_view line)
{
    settle_calls(calls_so_far_());
    Step& step = steps_[current_];
    if (outcome > step.outcome) {
        step.outcome = outcome;
        step.text = trimmed(line);
    }
    current_ = kUpdate;
}

void UpgradeSteps::settle_calls(const CallTotals& so_far)
{
    add(so_far - settled_, &*steps_[current_].calls);
    settled_ = so_far;
}

void UpgradeSteps::returned()
{
    if (current_ != kUpdate) {
        finish(StepOutcome::Ran, {});
    }
    settle_calls(calls_so_far_());
    steps_[kUpdate].outcome = StepOutcome::Ran;
    give_reasons(steps_.size());
}

void UpgradeSteps::ended(const std::optional<CallTotals>& calls)
{
    if (calls) {
        settle_calls(*calls);
    } else {
        steps_[current_].calls.reset();
    }
    steps_[kUpdate].outcome = StepOutcome::Ended;
    steps_[current_].outcome = StepOutcome::Ended;
    steps_[current_].text.clear();
    give_reasons(last_begun_ + 1);
}

// Says of each step that did not run why; from `first_missed` on it is that the upgrade had ended.
void UpgradeSteps::give_reasons(std::size_t first_missed)
{
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        if (steps_[i].outcome == StepOutcome::NotRun && steps_[i].text.empty()) {
            steps_[i].text = i >= first_missed ? "the upgrade ended before it" : kSteps[i].condition;
        }
    }
}

const std::vector<Step>& UpgradeSteps::all() const noexcept
{
    static const std::vector<Step> kNone;
    return told_ ? steps_ : kNone;
}

}  // namespace bgp_rehearse

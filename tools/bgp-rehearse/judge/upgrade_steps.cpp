#include "judge/upgrade_steps.h"

#include <fmt/format.h>

#include <charconv>
#include <cstring>
#include <iterator>
#include <utility>

#include "contract/steps.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::Condition;
using bgp_contract::kEntitiesFound;
using bgp_contract::kEntitiesFoundEnd;
using bgp_contract::kSteps;
using bgp_contract::Line;
using bgp_contract::Lines;

constexpr std::size_t kUpdate = 0;  // update() itself; the steps follow it

bool begins_with(std::string_view line, const char* beginning)
{
    return line.substr(0, std::strlen(beginning)) == beginning;
}

// Which of these lines it is, or null.
const Line* one_of(const Lines& lines, std::string_view line)
{
    for (const Line& each : lines) {
        if (begins_with(line, each.beginning)) {
            return &each;
        }
    }
    return nullptr;
}

// The number in "Found 2 BGP entities".
std::optional<long> entities_in(std::string_view line)
{
    if (!begins_with(line, kEntitiesFound)) {
        return std::nullopt;
    }
    long found = 0;
    const char* const end = line.data() + line.size();
    const auto [rest, error] = std::from_chars(line.data() + std::strlen(kEntitiesFound), end, found);
    const bool whole =
        error == std::errc() && begins_with({rest, static_cast<std::size_t>(end - rest)}, kEntitiesFoundEnd);
    return whole ? std::optional(found) : std::nullopt;
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
    for (const Lines& lines : {step.nothing_to_do, step.failed, step.passed_over, step.unread}) {
        for (const Line& line : lines) {
            heads->insert(head_of(line.beginning));
        }
    }
}

std::string trimmed(std::string_view line)
{
    return std::string(line.substr(0, line.find_last_not_of(" \n") + 1));
}

CallTotals operator-(const CallTotals& all, const CallTotals& part)
{
    return {all.reads - part.reads, all.writes - part.writes, all.failed_writes - part.failed_writes,
            all.sessions - part.sessions, all.connections - part.connections};
}

void add(const CallTotals& more, CallTotals* totals)
{
    totals->reads += more.reads;
    totals->writes += more.writes;
    totals->failed_writes += more.failed_writes;
    totals->sessions += more.sessions;
    totals->connections += more.connections;
}

}  // namespace

CallTotals totals_of(const bgp_platform::capi::CallCounts& counts) noexcept
{
    using bgp_platform::capi::Function;
    return {counts.reads(), counts.writes(), counts.failed_write_count(),
            counts.of(Function::cdb_start_session) + counts.of(Function::cdb_end_session) +
                counts.of(Function::confd_data_set_timeout),
            counts.of(Function::cdb_connect)};
}

const char* name_of(StepOutcome outcome) noexcept
{
    switch (outcome) {
        case StepOutcome::NotRun:
            return "did not run";
        case StepOutcome::CannotRun:
            return "could not run";
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

UpgradeSteps::UpgradeSteps(std::function<CallTotals()> calls_so_far, Holds holds)
    : calls_so_far_(std::move(calls_so_far)), holds_(std::move(holds)), steps_(std::size(kSteps))
{
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        steps_[i].name = kSteps[i].name;
        steps_[i].title = kSteps[i].title;
        add_heads(kSteps[i], &heads_);
    }
}

bool UpgradeSteps::take(std::string_view line)
{
    const bool known =
        take_entities(line) || (heads_.count(head_of(line)) > 0 && (take_in_step(line) || take_reason(line)));
    told_ = told_ || known;
    return known;
}

bool UpgradeSteps::may_know(const char* format) const noexcept
{
    const std::string_view front(format, strnlen(format, sizeof(uint64_t)));
    return front.find('%') != std::string_view::npos || begins_with(front, kEntitiesFound) ||
           heads_.count(head_of(front)) > 0;
}

bool UpgradeSteps::take_in_step(std::string_view line)
{
    const bgp_contract::Step& running = kSteps[current_];
    if (const Line* const failed = one_of(running.failed, line)) {
        finish(StepOutcome::Failed, failed, line);
    } else if (const Line* const nothing = one_of(running.nothing_to_do, line)) {
        finish(StepOutcome::NothingToDo, nothing, line);
    } else if (begins_with(line, running.last_line)) {
        finish(StepOutcome::Ran);
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

// How many BGP router entities there are, which update() says before its first step.
bool UpgradeSteps::take_entities(std::string_view line)
{
    if (entities_ || current_ != kUpdate) {
        return false;
    }
    entities_ = entities_in(line);
    return entities_.has_value();
}

bool UpgradeSteps::take_reason(std::string_view line)
{
    bool known = false;
    for (std::size_t step = 0; current_ == kUpdate && step < steps_.size(); ++step) {
        if (steps_[step].runs == 0) {
            const bool told = take_reason(line, kSteps[step].passed_over, StepOutcome::NotRun, step) ||
                              take_reason(line, kSteps[step].unread, StepOutcome::CannotRun, step);
            known = known || told;
        }
    }
    return known;
}

// Kept for each step that it may explain; a step that begins after all forgets it.
bool UpgradeSteps::take_reason(std::string_view line, const Lines& lines, StepOutcome outcome, std::size_t step)
{
    const Line* const told = one_of(lines, line);
    if (told == nullptr) {
        return false;
    }
    Step& passed_over = steps_[step];
    passed_over.outcome = outcome;
    passed_over.text = told->words;
    passed_over.line = trimmed(line);
    if (begins_with(line, bgp_contract::kNotOneEntity.beginning)) {
        not_one_entity(&passed_over);
    }
    return true;
}

// With none there was nothing to do; with several nobody knows which one a step is for.
void UpgradeSteps::not_one_entity(Step* step) const
{
    const long found = entities_.value_or(1);
    if (found == 0) {
        step->outcome = StepOutcome::NothingToDo;
        step->text = bgp_contract::kNoEntity;
    } else if (found < 0) {
        step->outcome = StepOutcome::CannotRun;
        step->text = bgp_contract::kEntitiesUncounted;
    } else if (found > 1) {
        step->outcome = StepOutcome::CannotRun;
        step->text = fmt::format("{} {}", found, bgp_contract::kSeveralEntities);
    }
}

void UpgradeSteps::begin(std::size_t step)
{
    if (current_ != kUpdate) {
        finish(StepOutcome::Ran);
    }
    settle_calls(calls_so_far_());
    current_ = step;
    last_begun_ = step;
    Step& begun = steps_[step];
    if (begun.runs == 0) {
        begun.outcome = StepOutcome::NotRun;
        begun.text.clear();
        begun.line.clear();
    }
    ++begun.runs;
}

void UpgradeSteps::finish(StepOutcome outcome, const Line* told, std::string_view line)
{
    settle_calls(calls_so_far_());
    Step& step = steps_[current_];
    if (outcome > step.outcome) {
        step.outcome = outcome;
        step.text = told == nullptr ? "" : told->words;
        step.line = trimmed(line);
    }
    current_ = kUpdate;
}

void UpgradeSteps::settle_calls(const CallTotals& so_far)
{
    add(so_far - settled_, &steps_[current_].calls);
    settled_ = so_far;
}

void UpgradeSteps::returned()
{
    if (current_ != kUpdate) {
        finish(StepOutcome::Ran);
    }
    settle_calls(calls_so_far_());
    steps_[kUpdate].outcome = StepOutcome::Ran;
    give_reasons(steps_.size());
}

void UpgradeSteps::ended(const CallTotals& calls)
{
    settle_calls(calls);
    steps_[kUpdate].outcome = StepOutcome::Ended;
    steps_[current_].outcome = StepOutcome::Ended;
    steps_[current_].text.clear();
    steps_[current_].line.clear();
    give_reasons(last_begun_ + 1);
}

// Says of each step that did not run why; from `first_missed` on it is that the upgrade had ended.
void UpgradeSteps::give_reasons(std::size_t first_missed)
{
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        if (steps_[i].outcome != StepOutcome::NotRun || !steps_[i].text.empty()) {
            continue;
        }
        if (i >= first_missed) {
            steps_[i].text = "the upgrade ended before it";
        } else {
            give_condition(i);
        }
    }
}

// The first of the step's conditions that the stored configuration does not meet.
void UpgradeSteps::give_condition(std::size_t step)
{
    steps_[step].text = bgp_contract::kStepMissing;
    for (const Condition& condition : kSteps[step].conditions) {
        if (holds_ && !holds_(condition)) {
            steps_[step].text = condition.words;
            steps_[step].outcome =
                condition.kind == Condition::Kind::Value ? StepOutcome::CannotRun : StepOutcome::NotRun;
            return;
        }
    }
}

const std::vector<Step>& UpgradeSteps::all() const noexcept
{
    static const std::vector<Step> kNone;
    return told_ ? steps_ : kNone;
}

}  // namespace bgp_rehearse

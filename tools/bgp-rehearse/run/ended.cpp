#include "run/ended.h"

#include <fmt/format.h>

#include <csignal>
#include <utility>

namespace bgp_rehearse {

namespace {

// A keypath that the upgrade had come to; none where it is empty.
void say_path(const std::string& path, const char* what, Finding* finding)
{
    if (!path.empty()) {
        finding->say(path, what + path);
    }
}

// What to do about it.
std::string advice_on(const Ended& ended)
{
    switch (ended.kind) {
        case Ended::Kind::TimeLimit:
            return "Where the calls go on from row to row it may only need longer: give --time-limit; where it stays "
                   "at "
                   "one row it goes in a circle there.";
        case Ended::Kind::MemoryLimit:
            return "Where the router is large it may only need more: give --memory-limit; where more is taken too, it "
                   "takes memory without end at that row.";
        default:
            return {};
    }
}

Ended limit(Ended::Kind kind, std::string text)
{
    Ended ended;
    ended.kind = kind;
    ended.text = std::move(text);
    return ended;
}

}  // namespace

Ended explain_end(const ChildEnd& end, const Told& told, const Watch& watch, const UpgradeLimits& limits)
{
    if (watch.out_of_memory() && limits.memory) {
        return limit(Ended::Kind::MemoryLimit,
                     fmt::format("more than {} (--memory-limit)", words_of_memory_limit(*limits.memory)));
    }
    if (end.stopped && limits.time) {
        return limit(Ended::Kind::TimeLimit,
                     fmt::format("longer than {} (--time-limit)", words_of_time_limit(*limits.time)));
    }
    Ended ended;
    ended.signal = end.signal;
    ended.status = end.status;
    ended.kind = end.signal != 0 ? Ended::Kind::Signal : Ended::Kind::Exit;
    if (!told.faults.empty()) {
        const bgp_platform::Fault& fault = told.faults.back();
        ended.function = fault.function;
        ended.source = fault.source;
        ended.line = fault.line;
        ended.text = fault.text;
        if (fault.kind == bgp_platform::Fault::Kind::Assertion && end.signal == SIGABRT) {
            ended.kind = Ended::Kind::Assertion;
        } else if (fault.kind == bgp_platform::Fault::Kind::Fault && end.signal == 0) {
            ended.kind = Ended::Kind::Fault;
        }
    }
    if (told.exception) {
        ended.kind = Ended::Kind::Exception;
        ended.text = *told.exception;
    }
    return ended;
}

Ended ended_upgrade(const ChildEnd& end, const Watch& watch, const UpgradeLimits& limits,
                    const bgp_platform::Device& device, Told* told)
{
    Ended ended = explain_end(end, *told, watch, limits);
    ended.last = watch.seen(device);
    ended.last.step = told->steps.current();
    told->steps.ended(ended.last.calls);
    return ended;
}

Judgement judge_ended(const Ended& ended, const SeverityChoices& choices)
{
    Finding finding;
    finding.id = FindingId::Ended;
    finding.severity = Severity::Stop;
    finding.step = ended.last.step;
    finding.sentence = sentence_of(ended);
    finding.advice = advice_on(ended);
    finding.count = 1;
    say_path(ended.last.reading, "read last: ", &finding);
    say_path(ended.last.writing, "written last: ", &finding);
    Judgement judgement;
    judgement.findings.push_back(std::move(finding));
    settle(choices, &judgement);
    return judgement;
}

}  // namespace bgp_rehearse

#include "run/ended.h"

#include <fmt/format.h>

#include <cctype>
#include <csignal>
#include <cstring>
#include <sstream>
#include <utility>

#include "base/text_escape.h"

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

bool is_of_one_router(const std::string& word)
{
    for (std::size_t i = 0; i < word.size(); ++i) {
        const bool digit = word[i] >= '0' && word[i] <= '9';
        if ((digit && (i == 0 || std::isalnum(static_cast<unsigned char>(word[i - 1])) == 0)) ||
            std::strchr("/{}\"'\\", word[i]) != nullptr) {
            return true;
        }
    }
    return false;
}

// The words of a fault's text but those that are numbers, keypaths, addresses or quoted.
std::string common_words(const std::string& text)
{
    std::string common;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (!is_of_one_router(word)) {
            common += (common.empty() ? "" : " ") + word;
        }
    }
    return common.substr(0, common.find_last_not_of(':') + 1);
}

// Without what differs from router to router.
std::string reason_of(const Ended& ended)
{
    switch (ended.kind) {
        case Ended::Kind::Signal:
            return "the upgrade ended in " + signal_name(ended.signal);
        case Ended::Kind::Exit:
        case Ended::Kind::Exception:
            return fmt::format("the upgrade ended in an {}", name_of(ended.kind));
        case Ended::Kind::TimeLimit:
        case Ended::Kind::MemoryLimit:
            return fmt::format("the upgrade came to its {}", name_of(ended.kind));
        case Ended::Kind::Fault:
        case Ended::Kind::Assertion:
            break;
    }
    return fmt::format("the upgrade ended in {} in {}: {}",
                       ended.kind == Ended::Kind::Fault ? "a fault" : "a failed assertion", escaped(ended.function),
                       escaped(common_words(ended.text)));
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
    finding.reason = reason_of(ended);
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

#include "run/ended.h"

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

}  // namespace

Ended explain_end(const ChildEnd& end, const Told& told)
{
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

Judgement judge_ended(const Ended& ended, const SeverityChoices& choices)
{
    Finding finding;
    finding.id = FindingId::Ended;
    finding.severity = Severity::Stop;
    finding.step = ended.last.step;
    finding.sentence = "the upgrade ended in " + describe(ended);
    finding.count = 1;
    say_path(ended.last.reading, "read last: ", &finding);
    say_path(ended.last.writing, "written last: ", &finding);
    Judgement judgement;
    judgement.findings.push_back(std::move(finding));
    settle(choices, &judgement);
    return judgement;
}

}  // namespace bgp_rehearse

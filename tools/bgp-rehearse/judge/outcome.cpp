// What the upgrade as a whole came to: what update() returned, faults that it went on from, steps that gave up or could not
// run, whether the result is valid, and whether a second upgrade leaves it alone.
#include <fmt/format.h>

#include <map>
#include <utility>

#include "judge/rule.h"

namespace bgp_rehearse {

namespace {

Finding stop(FindingId id, std::string sentence)
{
    Finding finding;
    finding.id = id;
    finding.severity = Severity::Stop;
    finding.sentence = std::move(sentence);
    finding.count = 1;
    return finding;
}

void say(Finding* finding, std::string path, std::string text)
{
    finding->said.push_back({std::move(path), std::move(text)});
    Place place;
    place.said = static_cast<uint32_t>(finding->said.size());
    finding->places.push_back(place);
}

class Outcome : public Rule {
public:
    explicit Outcome(const Evidence& evidence) : evidence_(evidence) {}

    void find(std::vector<Finding>* findings) override
    {
        if (evidence_.result != 0) {
            findings->push_back(
                stop(FindingId::Returned, fmt::format("the upgrade returned {} instead of 0", evidence_.result)));
        }
        find_failed(evidence_.steps, findings);
        for (const bgp_platform::Fault& fault : evidence_.device.faults()) {
            Finding finding = stop(FindingId::StepFailed, "a fault was reported, and the upgrade went on");
            say(&finding, {}, fmt::format("{} ({}:{}): {}", fault.function, fault.source, fault.line, fault.text));
            findings->push_back(std::move(finding));
        }
        if (evidence_.invalid && !evidence_.invalid->empty()) {
            Finding finding = stop(FindingId::NotValid, "the result is not valid under the YANG modules");
            say(&finding, {}, *evidence_.invalid);
            findings->push_back(std::move(finding));
        }
        if (evidence_.again) {
            find_again(*evidence_.again, findings);
        }
    }

private:
    // One finding for each reason; the places are the steps.
    static void find_failed(const std::vector<Step>& steps, std::vector<Finding>* findings)
    {
        std::map<std::pair<StepOutcome, std::string>, std::vector<const Step*>> by_reason;
        for (const Step& step : steps) {
            if (step.outcome == StepOutcome::Failed || step.outcome == StepOutcome::CannotRun) {
                by_reason[{step.outcome, step.text}].push_back(&step);
            }
        }
        for (const auto& [reason, all] : by_reason) {
            const bool one = all.size() == 1;
            Finding finding =
                stop(FindingId::StepFailed,
                     fmt::format("{} {}: {}", one ? all.front()->title : fmt::format("{} steps", all.size()),
                                 reason.first == StepOutcome::Failed ? "gave up" : "could not run", reason.second));
            finding.count = all.size();
            finding.step = one ? all.front()->name : "";
            for (const Step* step : all) {
                say(&finding, {}, step->title);
            }
            findings->push_back(std::move(finding));
        }
    }

    static void find_again(const Again& again, std::vector<Finding>* findings)
    {
        if (again.ended.empty() && again.changes.empty()) {
            return;
        }
        Finding finding;
        finding.id = FindingId::Again;
        finding.severity = Severity::Review;
        finding.count = again.changes.size();
        finding.sentence = again.ended.empty() ? fmt::format("a second upgrade of the result still changes {} {}",
                                                             finding.count, finding.count == 1 ? "row" : "rows")
                                               : fmt::format("a second upgrade of the result ends in {}", again.ended);
        for (const std::string& path : again.changes) {
            say(&finding, path, path);
        }
        findings->push_back(std::move(finding));
    }

    const Evidence& evidence_;
};

}  // namespace

std::unique_ptr<Rule> outcome_rule(const Evidence& evidence)
{
    return std::make_unique<Outcome>(evidence);
}

}  // namespace bgp_rehearse

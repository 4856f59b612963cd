// What the upgrade as a whole came to: what update() returned, faults that it went on from, steps that gave up or could not
// run, whether the result is valid, and whether a second upgrade leaves it alone.
#include <fmt/format.h>

#include <map>
#include <utility>

#include "judge/lists.h"
#include "judge/path_template.h"
#include "judge/rule.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Row;

Finding stop(FindingId id, const std::string& reason, std::string sentence)
{
    Finding finding;
    finding.id = id;
    finding.severity = Severity::Stop;
    finding.reason = reason;
    finding.sentence = std::move(sentence);
    finding.count = 1;
    return finding;
}

// "3 BGP entities are stored" without the number.
std::string without_number(const std::string& text)
{
    const std::size_t behind = text.find_first_not_of("0123456789");
    return behind == 0 || behind == std::string::npos ? text : text.substr(text.find_first_not_of(' ', behind));
}

// Whether several entities are stored, of which all but one are of VRFs, and that one has its place among the instances.
bool is_converted(const bgp_platform::Device& device)
{
    const Configuration& stored = device.configuration(Datastore::Stored);
    std::vector<const Row*> of_no_vrf;
    const Node& list = *find_node(stored.schema(), kEntities);
    const List& entities = stored.root().list(list.slot);
    entities.for_each([&](const Row& entity) {
        const Value* const vrf = value_in(entity, *list.child("bgpRmEntVrfName"));
        if (vrf == nullptr || vrf->bytes().empty()) {
            of_no_vrf.push_back(&entity);
        }
    });
    if (entities.size() < 2 || of_no_vrf.size() != 1) {
        return false;
    }
    const Value* const as = value_in(*of_no_vrf.front(), *list.child("bgpRmEntLocalAs"));
    const auto map = as == nullptr
                         ? std::nullopt
                         : device.path_of(fmt::format("/bgp-internal/bgp-vrf{{0}}/as-to-bgp-idx{{{}}}", as->as_uint()));
    return map && stored.exists(*map);
}

class Outcome : public Rule {
public:
    explicit Outcome(const Evidence& evidence) : evidence_(evidence) {}

    void find(std::vector<Finding>* findings) override
    {
        if (evidence_.result != 0) {
            findings->push_back(stop(FindingId::Returned, "the upgrade returned an error",
                                     fmt::format("the upgrade returned {} instead of 0", evidence_.result)));
        }
        find_failed(evidence_.steps, is_converted(evidence_.device), findings);
        for (const bgp_platform::Fault& fault : evidence_.device.faults()) {
            const std::string sentence = "a fault was reported, and the upgrade went on";
            Finding finding = stop(FindingId::StepFailed, sentence, sentence);
            finding.say({}, fmt::format("{} ({}:{}): {}", fault.function, fault.source, fault.line, fault.text));
            findings->push_back(std::move(finding));
        }
        if (evidence_.invalid && !evidence_.invalid->empty()) {
            const std::string sentence = "the result is not valid under the YANG modules";
            Finding finding = stop(FindingId::NotValid, sentence, sentence);
            finding.say({}, *evidence_.invalid);
            findings->push_back(std::move(finding));
        }
        if (evidence_.again) {
            find_again(*evidence_.again, findings);
        }
    }

private:
    // One finding for each reason; the places are the steps. On a router that was converted before, with an entity for each
    // of its VRFs, the steps for one entity have nothing left to do.
    static void find_failed(const std::vector<Step>& steps, bool converted, std::vector<Finding>* findings)
    {
        std::map<std::pair<StepOutcome, std::string>, std::vector<const Step*>> by_reason;
        for (const Step& step : steps) {
            if (step.outcome == StepOutcome::Failed || (step.outcome == StepOutcome::CannotRun && !converted)) {
                by_reason[{step.outcome, step.text}].push_back(&step);
            }
        }
        for (const auto& [reason, all] : by_reason) {
            const bool one = all.size() == 1;
            const char* const what = reason.first == StepOutcome::Failed ? "gave up" : "could not run";
            const std::string who = one ? all.front()->title : fmt::format("{} steps", all.size());
            Finding finding = stop(FindingId::StepFailed,
                                   fmt::format("{} {}: {}", one ? all.front()->title : "several steps", what,
                                               without_number(reason.second)),
                                   fmt::format("{} {}: {}", who, what, reason.second));
            finding.count = all.size();
            finding.step = one ? all.front()->name : "";
            for (const Step* step : all) {
                finding.say({}, step->title);
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
        finding.reason = again.ended.empty() ? "a second upgrade of the result still changes rows"
                                             : "a second upgrade of the result does not return";
        finding.count = again.changes.size();
        finding.sentence = again.ended.empty() ? fmt::format("a second upgrade of the result still changes {} {}",
                                                             finding.count, finding.count == 1 ? "row" : "rows")
                                               : fmt::format("a second upgrade of the result ends in {}", again.ended);
        for (const std::string& path : again.changes) {
            finding.say(path, path);
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

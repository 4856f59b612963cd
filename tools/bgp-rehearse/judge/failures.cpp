// What failed calls come to: writes that every such router has failing, values and rows that are lost or stay behind, steps
// that gave up. The contract says of each call site what its failure means (contract/steps/).
#include <fmt/format.h>

#include <map>
#include <set>
#include <tuple>

#include "contract/steps.h"
#include "judge/call_site.h"
#include "judge/rule.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::Class;
using bgp_platform::capi::Function;

// The failures that are told in one sentence.
struct Group {
    FindingId id;
    Severity severity;
    std::string step;
    std::string sentence;

    bool operator<(const Group& other) const
    {
        return std::tie(id, severity, step, sentence) < std::tie(other.id, other.severity, other.step, other.sentence);
    }
};

class Failures : public Rule {
public:
    explicit Failures(const Evidence& evidence) : evidence_(evidence) {}

    void find(std::vector<Finding>* findings) override
    {
        evidence_.failed_calls.for_each([this](const FailedCalls::Call& call) {
            if (call.kind == Class::Stops) {
                unread_.insert(without_keys(call.path));
            }
        });
        evidence_.failed_calls.for_each([this](const FailedCalls::Call& call) { take(call); });
        for (auto& [group, finding] : groups_) {
            finding.reason = sentence(group, false, "");
            finding.sentence = sentence(group, finding.count == 1, grouped(finding.count) + " ");
            findings->push_back(std::move(finding));
        }
    }

private:
    void take(const FailedCalls::Call& call)
    {
        if (call.kind == Class::Expected) {
            add({FindingId::FailedAsExpected, Severity::Note, call.step, call.sentence}, call);
        } else if (call.kind == Class::Loses && is_guess(call)) {
            // Which id a VRF's instance comes to have is told as a guess (assumptions.cpp).
        } else if (call.kind == Class::Loses && (call.is_write() || unread_.count(without_keys(call.path)) == 0)) {
            add({FindingId::WriteFailed, Severity::Review, call.step, call.sentence}, call);
        } else if (call.kind == Class::Left && is_walk(call.function)) {
            add({FindingId::RowLeft, Severity::Review, call.step, call.sentence}, call);
        }
        // A row that stays behind is told as such (left_rows.cpp, carried.cpp), and so is a step that gave up (outcome.cpp);
        // what another step does without the value that stopped the one is told with it.
    }

    // The router's own id is read for an instance where no interface has an address, which is assumed.
    bool is_guess(const FailedCalls::Call& call) const
    {
        return !evidence_.assumptions.interfaces_given &&
               call.step == std::string_view(bgp_contract::kUpdateVrf.name) &&
               without_keys(call.path) == "/router/bgp{}/router-id";
    }

    // Of a table, whose rows stay where they are.
    static bool is_walk(Function function)
    {
        return function == Function::maapi_init_cursor || function == Function::maapi_get_next;
    }

    void add(const Group& group, const FailedCalls::Call& call)
    {
        const auto [at, fresh] = groups_.try_emplace(group);
        Finding& finding = at->second;
        if (fresh) {
            finding.id = group.id;
            finding.severity = group.severity;
            finding.step = group.step;
        }
        ++finding.count;
        finding.say(std::string(call.path), std::string(call.message)).log_line = call.log_line;
    }

    // `count` stands before what is counted.
    static std::string sentence(const Group& group, bool one, const std::string& count)
    {
        if (group.id == FindingId::FailedAsExpected) {
            return fmt::format("{}{} failed as on every such router: {}", count, one ? "write" : "writes",
                               group.sentence);
        }
        if (group.id == FindingId::RowLeft) {
            return fmt::format("the rows of {}{} stay behind: {}", count, one ? "table" : "tables", group.sentence);
        }
        return fmt::format("{}{} failed{}{}", count, one ? "call" : "calls", group.sentence.empty() ? "" : ": ",
                           group.sentence);
    }

    const Evidence& evidence_;
    std::set<std::string> unread_;  // what steps gave up or did not run for, as keypaths without keys
    std::map<Group, Finding> groups_;
};

}  // namespace

std::unique_ptr<Rule> failures_rule(const Evidence& evidence)
{
    return std::make_unique<Failures>(evidence);
}

}  // namespace bgp_rehearse

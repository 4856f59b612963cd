// Rows that an upgrade carries into another shape and leaves where they are: access list rules into prefix lists, VRFs into
// BGP instances, router entities into the command-line model. An old row whose counterpart is not in the result stays behind.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>
#include <unordered_set>

#include "contract/steps.h"
#include "judge/access_lists.h"
#include "judge/lists.h"
#include "judge/path_template.h"
#include "judge/rule.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::Class;
using bgp_platform::Datastore;
using bgp_platform::capi::Function;
using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

// How it is told that rows have no counterpart, and which call that failed says why: the contract has its sentence.
struct LeftWords {
    const char* step;
    Function function;
    const char* one;
    const char* many;
};

constexpr LeftWords kUnnamedRule = {bgp_contract::kUpdatePrefixList.name, Function::cdb_get, "goes into no prefix list",
                                    "go into no prefix list"};
constexpr LeftWords kTakenRule = {bgp_contract::kUpdatePrefixList.name, Function::maapi_create,
                                  "goes into no prefix list", "go into no prefix list"};
constexpr LeftWords kUnnumberedVrf = {bgp_contract::kUpdateVrf.name, Function::cdb_get, "gets no BGP instance",
                                      "get no BGP instance"};

// Rows that the step makes from one old row each, where both are told by a path alone.
struct CarriedRow {
    const char* list;
    const char* step;
    const char* to;
    const char* one;
    const char* many;
};

constexpr CarriedRow kCarriedRows[] = {
    {kEntities, bgp_contract::kUpdateRouterBgp.name, "/router/bgp{$bgpRmEntLocalAs}",
     "is not in the command-line model", "are not in the command-line model"},
    {kEntities, bgp_contract::kUpdateRmIndex.name, "/bgp-internal/bgp-vrf{0}/as-to-bgp-idx{$bgpRmEntLocalAs}",
     "has no number for its AS", "have no number for their AS"},
};

// Of the sentence of a failed call what says why: "its list has no name".
std::string_view reason_in(std::string_view sentence)
{
    const std::size_t colon = sentence.find(": ");
    return colon == std::string_view::npos ? sentence : sentence.substr(colon + 2);
}

// "their list has no name", of several rows.
std::string of_many(std::string_view reason)
{
    constexpr std::pair<std::string_view, std::string_view> kWords[] = {{"its ", "their "}, {"it has ", "they have "}};
    for (const auto& [one, many] : kWords) {
        if (reason.substr(0, one.size()) == one) {
            return std::string(many) + std::string(reason.substr(one.size()));
        }
    }
    return std::string(reason);
}

class Carried : public Rule {
public:
    explicit Carried(const Evidence& evidence)
        : evidence_(evidence),
          stored_(evidence.device.configuration(Datastore::Stored)),
          result_(evidence.device.configuration(Datastore::Transaction))
    {
    }

    void find(std::vector<Finding>* findings) override
    {
        find_access_lists();
        find_vrfs();
        for (const CarriedRow& carried : kCarriedRows) {
            find_rows(carried);
        }
        for (auto& [words, finding] : found_) {
            finding.count = finding.places.size();
            finding.reason = sentence(words, words.noun.many, false);
            finding.sentence = sentence(words, counted(finding.count, words.noun), finding.count == 1);
            finding.short_form = finding.severity == Severity::Note ? "" : finding.sentence;
            findings->push_back(std::move(finding));
        }
    }

private:
    // Told in one sentence: why, and whether something uses the rows.
    struct Words {
        const char* step;
        std::string one;
        std::string many;
        Severity severity;
        Noun noun;

        bool operator<(const Words& other) const
        {
            return std::tie(severity, one, many) < std::tie(other.severity, other.one, other.many);
        }
    };

    static std::string sentence(const Words& words, const std::string& who, bool one)
    {
        return fmt::format(
            "{} {}{}", who, one ? words.one : words.many,
            words.severity == Severity::Note ? ", and nothing uses " + std::string(one ? "it" : "them") : "");
    }

    const Node& list(std::string_view path) const { return *find_node(evidence_.device.schema(), path); }
    const List& rows(const Configuration& configuration, const Node& list) const
    {
        return configuration.root().list(list.slot);
    }

    bool ran(std::string_view step) const
    {
        return std::any_of(evidence_.steps.begin(), evidence_.steps.end(),
                           [step](const Step& each) { return each.name == step && each.outcome == StepOutcome::Ran; });
    }

    void add(const Words& words, const Row& row, const Trail& around = {})
    {
        Finding& finding = found_[words];
        finding.id = FindingId::RowLeft;
        finding.severity = words.severity;
        finding.step = words.step;
        finding.add_row(&row, nullptr, around);
    }

    // With the reason that the first such call gave that failed.
    Words words_of(const LeftWords& left, const Noun& noun, Severity severity) const
    {
        std::string_view reason;
        evidence_.failed_calls.for_each([&](const FailedCalls::Call& call) {
            if (reason.empty() && call.kind == Class::Left && call.step == std::string_view(left.step) &&
                call.function == left.function) {
                reason = reason_in(call.sentence);
            }
        });
        const std::string because = reason.empty() ? "" : fmt::format(": {}", reason);
        const std::string of_several = reason.empty() ? "" : ": " + of_many(reason);
        return {left.step, left.one + because, left.many + of_several, severity, noun};
    }

    void find_access_lists()
    {
        if (!ran(bgp_contract::kUpdatePrefixList.name)) {
            return;
        }
        const Noun rules = noun_of(list(kAccessListRules));
        const auto severity = [](bool used) { return used ? Severity::Review : Severity::Note; };
        const Words unnamed[] = {words_of(kUnnamedRule, rules, severity(false)),
                                 words_of(kUnnamedRule, rules, severity(true))};
        const Words taken[] = {words_of(kTakenRule, rules, severity(false)),
                               words_of(kTakenRule, rules, severity(true))};
        AccessLists(evidence_.device).for_each_left([&](const Row& rule, AccessLists::Left why, bool used) {
            switch (why) {
                case AccessLists::Left::Unnamed:
                    return add(unnamed[used ? 1 : 0], rule);
                case AccessLists::Left::Taken:
                    return add(taken[used ? 1 : 0], rule);
                case AccessLists::Left::SharesName:
                    return add({bgp_contract::kUpdatePrefixList.name,
                                "shares the prefix list of another: it has the same name",
                                "share the prefix list of another: they have the same name",
                                severity(used),
                                {"access list", "access lists"}},
                               rule);
            }
        });
    }

    void find_vrfs()
    {
        if (!ran(bgp_contract::kUpdateVrf.name)) {
            return;
        }
        const Node& entities = list(kEntities);
        std::unordered_set<std::string_view> with_instance;
        rows(result_, entities).for_each([&](const Row& entity) {
            const Value& name = entity.value(entities.child("bgpRmEntVrfName")->slot);
            if (!name.absent()) {
                with_instance.insert(name.bytes());
            }
        });
        const Node& routers = list(kRouters);
        const Node& vrfs = *routers.child("vrf");
        const Words words = words_of(kUnnumberedVrf, noun_of(vrfs), Severity::Review);
        rows(stored_, routers).for_each([&](const Row& router) {
            router.list(vrfs.slot).for_each([&](const Row& vrf) {
                if (with_instance.count(vrf.value(0).bytes()) == 0) {
                    add(words, vrf, {&router});
                }
            });
        });
    }

    // A value that could not be written is told as that, and not as a row that stays behind.
    void find_rows(const CarriedRow& carried)
    {
        bool failed = false;
        evidence_.failed_calls.for_each([&](const FailedCalls::Call& call) {
            failed = failed || (call.step == std::string_view(carried.step) && call.kind == Class::Loses);
        });
        if (failed || !ran(carried.step)) {
            return;
        }
        const Node& from = list(carried.list);
        const PathTemplate to(evidence_.device.schema(), carried.to, &from);
        Lookup lookup(to, result_);
        rows(stored_, from).for_each([&](const Row& row) {
            if (lookup.row({{}, row}) == nullptr) {
                add({carried.step, carried.one, carried.many, Severity::Review, noun_of(from)}, row);
            }
        });
    }

    const Evidence& evidence_;
    const Configuration& stored_;
    const Configuration& result_;
    std::map<Words, Finding> found_;
};

}  // namespace

std::unique_ptr<Rule> carried_rule(const Evidence& evidence)
{
    return std::make_unique<Carried>(evidence);
}

}  // namespace bgp_rehearse

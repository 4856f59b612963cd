#include "judge/assumptions.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "contract/steps.h"
#include "judge/lists.h"
#include "judge/path_template.h"
#include "judge/words.h"
#include "libvrfid.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::History;
using bgp_platform::store::List;
using bgp_platform::store::Row;

// It writes the user profile into every neighbour that was stored.
constexpr std::string_view kWritesProfile = bgp_contract::kUpdateNeighConfigDropWarn.name;

// It gives the instances that it makes the greatest address of the interfaces. Where the last of them is 127.0.0.1 it takes
// the router's own id, or none at all.
constexpr std::string_view kWritesIdentifier = bgp_contract::kUpdateVrf.name;

// The neighbours that the step writes: those that were stored, under the entity's new index where it has one.
class WrittenNeighbours {
public:
    WrittenNeighbours(const Evidence& evidence, const List& stored) : stored_(stored)
    {
        writes_ = std::any_of(evidence.steps.begin(), evidence.steps.end(), [](const Step& step) {
            return step.name == kWritesProfile && step.outcome == StepOutcome::Ran;
        });
        evidence.failed_calls.for_each([this](const FailedCalls::Call& call) {
            writes_ = writes_ && !(call.step == kWritesProfile && call.path == "/DC-BGP-MIB/bgpPeerTable");
        });
        for (const Row* row = stored.at(0); row != nullptr;) {
            const Value index = row->value(0);
            indexes_.push_back(index);
            const Value next = Value::of_uint(index.as_uint() + 1);
            row = stored.find_from(&next, 1);
        }
        take_new_index(evidence);
    }

    bool has(const Row& neighbour) const
    {
        if (!writes_ || (new_index_ && neighbour.value(0) != *new_index_)) {
            return false;
        }
        std::vector<Value> key(neighbour.keys(), neighbour.keys() + neighbour.record().keys);
        if (!new_index_) {
            return stored_.find(key.data(), key.size()) != nullptr;
        }
        return std::any_of(indexes_.begin(), indexes_.end(), [&](const Value& index) {
            key[0] = index;
            return stored_.find(key.data(), key.size()) != nullptr;
        });
    }

private:
    // As the step finds it.
    void take_new_index(const Evidence& evidence)
    {
        const auto& schema = evidence.device.schema();
        const Node* const entities = find_node(schema, kEntities);
        const Configuration& before = evidence.device.configuration(Datastore::Stored);
        const Row* const entity = before.root().list(entities->slot).at(0);
        const PathTemplate map(schema, "/bgp-internal/bgp-vrf{0}/as-to-bgp-idx{$bgpRmEntLocalAs}", entities);
        if (entity == nullptr || value_in(*entity, *entities->child("bgpRmEntLocalAs")) == nullptr ||
            Lookup(map, before).row({{}, *entity}) != nullptr) {
            return;
        }
        const List& now = evidence.device.configuration(Datastore::Transaction).root().list(entities->slot);
        const uint32_t component = libvrfid::VrfId::ComponentFromVrf(0);
        new_index_ = Value::of_uint(UINT32_MAX);
        for (const uint32_t index : {component + 1, component}) {
            const Value key = Value::of_uint(index);
            if (now.find(&key, 1) != nullptr) {
                new_index_ = key;
            }
        }
    }

    const List& stored_;
    bool writes_ = false;
    std::vector<Value> indexes_;  // of entities that have neighbours
    std::optional<Value> new_index_;
};

}  // namespace

AssumptionsRule::AssumptionsRule(const Evidence& evidence)
    : evidence_(evidence),
      limit_(find_node(evidence.device.schema(), kNeighbours)->child("bgpPeerConfigMaxPrfx")),
      identifier_(find_node(evidence.device.schema(), kEntities)->child("bgpRmEntLocalIdentifier"))
{
    const Assumptions& given = evidence.assumptions;
    profile_ = {"user profile", given.user_profile, "--user-profile", given.user_profile_given, {}};
    interfaces_ = {"interfaces", given.interfaces, "--interfaces", given.interfaces_given, {}};
}

void AssumptionsRule::row(const RowChange& change)
{
    if (&change.row().record() == identifier_->record &&
        step_of_writer(change.writer_of(*identifier_)) == kWritesIdentifier) {
        interfaces_.decided.push_back({change.after, identifier_});
        guessed_.add_row(change.before, change.after);
    }
}

// The step gives each neighbour that was stored the profile. What had it already is not written, and is decided all the
// same.
void AssumptionsRule::decide_limits()
{
    const List& stored = evidence_.device.configuration(Datastore::Stored).root().list(limit_->record->owner->slot);
    const List& result =
        evidence_.device.configuration(Datastore::Transaction).root().list(limit_->record->owner->slot);
    const Node& limit = *limit_;
    const History& history = *evidence_.device.history();
    const WrittenNeighbours written(evidence_, stored);
    const Value profile = Value::of_int(static_cast<int32_t>(std::strtoul(profile_.value.c_str(), nullptr, 10)));
    result.for_each([&](const Row& neighbour) {
        const bool by_step = step_of_writer(history.writer_of(neighbour, limit)) == kWritesProfile;
        if (by_step || (neighbour.value(limit.slot) == profile && written.has(neighbour))) {
            profile_.decided.push_back({&neighbour, limit_});
        }
    });
}

void AssumptionsRule::find(std::vector<Finding>* findings)
{
    decide_limits();
    if (guessed_.places.empty()) {
        return;
    }
    // With an address that is none of a loopback, that the router id is a default is noted.
    interfaces_.decided.push_back({&evidence_.device.configuration(Datastore::Transaction).root(),
                                   find_node(evidence_.device.schema(), "/internal/router-id-default-hidden")});
    if (interfaces_.given) {
        return;
    }
    std::set<std::string> ids;
    for (const Place& place : guessed_.places) {
        ids.insert(words_of_value(*identifier_, value_in(*place.after, *identifier_)));
    }
    Finding& finding = guessed_;
    finding.id = FindingId::IdentityGuessed;
    finding.severity = Severity::Review;
    finding.step = kWritesIdentifier;
    finding.count = finding.places.size();
    const bool one = finding.count == 1;
    const std::string instances = counted(finding.count, {"VRF instance", "VRF instances"});
    finding.reason = "VRF instances get router ids by the router's interfaces, which are assumed";
    finding.sentence = fmt::format("{} {} the router {} {} by the router's interfaces, which are assumed", instances,
                                   one ? "gets" : "get", ids.size() == 1 ? "id" : "ids", fmt::join(ids, ", "));
    finding.short_form =
        fmt::format("the router {} of {} {} guessed", one ? "id" : "ids", instances, one ? "is" : "are");
    finding.advice = "a router takes its greatest interface address: give --interfaces";
    finding.leaf = identifier_;
    findings->push_back(std::move(finding));
}

std::vector<Assumption> AssumptionsRule::take()
{
    std::vector<Assumption> assumptions;
    assumptions.push_back(std::move(profile_));
    assumptions.push_back(std::move(interfaces_));
    return assumptions;
}

}  // namespace bgp_rehearse

#include "judge/access_lists.h"

#include <algorithm>
#include <iterator>

#include "judge/lists.h"
#include "judge/path_template.h"

namespace bgp_rehearse {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;
using bgp_platform::schema::Schema;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Row;

namespace {

const List& rows_of(const Configuration& configuration, std::string_view list)
{
    return configuration.root().list(find_node(configuration.schema(), list)->slot);
}

// Access list rules and the sequences of prefix lists that they become.
class Sequences {
public:
    explicit Sequences(const Configuration& result)
        : lists_(find_node(result.schema(), kPrefixLists)),
          sequences_(lists_->child("seq")),
          address_(sequences_->child("address"))
    {
        const Node& rules = *find_node(result.schema(), kAccessListRules);
        prefix_ = rules.child("aallPreAccessListAddrPrefix");
        length_ = rules.child("aallPreAccessListAddrPrefLen");
        same_[0] = {rules.child("aallPreAccessListIncluded"), sequences_->child("action"), Value()};
        same_[1] = {rules.child("aallPreAccessListAddrPrefGe"), sequences_->child("ge"), Value::of_int(0)};
        same_[2] = {rules.child("aallPreAccessListAddrPrefLe"), sequences_->child("le"), Value::of_int(0)};
        all_ = &result.root().list(lists_->slot);
    }

    // Whether the prefix list of that name has the rule, and not another of its number.
    bool have(const Row& rule, const Value& name) const
    {
        const Row* const list = all_->find(&name, 1);
        const Row* const sequence = list == nullptr ? nullptr : list->list(sequences_->slot).find(&rule.value(1), 1);
        return sequence != nullptr && sequence->value(address_->slot) == address_of(rule) &&
               std::all_of(std::begin(same_), std::end(same_), [&](const Same& each) {
                   const Value* const old_value = value_in(rule, *each.of_rule);
                   const Value* const new_value = value_in(*sequence, *each.of_sequence);
                   return (old_value == nullptr ? each.none : *old_value) ==
                          (new_value == nullptr ? each.none : *new_value);
               });
    }

private:
    struct Same {
        const Node* of_rule;
        const Node* of_sequence;
        Value none;  // what stands for a value that is not set
    };

    Value address_of(const Row& rule) const
    {
        in_addr address{};
        const std::string_view octets = rule.value(prefix_->slot).is_octets() ? rule.value(prefix_->slot).bytes() : "";
        octets.copy(reinterpret_cast<char*>(&address), sizeof address);
        return Value::of_ipv4_prefix(address, static_cast<uint8_t>(rule.value(length_->slot).as_uint()));
    }

    const Node* lists_;
    const Node* sequences_;
    const Node* address_;
    const Node* prefix_ = nullptr;
    const Node* length_ = nullptr;
    Same same_[3];
    const List* all_ = nullptr;
};

// Calls visit(rule) for a list's rules from its first one on.
template <typename Visit>
void for_each_rule(const List& rules, const Row& first_rule, const Visit& visit)
{
    List::Iterator rule = rules.iterate_after(first_rule.keys(), 1);
    for (; rule && (*rule)->value(0) == first_rule.value(0); ++rule) {
        visit(**rule);
    }
}

}  // namespace

AccessLists::AccessLists(const bgp_platform::Device& device)
    : stored_(device.configuration(Datastore::Stored)),
      result_(device.configuration(Datastore::Transaction)),
      rules_(rows_of(stored_, kAccessListRules))
{
    find_used();
    find_names();
}

void AccessLists::for_each_left(const Visit& visit) const
{
    const Sequences sequences(result_);
    for_each_list([&](const Row& first_rule, const Value* name) {
        const bool used = is_used(first_rule.value(0), name);
        if (name != nullptr && names_.at(*name).first != first_rule.value(0)) {
            visit(first_rule, Left::SharesName, used);
        }
        for_each_rule(rules_, first_rule, [&](const Row& rule) {
            if (name == nullptr) {
                visit(rule, Left::Unnamed, used);
            } else if (!sequences.have(rule, *name)) {
                visit(rule, Left::Taken, used);
            }
        });
    });
}

// Calls visit(first rule, name or null).
template <typename VisitList>
void AccessLists::for_each_list(const VisitList& visit) const
{
    const Row* last = nullptr;
    rules_.for_each([&](const Row& rule) {
        if (last == nullptr || last->value(0) != rule.value(0)) {
            visit(rule, name_of(rule.value(0)));
        }
        last = &rule;
    });
}

// Under the router entity's index or the next one, as the step looks it up; null when it has none.
const Value* AccessLists::name_of(const Value& list) const
{
    constexpr std::string_view kNames = "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry-get";
    const Row* const entity = rows_of(stored_, kEntities).at(0);
    const Node& names = *find_node(stored_.schema(), kNames);
    for (const uint32_t more : {0U, 1U}) {
        const Value key[] = {Value::of_uint(static_cast<uint32_t>(entity->value(0).as_uint() + more)), list};
        const Row* const row = stored_.root().list(names.slot).find(key, std::size(key));
        if (row != nullptr && value_in(*row, *names.child("name")) != nullptr) {
            return value_in(*row, *names.child("name"));
        }
    }
    return nullptr;
}

bool AccessLists::is_used(const Value& list, const Value* name) const
{
    return name == nullptr ? used_.count(list) > 0 : names_.at(*name).used;
}

void AccessLists::find_used()
{
    const Node& maps = *find_node(stored_.schema(), kRouteMaps);
    const uint16_t slot = maps.child("bgpRouteMapMaPrefixList")->slot;
    rows_of(stored_, kRouteMaps).for_each([&](const Row& map) { used_.insert(map.value(slot)); });
}

void AccessLists::find_names()
{
    for_each_list([this](const Row& first_rule, const Value* name) {
        if (name != nullptr) {
            const bool used = used_.count(first_rule.value(0)) > 0;
            const auto [named, fresh] = names_.try_emplace(*name, Named{first_rule.value(0), used});
            named->second.used = named->second.used || used;
        }
    });
}

}  // namespace bgp_rehearse

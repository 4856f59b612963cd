// Rows that the re-keying moves and that stayed under their old index, as another row has the key that they were to get.
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <memory>
#include <tuple>

#include "contract/rekeyed_tables.h"
#include "judge/compiled_for.h"
#include "judge/list_order.h"
#include "judge/lists.h"
#include "judge/path_template.h"
#include "judge/rule.h"
#include "judge/used_rows.h"
#include "judge/words.h"
#include "libvrfid.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::Carries;
using bgp_contract::Class;
using bgp_contract::RekeyedTable;
using bgp_platform::Datastore;
using bgp_platform::capi::Function;
using bgp_platform::schema::Node;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Path;
using bgp_platform::store::Row;

const RekeyedTable* table_of(const Node& list)
{
    const std::string path = list.path();
    for (const RekeyedTable& table : bgp_contract::kRekeyedTables) {
        if (path == table.path) {
            return &table;
        }
    }
    return nullptr;
}

// The key that the re-keying gives a row; `before` is the index that it has, `after` the one it is to get.
std::vector<Value> new_key(const RekeyedTable& table, const Row& row, uint64_t before, uint64_t after)
{
    std::vector<Value> key(row.keys(), row.keys() + row.record().keys);
    switch (table.carries) {
        case Carries::First:
            key[0] = Value::of_uint(after);
            break;
        case Carries::Listen:
            key[1] = Value::of_uint(key[1] == key[0] ? after : after + 1);
            key[0] = Value::of_uint(after);
            break;
        case Carries::Partner:
            key[1] = Value::of_uint(after);
            break;
        case Carries::Redistributed:
        case Carries::Protocol:
            key[1] = Value::of_uint(static_cast<uint32_t>(key[1].as_uint() + after - before));
            break;
    }
    return key;
}

class LeftRows : public Rule {
public:
    explicit LeftRows(const Evidence& evidence)
        : evidence_(evidence),
          result_(evidence.device.configuration(Datastore::Transaction)),
          used_(evidence.device.configuration(Datastore::Stored)),
          old_index_(old_index(evidence)),
          order_(compiled_for<ListOrder>(evidence.device.schema()))
    {
    }

    void find(std::vector<Finding>* findings) override
    {
        evidence_.failed_calls.for_each([this](const FailedCalls::Call& call) {
            if (call.kind == Class::Left && call.function == Function::maapi_move) {
                take(call);
            }
        });
        for (auto& [group, finding] : groups_) {
            finding.severity = group.severity;
            finish(*order_->lists()[group.list], group.taken, &finding);
            findings->push_back(std::move(finding));
        }
    }

private:
    // Of one list, told alike.
    struct Group {
        std::size_t list;  // its place in the schema
        Severity severity;
        bool taken;  // by another row; else the move failed for another reason

        bool operator<(const Group& other) const
        {
            return std::tie(list, severity, taken) < std::tie(other.list, other.severity, other.taken);
        }
    };

    void take(const FailedCalls::Call& call)
    {
        const std::optional<Path> path = evidence_.device.path_of(std::string(call.path));
        const Row* const row = path ? result_.find_row(*path) : nullptr;
        if (row == nullptr || !path->names_entry()) {
            return;  // taken away since
        }
        const Row* const stored = evidence_.device.history()->stored_row(result_, path->entries);
        const Row* const there = row_in_its_place(*row, *result_.find_list(*path));
        const bool same = there != nullptr && same_content(*row, *there);
        Finding& finding =
            groups_[{order_->place(*path->node), same || !used_.is_used(*row) ? Severity::Note : Severity::Review,
                     there != nullptr}];
        finding.step = call.step;
        finding.say(std::string(call.path), words(*row, there, same), stored, row).log_line = call.log_line;
    }

    const Row* row_in_its_place(const Row& row, const List& list) const
    {
        const RekeyedTable* const table = table_of(*row.record().owner);
        if (table == nullptr) {
            return nullptr;
        }
        const auto key = new_key(*table, row, old_index_, libvrfid::VrfId::ComponentFromVrf(0));
        return list.find(key.data(), key.size());
    }

    // That of the one entity.
    static uint64_t old_index(const Evidence& evidence)
    {
        const Node* const entities = find_node(evidence.device.schema(), kEntities);
        const Row* const entity = evidence.device.configuration(Datastore::Stored).root().list(entities->slot).at(0);
        return entity == nullptr ? 0 : entity->value(0).as_uint();
    }

    static std::string words(const Row& row, const Row* there, bool same)
    {
        std::string left = words_of_row({}, row);
        if (there == nullptr) {
            return left;
        }
        return fmt::format("{}: under index {} stands {}", left, there->value(0).as_uint(),
                           same ? "the same" : "another row, which differs");
    }

    static void finish(const Node& list, bool taken, Finding* finding)
    {
        finding->id = FindingId::RowLeft;
        finding->count = finding->places.size();
        const bool one = finding->count == 1;
        const Value& index = finding->places.front().after->value(0);
        const bool one_index = std::all_of(finding->places.begin(), finding->places.end(),
                                           [&](const Place& place) { return place.after->value(0) == index; });
        const RekeyedTable* const table = table_of(list);
        const bool by_entity =
            table != nullptr && (table->carries == Carries::First || table->carries == Carries::Listen);
        finding->reason =
            fmt::format("{} stay under {}: {}", noun_of(list).many, by_entity ? "the old index" : "the old number",
                        taken ? "their places were taken" : "a move failed");
        const std::string under = !by_entity  ? "the old number"
                                  : one_index ? fmt::format("index {}", index.as_uint())
                                              : "the old indexes";
        const char* const why = !taken ? "a move failed" : one ? "its place was taken" : "their places were taken";
        finding->sentence = fmt::format("{} {} under {}: {}", counted(finding->count, noun_of(list)),
                                        one ? "stays" : "stay", under, why);
        finding->short_form =
            fmt::format("{} {} left behind", counted(finding->count, noun_of(list)), one ? "is" : "are");
    }

    const Evidence& evidence_;
    const Configuration& result_;
    UsedRows used_;
    uint64_t old_index_;
    std::shared_ptr<const ListOrder> order_;
    std::map<Group, Finding> groups_;
};

}  // namespace

std::unique_ptr<Rule> left_rows_rule(const Evidence& evidence)
{
    return std::make_unique<LeftRows>(evidence);
}

}  // namespace bgp_rehearse

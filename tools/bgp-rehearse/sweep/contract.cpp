#include "sweep/contract.h"

#include <map>
#include <utility>

#include "sweep/contract_data.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::capi::Function;

// A table that cannot be walked keeps its rows where they are; so does a row that cannot be moved, which is logged.
// Where no row has come, another entity's row can.
void add_rekeyed_tables(std::vector<Rule>* rules)
{
    constexpr char kStep[] = "update_rm_index";
    const Demand walk;
    const Demand move{Must::Log, "Failed to move path: ", "", {0, 0}, {}};
    for (const RekeyedTable& table : rekeyed_tables()) {
        const auto add = [&](Function function, const std::string& path, const Demand& demand) {
            std::vector<const char*> explained = table.explains;
            explained.push_back(table.path.c_str());
            rules->push_back({{kStep, function, path}, demand.explaining(std::move(explained))});
        };
        add(Function::maapi_init_cursor, table.path, walk);
        add(Function::maapi_get_next, table.path, walk);
        add(Function::maapi_move, table.path + "{}", move);
    }
}

std::vector<Rule> all_rules()
{
    std::vector<Rule> rules;
    for (const StepRules& step : step_rules()) {
        for (const CallRule& call : step.calls) {
            rules.push_back({{step.step, call.function, call.path}, call.demand});
        }
    }
    add_rekeyed_tables(&rules);
    return rules;
}

}  // namespace

const std::vector<Rule>& contract()
{
    static const std::vector<Rule> rules = all_rules();
    return rules;
}

std::size_t place_of(const Site& site)
{
    static const std::map<std::string, std::size_t> places = [] {
        std::map<std::string, std::size_t> by_name;
        for (std::size_t place = 0; place < contract().size(); ++place) {
            by_name.emplace(contract()[place].site.name(), place);
        }
        return by_name;
    }();
    const auto found = places.find(site.name());
    return found == places.end() ? contract().size() : found->second;
}

}  // namespace bgp_rehearse

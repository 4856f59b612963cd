#include "sweep/contract.h"

#include <cstring>
#include <map>
#include <stdexcept>
#include <string>

#include "contract/rekeyed_tables.h"
#include "contract/steps.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::CallSite;
using bgp_platform::capi::Function;

Function function_named(const char* name)
{
    for (std::size_t i = 0; i < bgp_platform::capi::kFunctions; ++i) {
        const auto function = static_cast<Function>(i);
        if (std::strcmp(bgp_platform::capi::name_of(function), name) == 0) {
            return function;
        }
    }
    throw std::logic_error(std::string("the C API has no function ") + name);
}

Site site_of(const char* step, const CallSite& call, const std::string& path)
{
    return {step, function_named(call.function), path};
}

std::vector<SiteRule> all_rules()
{
    std::vector<SiteRule> rules;
    for (const bgp_contract::Step& step : bgp_contract::kSteps) {
        for (const CallSite& call : step.calls) {
            rules.push_back({site_of(step.name, call, call.path), call.demand});
        }
    }
    for (const bgp_contract::RekeyedTable& table : bgp_contract::kRekeyedTables) {
        for (const CallSite& call : bgp_contract::kCallsOfEachTable) {
            rules.push_back({site_of(bgp_contract::kUpdateRmIndex.name, call, std::string(table.path) + call.path),
                             call.demand.explaining(table.explains)});
        }
    }
    return rules;
}

}  // namespace

const std::vector<SiteRule>& contract()
{
    static const std::vector<SiteRule> rules = all_rules();
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

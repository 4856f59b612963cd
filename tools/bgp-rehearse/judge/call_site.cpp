#include "judge/call_site.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <unordered_map>

#include "confd_lib.h"
#include "contract/rekeyed_tables.h"
#include "contract/steps.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::CallSite;
using bgp_contract::When;

struct SiteName {
    std::string_view step;
    std::string_view function;
    std::string_view path;

    bool operator==(const SiteName& other) const noexcept
    {
        return step == other.step && function == other.function && path == other.path;
    }
};

struct SiteHash {
    std::size_t operator()(const SiteName& name) const noexcept
    {
        constexpr std::size_t kFactor = 31;
        const std::hash<std::string_view> hash;
        return (hash(name.step) * kFactor + hash(name.function)) * kFactor + hash(name.path);
    }
};

// All call sites of the contract by their names.
class Sites {
public:
    Sites()
    {
        for (const bgp_contract::Step& step : bgp_contract::kSteps) {
            for (const CallSite& site : step.calls) {
                sites_.emplace(SiteName{step.name, site.function, site.path}, &site);
            }
        }
        for (const bgp_contract::RekeyedTable& table : bgp_contract::kRekeyedTables) {
            for (const CallSite& site : bgp_contract::kCallsOfEachTable) {
                const std::string& path = paths_.emplace_back(std::string(table.path) + site.path);
                sites_.emplace(SiteName{bgp_contract::kUpdateRmIndex.name, site.function, path}, &site);
            }
        }
    }

    const CallSite* find(const SiteName& name) const
    {
        const auto found = sites_.find(name);
        return found == sites_.end() ? nullptr : found->second;
    }

private:
    std::deque<std::string> paths_;  // of the re-keyed tables' calls, which the names look at
    std::unordered_map<SiteName, const CallSite*, SiteHash> sites_;
};

// Where the key tuple ends that begins at `at`, its closing brace or bracket.
std::size_t end_of_keys(std::string_view path, std::size_t at)
{
    const char closing = path[at] == '{' ? '}' : ']';
    bool quoted = false;
    for (++at; at < path.size(); ++at) {
        if (path[at] == '\\') {
            ++at;
        } else if (path[at] == '"') {
            quoted = !quoted;
        } else if (path[at] == closing && !quoted) {
            break;
        }
    }
    return at;
}

bool is_first_meant(When when, int error, bool second_try) noexcept
{
    switch (when) {
        case When::WhereThere:
            return error == CONFD_ERR_ALREADY_EXISTS;
        case When::WhereMissing:
            return error == CONFD_ERR_NOEXISTS;
        case When::SecondTry:
            return second_try;
        case When::Always:
            break;
    }
    return true;
}

}  // namespace

std::string without_keys(std::string_view keypath)
{
    std::string text;
    for (std::size_t at = 0; at < keypath.size(); ++at) {
        text += keypath[at];
        if (keypath[at] == '{' || keypath[at] == '[') {
            at = end_of_keys(keypath, at);
            text += keypath[at < keypath.size() ? at : keypath.size() - 1];
        }
    }
    return text;
}

const CallSite* find_call_site(std::string_view step, std::string_view function, std::string_view path_without_keys)
{
    static const Sites sites;
    return sites.find({step, function, path_without_keys});
}

FailureMeaning meaning_of(const bgp_contract::Meaning& meaning, int error, bool second_try) noexcept
{
    return is_first_meant(meaning.when, error, second_try) ? FailureMeaning{meaning.kind, meaning.sentence}
                                                           : FailureMeaning{meaning.other_kind, meaning.other_sentence};
}

}  // namespace bgp_rehearse

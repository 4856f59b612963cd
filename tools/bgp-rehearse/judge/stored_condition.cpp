#include "judge/stored_condition.h"

#include <charconv>
#include <stdexcept>
#include <string>
#include <string_view>

namespace bgp_rehearse {

namespace {

using bgp_contract::Condition;
using bgp_platform::schema::Node;
using bgp_platform::store::Configuration;
using bgp_platform::store::Path;

// The first part of a path that begins with a slash, taken off it: "/prefix-list".
std::string_view take_part(std::string_view* path)
{
    const std::string_view part = path->substr(0, path->find('/', 1));
    path->remove_prefix(part.size());
    return part;
}

// Where "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntIndex" leads.
Path path_of(std::string_view text, const bgp_platform::schema::Schema& schema)
{
    Path path;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view part = take_part(&rest);
        const std::size_t bracket = part.find('[');
        const std::string_view name = part.substr(1, bracket - 1);
        path.node = path.node == nullptr ? schema.top_node(name, nullptr) : path.node->child(name);
        if (path.node == nullptr) {
            throw std::logic_error("the data model has no " + std::string(text));
        }
        if (bracket != std::string_view::npos) {
            std::ptrdiff_t position = 0;
            std::from_chars(part.data() + bracket + 1, part.data() + part.size(), position);
            path.entries.push_back({path.node, {}, position});
        }
    }
    return path;
}

}  // namespace

bool holds(const Condition& condition, const Configuration& stored)
{
    const Path path = path_of(condition.path, stored.schema());
    switch (condition.kind) {
        case Condition::Kind::Value:
            return !stored.get(path).absent();
        case Condition::Kind::Rows:
            return stored.count(path) > 0;
        case Condition::Kind::NoRows:
            break;
    }
    return stored.count(path) == 0;
}

UpgradeSteps::Holds conditions_on(const Configuration& stored)
{
    return [stored](const Condition& condition) { return holds(condition, stored); };
}

}  // namespace bgp_rehearse

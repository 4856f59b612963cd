#include "report/subtree.h"

#include <fmt/format.h>

#include <stdexcept>
#include <vector>

#include "base/nearest.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::store::Row;

// The names of a keypath, without modules' prefixes and keys. What is between braces may be quoted.
class Names {
public:
    explicit Names(std::string_view keypath) : rest_(keypath) {}

    // False at the end. Throws where a "/" or a brace is missing.
    bool next()
    {
        if (rest_.empty()) {
            return false;
        }
        if (rest_.front() != '/') {
            throw std::invalid_argument("a keypath begins with \"/\"");
        }
        rest_.remove_prefix(1);
        name_ = rest_.substr(0, rest_.find_first_of("/{"));
        rest_.remove_prefix(name_.size());
        name_.remove_prefix(name_.find(':') == std::string_view::npos ? 0 : name_.find(':') + 1);
        keys_ = rest_.substr(0, keys());
        rest_.remove_prefix(keys_.size());
        return true;
    }
    std::string_view name() const noexcept { return name_; }
    std::string_view with_keys() const noexcept { return keys_; }

private:
    // How long the part between braces is, with them.
    std::size_t keys() const
    {
        if (rest_.empty() || rest_.front() != '{') {
            return 0;
        }
        bool quoted = false;
        for (std::size_t i = 1; i < rest_.size(); ++i) {
            if (rest_[i] == '\\' && quoted) {
                ++i;
            } else if (rest_[i] == '"') {
                quoted = !quoted;
            } else if (rest_[i] == '}' && !quoted) {
                return i + 1;
            }
        }
        throw std::invalid_argument("the keypath ends within braces");
    }

    std::string_view rest_;
    std::string_view name_;
    std::string_view keys_;
};

using Nodes = std::vector<const Node*>;

Nodes named(const Nodes& nodes, std::string_view name)
{
    Nodes found;
    for (const Node* node : nodes) {
        if (node->name == name) {
            found.push_back(node);
        }
    }
    return found;
}

// Nodes of other modules may have the same name.
Nodes below(const Nodes& nodes)
{
    Nodes children;
    for (const Node* node : nodes) {
        children.insert(children.end(), node->children.begin(), node->children.end());
    }
    return children;
}

std::vector<std::string> names_of(const Nodes& nodes)
{
    std::vector<std::string> names;
    for (const Node* node : nodes) {
        names.push_back(node->name);
    }
    return names;
}

}  // namespace

Subtree::Subtree(const bgp_platform::schema::Schema& schema, std::string_view keypath)
{
    if (keypath.size() > 1 && keypath.back() == '/') {
        keypath.remove_suffix(1);
    }
    if (keypath == "/") {
        return;
    }
    Nodes nodes = schema.top_nodes();
    for (Names names(keypath); names.next();) {
        const Nodes found = named(nodes, names.name());
        if (found.empty()) {
            throw std::invalid_argument(fmt::format("the data model has no {}/{}{}", keypath_, names.name(),
                                                    did_you_mean(names.name(), names_of(nodes))));
        }
        keypath_.append("/").append(names.name()).append(names.with_keys());
        nodes = below(found);
    }
}

bool Subtree::holds(std::string_view keypath) const
{
    return keypath.substr(0, keypath_.size()) == keypath_ &&
           (keypath.size() == keypath_.size() || keypath[keypath_.size()] == '/' || keypath[keypath_.size()] == '{');
}

bool Subtree::holds(const RowChange& change) const
{
    return is_all() || (change.after != nullptr && holds(bgp_platform::store::keypath(*change.around, change.after))) ||
           (change.before != nullptr && holds(stored_path(change)));
}

bool Subtree::holds(const RowChange& change, const LeafChange& leaf) const
{
    const Node* const list = change.row().record().owner;
    const auto holds_in = [&](const std::string& row) {
        return keypath_.size() > row.size() && std::string_view(keypath_).substr(0, row.size()) == row &&
               holds(row + bgp_platform::store::way_below(list, *leaf.node));
    };
    if (list == nullptr) {
        return holds_in("");
    }
    return (change.after != nullptr && holds_in(bgp_platform::store::keypath(*change.around, change.after))) ||
           (change.before != nullptr && holds_in(stored_path(change)));
}

std::string stored_path(const RowChange& change)
{
    return bgp_platform::store::keypath(*change.around, change.before);
}

}  // namespace bgp_rehearse

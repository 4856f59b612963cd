#include "judge/compiled_reference.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "judge/words.h"

namespace bgp_rehearse {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Schema;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::Row;

namespace {

const Node* known_list(const Schema& schema, std::string_view path)
{
    const Node* const node = find_node(schema, path);
    if (node == nullptr || node->kind != NodeKind::List) {
        throw std::invalid_argument(fmt::format("there is no list {}", path));
    }
    return node;
}

const Node* known_leaf(const Node& list, std::string_view name)
{
    const Node* const node = name.empty() ? nullptr : list.child(name);
    if (node == nullptr && !name.empty()) {
        throw std::invalid_argument(fmt::format("{} has no leaf {}", list.name, name));
    }
    return node;
}

}  // namespace

CompiledReference::CompiledReference(const Schema& schema, const Reference& reference)
    : said(reference), list(known_list(schema, reference.from)), leaf(known_leaf(*list, reference.leaf))
{
    for (const char* const to : reference.to) {
        if (to != nullptr) {
            targets.emplace_back(schema, to, list, leaf);
        }
    }
    take_condition(reference.where);
    const std::string_view words = reference.which;
    const std::size_t name = words.find('$');
    which_.emplace(words.substr(name), list, leaf, *list->entry->values.front());
    before_which_ = words.substr(0, name);
}

bool CompiledReference::refers(const Row& row) const
{
    if (condition_ != nullptr) {
        const Value& value = row.value(condition_->slot);
        if (std::find(allowed_.begin(), allowed_.end(), value) == allowed_.end()) {
            return false;
        }
    }
    const Value* const value = leaf == nullptr ? nullptr : value_in(row, *leaf);
    switch (said.none) {
        case None::Never:
            break;
        case None::Unset:
            return value != nullptr;
        case None::Zero:
            return value != nullptr && *value != zero_ && *value != signed_zero_;
        case None::Empty:
            return value != nullptr && !value->bytes().empty();
    }
    return true;
}

std::string CompiledReference::which(const RowPlace& place) const
{
    const Value& value = which_->source(place);
    return before_which_ + words_of_value(*which_->leaf(), value.absent() ? nullptr : &value);
}

// "leaf=value|value"
void CompiledReference::take_condition(std::string_view where)
{
    if (where.empty()) {
        return;
    }
    condition_ = known_leaf(*list, where.substr(0, where.find('=')));
    while (!where.empty()) {
        where.remove_prefix(std::min(where.find_first_of("=|"), where.size() - 1) + 1);
        const std::string_view value = where.substr(0, where.find('|'));
        if (!condition_->type->parse(value, &allowed_.emplace_back())) {
            throw std::invalid_argument(fmt::format("{} is never {}", condition_->name, value));
        }
        where.remove_prefix(value.size());
    }
}

ReferenceTargets::ReferenceTargets(const CompiledReference& reference, const Configuration& configuration)
{
    for (const PathTemplate& target : reference.targets) {
        lookups_.emplace_back(target, configuration);
    }
}

bool ReferenceTargets::hold(const RowPlace& place)
{
    const bool found = std::any_of(lookups_.begin(), lookups_.end(),
                                   [&place](Lookup& lookup) { return lookup.row(place) != nullptr; });
    number_ += lookups_.front().fresh() ? 1 : 0;
    return found;
}

}  // namespace bgp_rehearse

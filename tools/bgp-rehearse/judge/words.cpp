#include "judge/words.h"

#include <fmt/format.h>

#include "calls/recorder.h"
#include "store/changes.h"

namespace bgp_rehearse {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Value;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

Noun noun_of(const Node& /*list*/)
{
    return {"row", "rows"};
}

std::string grouped(std::size_t number)
{
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3) {
        text.insert(place - 3, ",");
    }
    return text;
}

std::string counted(std::size_t number, const Noun& noun)
{
    return fmt::format("{} {}", grouped(number), number == 1 ? noun.one : noun.many);
}

std::string words_of_row(const Trail& around, const Row& row)
{
    return bgp_platform::store::keypath(around, &row);
}

std::string words_of_value(const Node& leaf, const Value* value)
{
    if (value == nullptr) {
        return "(not set)";
    }
    if (is_secret(leaf)) {
        return bgp_platform::capi::kMasked;
    }
    return leaf.kind == NodeKind::Presence ? "(present)" : leaf.type->text(*value);
}

}  // namespace bgp_rehearse

// The lists of a schema, those of other lists' entries too, each once and in the schema's order.
#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "device.h"

namespace bgp_rehearse {

class ListOrder {
public:
    explicit ListOrder(const bgp_platform::schema::Schema& schema);

    const std::vector<const bgp_platform::schema::Node*>& lists() const noexcept { return lists_; }
    std::size_t place(const bgp_platform::schema::Node& list) const { return places_.at(&list); }

private:
    void add(const std::vector<const bgp_platform::schema::Node*>& nodes);

    std::vector<const bgp_platform::schema::Node*> lists_;
    std::unordered_map<const bgp_platform::schema::Node*, std::size_t> places_;
};

}  // namespace bgp_rehearse

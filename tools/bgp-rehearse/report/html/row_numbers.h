// The numbers by which a page knows the changed rows: from 1, in the order in which they are visited.
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "report/model.h"

namespace bgp_rehearse {

// Of the rows that findings have as their places, which the links lead to.
class RowNumbers {
public:
    explicit RowNumbers(const Report& report);

    // 0 where the row of a place is not among the changes, or is not known.
    std::size_t of(const Place& place) const;

    // Those of a finding, ascending, each once.
    std::vector<std::size_t> of(const Finding& finding) const;

private:
    std::unordered_map<const bgp_platform::store::Row*, std::size_t> numbers_;
};

// "#row-12"
std::string link_to_row(std::size_t number);

}  // namespace bgp_rehearse

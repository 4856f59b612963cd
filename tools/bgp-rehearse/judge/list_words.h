// What lists and their rows are called in the network, as data: one line for each list that has a name of its own.
#pragma once

#include <string_view>

#include "device.h"

namespace bgp_rehearse {

// What the entries of a list are: "route map row", "route map rows".
struct Noun {
    const char* one;
    const char* many;
};

// The rows of a list. In `row` stands $N for the key N in words, $addressN for octets that a text holds, $familyN for the
// address family of the keys N and N + 1, $peer for the neighbour of the keys from the second one on, $around for the key
// of the row around, and $served for the VRF that an instance is for.
struct ListWords {
    std::string_view list;
    Noun noun;
    std::string_view row;
};

// Null for a list that has none.
const ListWords* find_words(const bgp_platform::schema::Node& list);

// "row", "rows" for a list that has no words.
Noun noun_of(const bgp_platform::schema::Node& list);

}  // namespace bgp_rehearse

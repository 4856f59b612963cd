// Rows in the words of the network: "neighbour 192.0.2.2 IPv6 unicast", "map 3 entry 20".
#pragma once

#include <cstddef>
#include <string>

#include "device.h"
#include "judge/list_words.h"

namespace bgp_rehearse {

// "1 route map row", "2,000 route map rows"
std::string counted(std::size_t number, const Noun& noun);
std::string grouped(std::size_t number);  // "2,000"

// A row by its key in words, without its entity index; `around` are the rows around it.
std::string words_of_row(const bgp_platform::store::Trail& around, const bgp_platform::store::Row& row);

// What a place of the tree is in, there or not: "neighbour 192.0.2.2 IPv6 unicast"; of a list as a whole "the neighbour
// families". Empty for what is in no row, and for rows that are told by their positions.
std::string words_of_path(const bgp_platform::store::Path& path);

// A value as a report shows it: octets of an address in dotted or colon form, a secret one masked, "(not set)" for none.
std::string words_of_value(const bgp_platform::schema::Node& leaf, const bgp_platform::schema::Value* value);

// A row's key values as they stand in a keypath but for the addresses: "5 ipv4 0.0.0.0 0 ipv4 192.0.2.2 0 0".
std::string words_of_key(const bgp_platform::store::Row& row);

// The key values from the one at `first` on as words of a row have them: "IPv6 unicast".
std::string words_of_keys(const bgp_platform::store::Row& row, uint16_t first);

// Four or sixteen octets as an address; what else there is as "0a:00:ff".
std::string address_words(const std::string& octets);

}  // namespace bgp_rehearse

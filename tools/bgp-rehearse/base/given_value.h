// Values that a person wrote, in an option or in a file of facts. A text that is none throws std::invalid_argument with
// what it should have been, for the reader to put a name before.
#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/duration.h"

namespace bgp_rehearse {

uint64_t given_number(const std::string& text, uint64_t least, uint64_t most);
Duration given_duration(const std::string& text);
std::size_t given_word(const std::string& text, const std::vector<std::string>& words);  // its place among them

// IPv4 addresses, at least one, between any one of the separators.
std::vector<in_addr> given_addresses(const std::string& text, const char* separators);

// Addresses as an option takes them: "192.0.2.1,192.0.2.2".
std::string words_of_addresses(const std::vector<in_addr>& addresses);

}  // namespace bgp_rehearse

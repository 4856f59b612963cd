// Finds the inputs of a fleet: in folders, lists, archives and repositories.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "fleet/plan/found.h"

namespace bgp_rehearse {

struct Search {
    std::vector<std::string> paths;  // "@FILE": a list of files, divided by line ends, or by NUL where it has any
    bool all_names = false;          // not only what ends in .xml, or in .xml and a packer's ending
    uint64_t max_bytes = 0;          // of an input, as stored
};

// All inputs, in the order of their names, each once: what is reached twice is counted among what was passed over. What
// cannot be read is an input too, with the reason. Throws CommandError (BadInput) for a path that is not there or cannot
// be looked into, and for two inputs that would have one name.
Found find_inputs(const Search& search);

}  // namespace bgp_rehearse

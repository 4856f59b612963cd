// The inputs that a plan is made of, as they are found: in as little memory as a million of them needs.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/sha256.h"
#include "fleet/plan/plan.h"

namespace bgp_rehearse {

// Where inputs were found whose names begin alike.
struct FoundPlace {
    enum class Kind { Files, Archive, Repository };

    Kind kind = Kind::Files;
    std::string shown;    // what the names of its inputs begin with, escaped
    std::string path;     // what the paths of its files begin with; of archive or repository
    bool packed = false;  // an archive whose members cannot be read alone
    std::string objects;  // the names of the objects of a repository, one behind the other
    std::size_t object_size = 0;
};

struct FoundInput {
    std::string name;  // escaped, whole
    uint32_t place = 0;
    uint32_t refused = 0;     // in Found::refusals: why it could not be read, from 1; 0: it could
    uint64_t bytes = 0;       // as they are stored
    std::size_t index = 0;    // among the entries of its archive, or the objects of its repository
    uint64_t offset = 0;      // in an archive that is not packed
    Sha256::Digest sha256{};  // of what could be read
};

struct Found {
    std::vector<FoundPlace> places;
    std::vector<FoundInput> inputs;
    std::vector<std::string> refusals;  // each text once
    std::map<std::string, std::size_t> passed_over;
    std::vector<std::string> remarks;  // on what has to be told of single paths

    // What follows the beginning of a name that its place has, as bytes.
    std::string rest_of_name(const FoundInput& input) const;

    InputSource source_of(const FoundInput& input) const;
};

}  // namespace bgp_rehearse

// What a fleet's plan says: which configurations are rehearsed, with which library and options, and in which shards.
//
// Names are bytes that became text: escaped_name() in base/text_escape.h, reversible. A member of an archive is
// "ARCHIVE!MEMBER", a file of a repository "REPOSITORY:PATH".
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "base/duration.h"
#include "run/facts.h"
#include "run/request.h"

namespace bgp_rehearse {

// Where an input's bytes lie. Paths are bytes as the system has them, and absolute.
struct StoredFile {
    std::string path;
};

struct ArchiveMember {
    std::string archive;
    std::size_t index = 0;           // among all entries of the archive, from 0
    std::optional<uint64_t> offset;  // of its header, in an archive that is not compressed
};

struct RepositoryObject {
    std::string repository;
    std::string object;  // its hexadecimal name
};

using InputSource = std::variant<StoredFile, ArchiveMember, RepositoryObject>;

struct PlannedInput {
    std::size_t number = 0;  // in the order of the names, from 0; does not depend on the shards
    std::string name;        // escaped, and no other input of the plan has it
    InputSource source;
    uint64_t bytes = 0;   // as they are stored: what is compressed stays so
    std::string sha256;   // of these bytes; empty where they could not be read
    std::string refused;  // why they could not be read when the plan was made; empty: they could
    DeviceFacts facts;    // of this device, where no option says the same of all
};

// All that decides the result of an input, besides its own bytes and facts and the library.
struct FleetOptions {
    FleetOptions() { device.interfaces = {in_addr{htonl(INADDR_LOOPBACK)}}; }

    DeviceOptions device;                                         // of each, where its facts do not say better
    std::vector<std::pair<std::string, std::string>> severities;  // of findings: id and level, a later one counts
    Duration time_limit = std::chrono::seconds(60);               // of one rehearsal; 0: none
    uint64_t memory_limit = 0;                                    // bytes, of one rehearsal; 0: none
    uint64_t max_bytes = 1 << 30;                                 // of one input, unpacked
};

struct PlannedLibrary {
    std::string path;
    std::string version;
    std::string sha256;
};

// The inputs of a shard stand together in the plan's file.
struct Shard {
    uint64_t offset = 0;  // of its first line, from the end of the plan's first line
    std::size_t inputs = 0;
    uint64_t bytes = 0;  // of its inputs
};

struct Plan {
    std::string id;  // SHA-256 of inputs, options and library, whatever the shards are
    std::size_t inputs = 0;
    uint64_t bytes = 0;
    PlannedLibrary library;
    FleetOptions options;
    std::vector<Shard> shards;
    std::map<std::string, std::size_t> passed_over;  // what was found and is no input, counted by reason
};

}  // namespace bgp_rehearse

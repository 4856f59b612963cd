// The bytes of planned inputs, from wherever they lie. One reader serves a shard: it goes through a compressed archive
// once, forward, and asks one git process for all objects of a repository.
#pragma once

#include <memory>
#include <string>

#include "fleet/plan/input_error.h"
#include "fleet/plan/plan.h"

namespace bgp_rehearse {

class InputReader {
public:
    // An input of more bytes than that, as stored, is refused.
    explicit InputReader(uint64_t max_bytes);
    ~InputReader();
    InputReader(const InputReader&) = delete;
    InputReader& operator=(const InputReader&) = delete;

    // The bytes as they are stored, those that the plan was made for. Throws InputError; any further input can be read
    // all the same.
    std::string read(const PlannedInput& input);

private:
    struct Opened;
    uint64_t max_bytes_;
    std::unique_ptr<Opened> opened_;
};

// The configuration in an input's bytes: what is compressed (.xml.gz) is unpacked, anything else stays as it is. Throws
// xml::LoadError, which names it, for damaged data, an archive, and more than `max_bytes`.
std::string unpacked_configuration(std::string bytes, const std::string& name, uint64_t max_bytes);

}  // namespace bgp_rehearse

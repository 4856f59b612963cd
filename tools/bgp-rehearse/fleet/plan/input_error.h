// An input that cannot be had: gone, unreadable, changed since the plan was made, too big.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <stdexcept>

namespace bgp_rehearse {

// The text says why, without the input's name; it is the same wherever and whenever the same is wrong.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class TooManyBytes : public InputError {
public:
    // `bytes`: how many there are, as far as that is known.
    TooManyBytes(uint64_t bytes, uint64_t max_bytes)
        : InputError(fmt::format("it has more bytes than --max-bytes allows ({})", max_bytes)), bytes_(bytes)
    {
    }

    uint64_t bytes() const noexcept { return bytes_; }

private:
    uint64_t bytes_;
};

}  // namespace bgp_rehearse

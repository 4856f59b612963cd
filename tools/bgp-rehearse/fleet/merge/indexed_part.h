// A whole part, of which results can be read in any order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fleet/shard/part.h"

namespace bgp_rehearse {

class IndexedPart {
public:
    // Reads the file to its end, and keeps only where its lines are. Throws PartError, as line() does.
    explicit IndexedPart(const std::string& file);
    ~IndexedPart();
    IndexedPart(const IndexedPart&) = delete;
    IndexedPart& operator=(const IndexedPart&) = delete;

    const std::string& file() const noexcept { return file_; }
    const PartHeader& header() const noexcept { return header_; }

    // Of a result, from 0 in the shard's order.
    std::string line(std::size_t result) const;

private:
    std::string file_;
    PartHeader header_;
    std::vector<uint64_t> starts_;  // of the results' lines, and of the line behind them
    int descriptor_ = -1;
};

}  // namespace bgp_rehearse

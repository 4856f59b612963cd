// The last lines of a log as plain bytes, for memory that outlives the process that writes them.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace bgp_rehearse {

class LastLines {
public:
    static constexpr std::size_t kLines = 10;
    static constexpr std::size_t kMostBytes = 300;  // of a line; of a longer one its beginning is kept

    void add(std::string_view line) noexcept;

    // The lines that were added last, the oldest first; "…" ends one that was longer.
    std::vector<std::string> all() const;

private:
    struct Line {
        std::size_t size = 0;  // kMostBytes + 1 where it was longer
        std::array<char, kMostBytes> text{};

        std::string whole() const;
    };
    std::array<Line, kLines + 1> lines_;  // one is being written
    std::atomic<uint64_t> added_{0};
};

}  // namespace bgp_rehearse

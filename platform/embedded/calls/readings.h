// What the published pages of the C API leave open, and whether a run came by it.
//
// Nobody here has a device to ask. Each open question has a number, and one reading of it is taken
// (platform/README.md has the table). A call that depends on one tells so, so that a run can say what it rests on.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <vector>

namespace bgp_platform::capi {

// X(number, name)
#define BGP_PLATFORM_READINGS(X)        \
    X(1, ListBelowMissingEntryIsEmpty)  \
    X(2, MoveOntoOwnKeysSucceeds)       \
    X(3, SetBelowMissingEntryFails)     \
    X(4, RowsBeforeTheFailingOneStay)   \
    X(5, EmptyLeafListIsAbsent)         \
    X(6, HostBitsOfPrefixAreKept)       \
    X(7, ShortNumberInPathIsTaken)      \
    X(8, WholeListOrContainerIsDeleted) \
    X(9, KeyOfMoreThanEightIsTaken)     \
    X(10, OctetsAreInLowerCase)         \
    X(11, KeyIsQuotedBlanksAreTaken)    \
    X(12, EmptyPathIsBadDefaultExists)  \
    X(13, OneThreadOneDevice)

enum class Reading : uint8_t {
#define BGP_PLATFORM_READING(number, name) name = (number),
    BGP_PLATFORM_READINGS(BGP_PLATFORM_READING)
#undef BGP_PLATFORM_READING
};

inline constexpr std::size_t kReadings = 13;

// The bit of a reading, for sets of them.
constexpr uint32_t bit(Reading reading)
{
    return 1U << static_cast<unsigned>(reading);
}

struct MetReading {
    int number = 0;
    std::string place;  // the first keypath that depended on it, or the call where there is none
    std::size_t count = 0;
};

class Readings {
public:
    // Notes that a call depends on a reading; `place` makes the text, for the first alone. Without memory for the text
    // the place stays empty: the call's own work is done all the same.
    template <typename Place>
    void meet(Reading reading, Place&& place) noexcept
    {
        Met& met = met_[static_cast<std::size_t>(reading) - 1];
        if (met.count++ == 0) {
            try {
                met.place = place();
            } catch (const std::bad_alloc&) {
                met.place.clear();
            }
        }
    }

    // The same for each reading of a set of bits.
    template <typename Place>
    void meet_all(uint32_t bits, Place&& place) noexcept
    {
        for (int number = 1; bits >> number != 0; ++number) {
            if ((bits >> number & 1U) != 0) {
                meet(static_cast<Reading>(number), place);
            }
        }
    }

    // Those met, by number.
    std::vector<MetReading> met() const;

private:
    struct Met {
        std::size_t count = 0;
        std::string place;
    };
    std::array<Met, kReadings> met_;
};

}  // namespace bgp_platform::capi

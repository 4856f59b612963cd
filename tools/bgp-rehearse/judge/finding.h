// What an engineer has to know of a rehearsal, one finding a reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device.h"

namespace bgp_rehearse {

enum class Severity : uint8_t { Note, Review, Stop };

// "note", "review", "stop"
const char* name_of(Severity severity) noexcept;
std::optional<Severity> severity_named(std::string_view name) noexcept;

// The ids, in the order in which they are told at one severity.
enum class FindingId : uint8_t {
    Ended,
    Returned,
    StepFailed,
    RowLost,
    ReferenceBroken,
    NotValid,
    RowLeft,
    WriteFailed,
    FamilyOff,
    IdentityGuessed,
    IdentityChanged,
    RedistributionChanged,
    IndexChanged,
    Again,
    LimitRewritten,
    ActionRewritten,
    RouteMapRewritten,
    StandInDoubt,
    FailedAsExpected,
    LeftOut,
};

inline constexpr std::size_t kFindingIds = static_cast<std::size_t>(FindingId::LeftOut) + 1;

// "row-left"
const char* name_of(FindingId id) noexcept;
std::optional<FindingId> finding_named(std::string_view name) noexcept;

// Where a finding is: a row, or a place that a text tells. Rows live as long as the device's configurations.
struct Place {
    const bgp_platform::store::Row* before = nullptr;  // the stored row; null where there is none
    const bgp_platform::store::Row* after = nullptr;   // the row of the result; null where there is none
    uint32_t around = 0;                               // in Finding::around: the rows around them
    uint32_t said = 0;         // in Finding::said: path and text of a place that is no row, from 1
    std::size_t log_line = 0;  // of a failed call: the line of the log that was written last before it, from 1
};

struct Finding {
    // Adds a place that is a row. Of places that follow one another, those with the same rows around them share these.
    void add_row(const bgp_platform::store::Row* before, const bgp_platform::store::Row* after,
                 const bgp_platform::store::Trail& around_them = {});

    // Adds a place that a text tells, and the rows that it tells of, if any. Returns it, until the next one is added.
    Place& say(std::string path, std::string text, const bgp_platform::store::Row* before = nullptr,
               const bgp_platform::store::Row* after = nullptr);

    // Who made the place added last: where places have different steps, the finding has none.
    void made_by(const char* the_step);

    FindingId id = FindingId::Ended;
    Severity severity = Severity::Note;
    std::string step;        // its function's name; empty where no one step is meant
    std::string reason;      // the sentence without counts, keys, addresses and values: of all routers that have it alike
    std::string sentence;    // without a full stop
    std::string short_form;  // the same behind "Nothing is lost; ", shorter; may be empty
    std::string advice;      // what to do or to give, a sentence of its own; may be empty
    std::size_t count = 0;   // of places, or of what the sentence counts where there are none
    std::vector<Place> places;
    const bgp_platform::schema::Node* leaf = nullptr;  // whose values before and after belong to each place

    std::vector<bgp_platform::store::Trail> around = {{}};
    struct Said {
        std::string path;
        std::string text;
    };
    std::vector<Said> said;
};

// A place's keypath, in the result where it is there: "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry{5 3 20}".
std::string path_of(const Finding& finding, const Place& place);

// A place in network words: "map 3 entry 20", "neighbour 192.0.2.2 IPv6 unicast: 500000 -> 0".
std::string words_of(const Finding& finding, const Place& place);

}  // namespace bgp_rehearse

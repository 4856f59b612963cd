#include "judge/finding.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "judge/words.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::store::Row;

constexpr const char* kSeverities[] = {"note", "review", "stop"};

// In the order of FindingId.
constexpr const char* kIds[] = {
    "ended",
    "returned",
    "step-failed",
    "row-lost",
    "reference-broken",
    "not-valid",
    "row-left",
    "write-failed",
    "family-off",
    "identity-guessed",
    "identity-changed",
    "redistribution-changed",
    "index-changed",
    "again",
    "limit-rewritten",
    "action-rewritten",
    "route-map-rewritten",
    "stand-in-doubt",
    "failed-as-expected",
    "left-out",
};
static_assert(std::size(kIds) == kFindingIds);

template <typename Id, typename Names>
std::optional<Id> named(const Names& names, std::string_view name) noexcept
{
    const auto found = std::find(std::begin(names), std::end(names), name);
    return found == std::end(names) ? std::nullopt : std::optional<Id>(static_cast<Id>(found - std::begin(names)));
}

const Row* row_of(const Place& place) noexcept
{
    return place.after != nullptr ? place.after : place.before;
}

}  // namespace

const char* name_of(Severity severity) noexcept
{
    return kSeverities[static_cast<std::size_t>(severity)];
}

std::optional<Severity> severity_named(std::string_view name) noexcept
{
    return named<Severity>(kSeverities, name);
}

const char* name_of(FindingId id) noexcept
{
    return kIds[static_cast<std::size_t>(id)];
}

std::optional<FindingId> finding_named(std::string_view name) noexcept
{
    return named<FindingId>(kIds, name);
}

void Finding::add_row(const Row* before, const Row* after, const bgp_platform::store::Trail& around_them)
{
    Place place;
    place.before = before;
    place.after = after;
    if (!around_them.empty()) {
        if (around.back() != around_them) {
            around.push_back(around_them);
        }
        place.around = static_cast<uint32_t>(around.size() - 1);
    }
    places.push_back(place);
}

Place& Finding::say(std::string path, std::string text, const Row* before, const Row* after)
{
    said.push_back({std::move(path), std::move(text)});
    Place& place = places.emplace_back();
    place.before = before;
    place.after = after;
    place.said = static_cast<uint32_t>(said.size());
    return place;
}

void Finding::made_by(const char* the_step)
{
    if (places.size() == 1) {
        step = the_step;
    } else if (step != the_step) {
        step.clear();
    }
}

std::string path_of(const Finding& finding, const Place& place)
{
    if (place.said != 0) {
        return finding.said[place.said - 1].path;
    }
    std::string path = bgp_platform::store::keypath(finding.around[place.around], row_of(place));
    if (finding.leaf != nullptr) {
        path += bgp_platform::store::way_below(row_of(place)->record().owner, *finding.leaf);
    }
    return path;
}

std::string words_of(const Finding& finding, const Place& place)
{
    if (place.said != 0) {
        return finding.said[place.said - 1].text;
    }
    std::string words = words_of_row(finding.around[place.around], *row_of(place));
    if (finding.leaf != nullptr) {
        const uint16_t slot = finding.leaf->slot;
        const auto value = [&](const Row* row) {
            return words_of_value(*finding.leaf,
                                  row == nullptr || row->value(slot).absent() ? nullptr : &row->value(slot));
        };
        words += ": " + value(place.before) + " -> " + value(place.after);
    }
    return words;
}

}  // namespace bgp_rehearse

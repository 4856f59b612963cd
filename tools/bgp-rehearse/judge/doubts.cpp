// What the result rests on that nobody has proved on a device: questions that the published pages leave open, where the
// embedded platform takes one answer (platform/README.md numbers them). Told where the other answer would have changed the
// result.
#include <fmt/format.h>

#include <cstring>

#include "confd_lib.h"
#include "judge/rule.h"
#include "judge/words.h"
#include "libvrfid.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::capi::Function;
using bgp_platform::capi::MetReading;
using bgp_platform::capi::Reading;
using bgp_platform::schema::Value;
using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Path;

enum class Matters {
    Always,        // once a call has depended on it
    Never,         // the other answer shows in texts of the log alone, or makes the upgrade do the same
    WithRows,      // where the list that the first of the calls named has rows
    WithWritten,   // where a row that was moved onto its own key was written behind the move
    WithRowsMade,  // where the row that a value was to be set in is not in the result anyway
};

struct Doubt {
    const char* taken;  // behind "took for granted that "
    Matters matters;
    Reading reading;
    Severity severity;
};

constexpr Doubt kDoubts[] = {
    // A device that refuses to count or walk such a list finds nothing there either.
    {"a list below a missing entry is empty", Matters::Never, Reading::ListBelowMissingEntryIsEmpty, Severity::Note},
    {"a row can be moved onto the key that it has", Matters::WithWritten, Reading::MoveOntoOwnKeysSucceeds,
     Severity::Note},
    {"setting a value does not make its row", Matters::WithRowsMade, Reading::SetBelowMissingEntryFails,
     Severity::Note},
    {"rows written before one that fails stay written", Matters::Always, Reading::RowsBeforeTheFailingOneStay,
     Severity::Note},
    // Without free numbers the next one is taken, whichever way their list says so.
    {"an empty list of free numbers is not there", Matters::Never, Reading::EmptyLeafListIsAbsent, Severity::Note},
    {"a prefix with host bits is accepted, which a device may refuse", Matters::Always,
     Reading::HostBitsOfPrefixAreKept, Severity::Review},
    {"a short number can stand in a path", Matters::Always, Reading::ShortNumberInPathIsTaken, Severity::Note},
    {"an entry of a list of numbers can be deleted", Matters::Always, Reading::WholeListOrContainerIsDeleted,
     Severity::Note},
    {"a key may have more than eight parts", Matters::WithRows, Reading::KeyOfMoreThanEightIsTaken, Severity::Note},
    {"octets are in lower case", Matters::Never, Reading::OctetsAreInLowerCase, Severity::Note},
    {"a path may have quoted keys, and blanks beside braces", Matters::WithRows, Reading::KeyIsQuotedBlanksAreTaken,
     Severity::Note},
    {"a value that has only its default exists", Matters::Always, Reading::EmptyPathIsBadDefaultExists, Severity::Note},
    {"one thread calls, for one device", Matters::Always, Reading::OneThreadOneDevice, Severity::Note},
};

class Doubts : public Rule {
public:
    explicit Doubts(const Evidence& evidence) : evidence_(evidence) {}

    void row(const RowChange& change) override
    {
        written_in_place_ = written_in_place_ || (change.fate == Fate::Changed && is_written_by_the_move(change));
    }

    void find(std::vector<Finding>* findings) override
    {
        const std::vector<MetReading> met = evidence_.device.readings();
        for (const Doubt& doubt : kDoubts) {
            for (const MetReading& reading : met) {
                if (reading.number == static_cast<int>(doubt.reading) && matters(doubt.matters, reading.place)) {
                    findings->push_back(finding(doubt, reading));
                }
            }
        }
    }

private:
    // The re-keying moves each row and then writes the leaf that follows: a leaf of a row that kept its key.
    static bool is_written_by_the_move(const RowChange& change)
    {
        bool written = false;
        for_each_leaf_change(change, [&written](const LeafChange& leaf) {
            written = written || std::strcmp(step_of_writer(leaf.writer), "update_rm_index") == 0;
        });
        return written;
    }

    bool matters(Matters when, const std::string& place) const
    {
        switch (when) {
            case Matters::Always:
                return true;
            case Matters::WithRows:
                return has_rows(place);
            case Matters::WithWritten:
                return written_in_place_;
            case Matters::WithRowsMade:
                return a_row_would_be_more();
            case Matters::Never:
                break;
        }
        return false;
    }

    bool has_rows(const std::string& place) const
    {
        const std::optional<Path> path = evidence_.device.path_of(place);
        if (!path) {
            return true;
        }
        Path list = *path;
        list.node = list.entries.empty() ? list.node : list.entries.back().list;
        return evidence_.device.configuration(Datastore::Transaction).count(list) > 0;
    }

    // Whether a row that a value was to be set in, and that was not there, is not in the result either.
    bool a_row_would_be_more() const
    {
        bool more = false;
        evidence_.failed_calls.for_each([&](const FailedCalls::Call& call) {
            const bool set = call.function == Function::maapi_set_elem || call.function == Function::maapi_set_elem2;
            more = more || (set && call.error == CONFD_ERR_NOEXISTS && !is_in_result(std::string(call.path)));
        });
        return more;
    }

    // Under its key, or under the global index that the re-keying would have given it.
    bool is_in_result(const std::string& path) const
    {
        const Configuration& result = evidence_.device.configuration(Datastore::Transaction);
        const std::optional<Path> place = evidence_.device.path_of(path);
        if (!place || place->entries.empty()) {
            return false;
        }
        Path entry = *place;
        entry.node = entry.entries.back().list;
        const List* const list = result.find_list(entry);
        std::vector<Value> key = entry.entries.back().keys;
        if (list == nullptr || key.empty() || list->find(key.data(), key.size()) != nullptr) {
            return list != nullptr && !key.empty();
        }
        key.front() = Value::of_uint(libvrfid::VrfId::ComponentFromVrf(0));
        return list->find(key.data(), key.size()) != nullptr;
    }

    Finding finding(const Doubt& doubt, const MetReading& met) const
    {
        Finding finding;
        finding.id = FindingId::StandInDoubt;
        finding.severity = doubt.severity;
        finding.count = 1;
        finding.reason = fmt::format("it is taken for granted that {}", doubt.taken);
        finding.sentence = fmt::format("{} took for granted that {} (question {}, not proved on a device)",
                                       counted(met.count, {"call", "calls"}), doubt.taken, met.number);
        finding.short_form =
            fmt::format("{} on the device (question {})",
                        doubt.reading == Reading::HostBitsOfPrefixAreKept ? "prefixes with host bits may be refused"
                                                                          : "a call may be answered otherwise",
                        met.number);
        const std::optional<Path> path = evidence_.device.path_of(met.place);
        const std::string words = path ? words_of_path(*path) : "";
        finding.say(met.place, fmt::format("first at {}", words.empty() ? met.place : words));
        return finding;
    }

    const Evidence& evidence_;
    bool written_in_place_ = false;
};

}  // namespace

std::unique_ptr<Rule> doubts_rule(const Evidence& evidence)
{
    return std::make_unique<Doubts>(evidence);
}

}  // namespace bgp_rehearse

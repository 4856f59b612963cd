// References that lead nowhere in the result: those that led to a row before, those that did not either, and those of new
// rows. And rows that had nothing to belong to, and do after their move.
#include "judge/references.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <unordered_set>

#include "judge/compiled_for.h"
#include "judge/compiled_reference.h"
#include "judge/rule.h"
#include "judge/words.h"
#include "store/changes.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::capi::Function;
using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Schema;
using bgp_platform::store::History;
using bgp_platform::store::List;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;

constexpr std::size_t kShownTargets = 3;

// What is told of a reference. The first three lead nowhere in the result.
enum class State {
    Lost,    // it led to a row before
    New,     // of a new row, or of a leaf that had none
    Before,  // it led nowhere before either
    Healed,  // it leads to a row, and led nowhere before the row moved
};
constexpr std::size_t kStates = 4;

// Whether a text has words, and not as a part of others.
bool has_words(const std::string& text, const std::string& words)
{
    return fmt::format(" {} ", text).find(fmt::format(" {} ", words)) != std::string::npos;
}

// The findings of one reference.
class Told {
public:
    Told(const CompiledReference& reference, const History& history) : reference_(reference), history_(history) {}

    // `to` says whose target is named, of the result or stored.
    // Each other target has another number than the one before it.
    void add(State state, const Row* before, const Row& after, const Trail& around, const RowPlace& to,
             std::size_t target)
    {
        Finding& finding = findings_[static_cast<std::size_t>(state)];
        Named& targets = named_[static_cast<std::size_t>(state)];
        finding.add_row(before, &after, around);
        finding.made_by(step_of_writer(history_.writer_of(after)));
        if (target != targets.last) {
            targets.last = target;
            targets.add(reference_.which(to), [&] { return words_of_row(around, after); });
        }
    }

    void find(std::vector<Finding>* findings)
    {
        for (std::size_t i = 0; i < kStates; ++i) {
            Finding& finding = findings_[i];
            if (!finding.places.empty()) {
                const auto state = static_cast<State>(i);
                finding.id = FindingId::ReferenceBroken;
                finding.severity = severity_of(state);
                finding.count = finding.places.size();
                const Noun noun = noun_of(*reference_.list);
                finding.reason =
                    sentence(state, state == State::New ? fmt::format("new {}", noun.many) : noun.many, false);
                finding.short_form = sentence(state, who(state, finding.count), finding.count == 1);
                finding.sentence = finding.short_form + named_[i].text();
                findings->push_back(std::move(finding));
            }
        }
    }

private:
    // The targets, which the sentence names where the places do not.
    struct Named {
        std::vector<std::string> first;
        bool more = false;
        bool in_places = true;
        std::size_t last = 0;

        template <typename WordsOfPlace>
        void add(std::string target, const WordsOfPlace& words_of_place)
        {
            if (std::find(first.begin(), first.end(), target) == first.end()) {
                more = more || first.size() == kShownTargets;
                if (!more) {
                    in_places = in_places && has_words(words_of_place(), target);
                    first.push_back(std::move(target));
                }
            }
        }
        std::string text() const
        {
            return in_places ? "" : fmt::format(": {}{}", fmt::join(first, ", "), more ? " and others" : "");
        }
    };

    Severity severity_of(State state) const noexcept
    {
        return state == State::Lost ? reference_.said.lost : state == State::New ? Severity::Review : Severity::Note;
    }

    std::string who(State state, std::size_t count) const
    {
        const Noun noun = noun_of(*reference_.list);
        return state == State::New ? fmt::format("{} new {}", grouped(count), count == 1 ? noun.one : noun.many)
                                   : counted(count, noun);
    }

    std::string sentence(State state, const std::string& who, bool one) const
    {
        if (state == State::Healed) {
            return fmt::format("{} had no {} before and {} one by the move", who, reference_.said.what,
                               one ? "gets" : "get");
        }
        const char* const gone = state == State::Lost     ? "is not there now"
                                 : state == State::Before ? "was not there before either"
                                                          : "is not there";
        return fmt::format("{} {} {} {} that {}", who, one ? reference_.said.verb.one : reference_.said.verb.many,
                           article(reference_.said.what), reference_.said.what, gone);
    }

    static const char* article(std::string_view noun) { return noun.find_first_of("AEIOUaeiou") == 0 ? "an" : "a"; }

    const CompiledReference& reference_;
    const History& history_;
    std::array<Finding, kStates> findings_;
    std::array<Named, kStates> named_;
};

struct CompiledReferences {
    explicit CompiledReferences(const Schema& schema)
    {
        for (const Reference& reference : kReferences) {
            all.emplace_back(schema, reference);
        }
    }

    std::vector<CompiledReference> all;
};

struct Check {
    Check(const CompiledReference& the_reference, const Evidence& evidence)
        : reference(the_reference),
          told(the_reference, *evidence.device.history()),
          after(the_reference, evidence.device.configuration(Datastore::Transaction)),
          before(the_reference, evidence.device.configuration(Datastore::Stored))
    {
    }

    const CompiledReference& reference;
    Told told;
    ReferenceTargets after;
    ReferenceTargets before;
};

class References : public Rule {
public:
    explicit References(const Evidence& evidence)
        : evidence_(evidence),
          history_(*evidence.device.history()),
          compiled_(compiled_for<CompiledReferences>(evidence.device.schema()))
    {
        for (const CompiledReference& reference : compiled_->all) {
            Check& check = checks_.emplace_back(reference, evidence);
            of_list_[reference.list].push_back(&check);
        }
        evidence.failed_calls.for_each([this](const FailedCalls::Call& call) {
            if (call.function == Function::maapi_move) {
                left_.insert(call.path);
            }
        });
    }

    void row(const RowChange& change) override
    {
        if (change.fate != Fate::Moved && change.fate != Fate::MovedAndChanged) {
            return;
        }
        const auto checks = of_list_.find(&change.list());
        if (checks == of_list_.end()) {
            return;
        }
        // The rows around are those of the result: a row that moves and refers by its key stands in none.
        const RowPlace before{*change.around, *change.before};
        const RowPlace after{*change.around, *change.after};
        for (Check* check : checks->second) {
            if (check->reference.by_key() && check->reference.refers(*change.before) && !check->before.hold(before) &&
                check->after.hold(after)) {
                check->told.add(State::Healed, change.before, *change.after, *change.around, before,
                                check->before.number());
            }
        }
    }

    void find(std::vector<Finding>* findings) override
    {
        for (auto& [list, checks] : of_list_) {
            std::vector<const Node*> way = {list};
            for (const Node* around = list->parent; around != nullptr; around = around->parent) {
                if (around->kind == NodeKind::List) {
                    way.insert(way.begin(), around);
                }
            }
            Sides sides;
            walk(way, 0, evidence_.device.configuration(Datastore::Transaction).root(),
                 &evidence_.device.configuration(Datastore::Stored).root(), checks, sides);
        }
        for (Check& check : checks_) {
            check.told.find(findings);
        }
    }

private:
    struct Sides {
        Trail result;
        Trail stored;  // as long; null for what is new
    };

    // The rows of the list at the end of the way, below a row of the result and the stored one that it came from.
    void walk(const std::vector<const Node*>& way, std::size_t depth, const Row& below, const Row* stored_below,
              const std::vector<Check*>& checks, Sides& sides)
    {
        const uint16_t slot = way[depth]->slot;
        const List* const stored = stored_below == nullptr ? nullptr : &stored_below->list(slot);
        below.list(slot).for_each([&](const Row& row) {
            if (depth + 1 == way.size()) {
                for (Check* check : checks) {
                    look_at(*check, row, stored, sides);
                }
                return;
            }
            const Row* const before = history_.stored_entry(row, stored);
            sides.result.push_back(&row);
            sides.stored.push_back(before);
            walk(way, depth + 1, row, before, checks, sides);
            sides.result.pop_back();
            sides.stored.pop_back();
        });
    }

    void look_at(Check& check, const Row& row, const List* stored, const Sides& sides)
    {
        const RowPlace place{sides.result, row};
        if (!check.reference.refers(row) || check.after.hold(place)) {
            return;
        }
        const Row* const before = history_.stored_entry(row, stored);
        State state = State::New;
        if (before != nullptr && check.reference.refers(*before)) {
            state = check.before.hold({sides.stored, *before}) ? State::Lost : State::Before;
            if (check.reference.by_key() && was_left(place)) {
                return;
            }
        }
        check.told.add(state, before, row, sides.result, place, check.after.number());
    }

    // Whether the row was to be moved and was not: what its key says is told as that.
    bool was_left(const RowPlace& place) const
    {
        return !left_.empty() && left_.count(bgp_platform::store::keypath(place.around, &place.row)) > 0;
    }

    const Evidence& evidence_;
    const History& history_;
    std::shared_ptr<const CompiledReferences> compiled_;
    std::deque<Check> checks_;
    std::map<const Node*, std::vector<Check*>> of_list_;
    std::unordered_set<std::string_view> left_;  // the rows that could not be moved, by their paths
};

}  // namespace

void compile_references(const Schema& schema)
{
    compiled_for<CompiledReferences>(schema);
}

std::unique_ptr<Rule> references_rule(const Evidence& evidence)
{
    return std::make_unique<References>(evidence);
}

}  // namespace bgp_rehearse

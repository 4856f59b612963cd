// Leaves of rows that stay which have another value: how many, and from what to what.
#include "judge/effects.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <map>
#include <stdexcept>
#include <unordered_map>
#include <vector>

#include "judge/compiled_for.h"
#include "judge/path_template.h"
#include "judge/rule.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;
using bgp_platform::schema::Schema;
using bgp_platform::schema::Value;

constexpr std::size_t kShownChanges = 3;

const Value kUnset;

const Value& or_unset(const Value* value)
{
    return value == nullptr ? kUnset : *value;
}

// Rows by what they had and have. Some thousand of them mostly have a few values.
class Histogram {
public:
    void add(const Value* before, const Value* after)
    {
        const Value& from = or_unset(before);
        const Value& to = or_unset(after);
        if (last_ == nullptr || last_->first.first != from || last_->first.second != to) {
            last_ = &*rows_.try_emplace({from, to}, 0).first;
        }
        ++last_->second;
    }

    // "500000 -> 0 (2), 100 -> 0 (2)", or "0" of rows that had none; the most frequent first, others as a number. Where
    // all have the same there is nothing to count.
    std::string text(const Node& leaf, bool had_none) const
    {
        std::vector<const std::pair<const Change, std::size_t>*> most;
        for (const auto& change : rows_) {
            most.push_back(&change);
        }
        const std::size_t shown = std::min(most.size(), kShownChanges);
        std::partial_sort(most.begin(), most.begin() + static_cast<std::ptrdiff_t>(shown), most.end(),
                          [](const auto* left, const auto* right) {
                              return left->second != right->second ? left->second > right->second
                                                                   : left->first < right->first;
                          });
        std::string text;
        std::size_t others = 0;
        for (std::size_t i = 0; i < most.size(); ++i) {
            const auto& [change, rows] = *most[i];
            if (i >= shown) {
                others += rows;
                continue;
            }
            const std::string before = had_none ? "" : words(leaf, change.first) + " -> ";
            text += fmt::format("{}{}{}", i == 0 ? "" : ", ", before, words(leaf, change.second));
            text += most.size() == 1 ? "" : fmt::format(" ({})", grouped(rows));
        }
        return others == 0 ? text
                           : fmt::format("{}, and {} {}", text, grouped(others), others == 1 ? "other" : "others");
    }

private:
    using Change = std::pair<Value, Value>;

    static std::string words(const Node& leaf, const Value& value)
    {
        return words_of_value(leaf, value.absent() ? nullptr : &value);
    }

    std::map<Change, std::size_t> rows_;
    std::pair<const Change, std::size_t>* last_ = nullptr;  // that a row was added to: the next one's is often the same
};

// "up", "!up" or, empty, any.
class Wanted {
public:
    Wanted(std::string_view text, const Node& leaf) : any_(text.empty()), not_(!any_ && text.front() == '!')
    {
        text.remove_prefix(not_ ? 1 : 0);
        if (!any_ && !leaf.type->parse(text, &value_)) {
            throw std::invalid_argument(fmt::format("{} is never {}", leaf.name, text));
        }
    }

    bool is(const Value* value) const { return any_ || (or_unset(value) == value_) != not_; }

private:
    bool any_;
    bool not_;
    Value value_;
};

// A line of the table as the schema has it.
struct CompiledEffect {
    CompiledEffect(const Schema& schema, const Effect& effect)
        : said(effect),
          list(known(schema, effect.list)),
          leaf(known(schema, fmt::format("{}/{}", effect.list, effect.leaf))),
          before(effect.before, *leaf),
          after(effect.after, *leaf)
    {
    }

    const Effect& said;
    const Node* list;
    const Node* leaf;
    Wanted before;
    Wanted after;

private:
    static const Node* known(const Schema& schema, const std::string& path)
    {
        const Node* const node = find_node(schema, path);
        if (node == nullptr) {
            throw std::invalid_argument(fmt::format("there is no {}", path));
        }
        return node;
    }
};

struct CompiledEffects {
    explicit CompiledEffects(const Schema& schema)
    {
        for (const Effect& effect : kEffects) {
            all.emplace_back(schema, effect);
        }
    }

    std::vector<CompiledEffect> all;
};

class EffectCount {
public:
    explicit EffectCount(const CompiledEffect& effect)
        : list(effect.list), compiled_(effect), effect_(effect.said), leaf_(effect.leaf)
    {
    }

    void take(const RowChange& change)
    {
        const Value* const before = value_in(*change.before, *leaf_);
        const Value* const after = value_in(*change.after, *leaf_);
        if (or_unset(before) == or_unset(after) || !compiled_.before.is(before) || !compiled_.after.is(after)) {
            return;
        }
        if (before != nullptr || effect_.had_none == HadNone::Alike) {
            changed_.add(change, *leaf_, before, after);
        } else if (effect_.had_none == HadNone::Apart) {
            had_none_.add(change, *leaf_, before, after);
        }
    }

    void find(const Evidence& evidence, std::vector<Finding>* findings)
    {
        const bool only_new = changed_.finding.places.empty();
        Finding finding = std::move(only_new ? had_none_.finding : changed_.finding);
        if (finding.places.empty()) {
            return;
        }
        finding.id = effect_.id;
        finding.severity = effect_.severity;
        finding.leaf = leaf_;
        finding.count = finding.places.size();
        finding.reason = only_new ? fmt::format("{} had no {} and get one", noun_of(*list).many, effect_.what)
                                  : fmt::format("{} {}", noun_of(*list).many, effect_.many);
        finding.sentence = only_new ? sentence_of_new(finding.count) : sentence(finding.count);
        if (effect_.severity > Severity::Note) {
            finding.short_form = fmt::format("{} {}", counted(finding.count, noun_of(*list)),
                                             finding.count == 1 ? effect_.one : effect_.many);
        }
        if (effect_.id == FindingId::LimitRewritten && !evidence.assumptions.user_profile_given) {
            finding.severity = Severity::Review;
            finding.short_form = "the user profile is assumed";
            finding.advice = "the new limit is the user profile, which is assumed: give --user-profile";
        }
        findings->push_back(std::move(finding));
    }

    const Node* list;

private:
    struct Rows {
        Finding finding;
        Histogram values;

        void add(const RowChange& change, const Node& leaf, const Value* before, const Value* after)
        {
            values.add(before, after);
            finding.add_row(change.before, change.after, *change.around);
            finding.made_by(step_of_writer(change.writer_of(leaf)));
        }
    };

    std::string sentence(std::size_t rows) const
    {
        std::string text = fmt::format("{} {}: {}", counted(rows, noun_of(*list)),
                                       rows == 1 ? effect_.one : effect_.many, changed_.values.text(*leaf_, false));
        if (const std::size_t more = had_none_.finding.places.size(); more > 0) {
            text += fmt::format("; {} had none and {} {}", grouped(more), more == 1 ? "gets" : "get",
                                had_none_.values.text(*leaf_, true));
        }
        return text;
    }

    std::string sentence_of_new(std::size_t rows) const
    {
        return fmt::format("{} had no {} and {} one: {}", counted(rows, noun_of(*list)), effect_.what,
                           rows == 1 ? "gets" : "get", had_none_.values.text(*leaf_, true));
    }

    const CompiledEffect& compiled_;
    const Effect& effect_;
    const Node* leaf_;
    Rows changed_;
    Rows had_none_;
};

class Effects : public Rule {
public:
    explicit Effects(const Evidence& evidence)
        : evidence_(evidence), compiled_(compiled_for<CompiledEffects>(evidence.device.schema()))
    {
        for (const CompiledEffect& effect : compiled_->all) {
            EffectCount& count = counts_.emplace_back(effect);
            of_list_[count.list].push_back(&count);
        }
    }

    void row(const RowChange& change) override
    {
        if (change.before == nullptr || change.after == nullptr) {
            return;
        }
        if (const auto counts = of_list_.find(&change.list()); counts != of_list_.end()) {
            for (EffectCount* count : counts->second) {
                count->take(change);
            }
        }
    }

    void find(std::vector<Finding>* findings) override
    {
        for (EffectCount& count : counts_) {
            count.find(evidence_, findings);
        }
    }

private:
    const Evidence& evidence_;
    std::shared_ptr<const CompiledEffects> compiled_;
    std::deque<EffectCount> counts_;
    std::unordered_map<const Node*, std::vector<EffectCount*>> of_list_;
};

}  // namespace

void compile_effects(const Schema& schema)
{
    compiled_for<CompiledEffects>(schema);
}

std::unique_ptr<Rule> effects_rule(const Evidence& evidence)
{
    return std::make_unique<Effects>(evidence);
}

}  // namespace bgp_rehearse

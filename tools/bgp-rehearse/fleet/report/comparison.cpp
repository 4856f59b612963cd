#include "fleet/report/comparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "fleet/report/summary.h"

namespace bgp_rehearse {

namespace {

// A finding but for how much of it there is.
struct FindingKey {
    std::string severity;
    std::string finding;
    std::string reason;
    std::string step;

    bool operator<(const FindingKey& other) const
    {
        return std::tie(severity, finding, reason, step) <
               std::tie(other.severity, other.finding, other.reason, other.step);
    }
};

struct FindingWords {
    std::size_t count = 0;
    std::string sentence;
    std::string places;
};

struct StepWords {
    std::string outcome = "not told";
    std::string changes;
};

// What is compared of a router's result.
struct Compared {
    std::string name;
    std::string sha256;
    std::string verdict;
    std::string rows;  // the account
    std::map<FindingKey, FindingWords> findings;
    std::map<std::string, StepWords> steps;
    std::string errors;
};

// The routers of a database, one after the other, in the order of their names.
class Routers {
public:
    explicit Routers(const Database& database)
        : router_(
              database,
              "SELECT number, name, sha256, verdict, stored || ' ' || kept || ' ' || changed || ' ' || moved || ' ' || "
              "moved_and_changed || ' ' || removed || ' ' || new || ' ' || result FROM router ORDER BY name"),
          finding_(database,
                   "SELECT severity, reason.finding, text, step, count, sentence, (SELECT group_concat(path || ' ' || "
                   "place.text, '\n') FROM place WHERE router = f.router AND place.finding = number) FROM finding AS f "
                   "JOIN reason ON id = reason WHERE router = ? ORDER BY number"),
          step_(database, "SELECT name, outcome, changes FROM step WHERE router = ?"),
          error_(database, "SELECT text FROM error WHERE router = ? ORDER BY number")
    {
    }

    std::optional<Compared> next()
    {
        if (!router_.next()) {
            return std::nullopt;
        }
        Compared router;
        router.name = router_.text(1);
        router.sha256 = router_.text(2);
        router.verdict = router_.text(3);
        router.rows = router_.text(4);
        const int64_t number = router_.number(0);
        for (finding_.with(number); finding_.next();) {
            add_finding(&router);
        }
        for (step_.with(number); step_.next();) {
            router.steps[std::string(step_.text(0))] = {std::string(step_.text(1)), std::string(step_.text(2))};
        }
        for (error_.with(number); error_.next();) {
            router.errors.append(error_.text(0)) += '\n';
        }
        return router;
    }

private:
    void add_finding(Compared* router)
    {
        FindingWords& words = router->findings[{std::string(finding_.text(0)), std::string(finding_.text(1)),
                                                std::string(finding_.text(2)), std::string(finding_.text(3))}];
        words.count += finding_.count(4);
        words.sentence.append(finding_.text(5)) += '\n';
        words.places.append(finding_.text(6)) += '\n';
    }

    Statement router_;
    Statement finding_;
    Statement step_;
    Statement error_;
};

std::size_t badness(const std::string& verdict)
{
    constexpr std::array kFromBest = {"SAFE", "REVIEW", "REFUSED", "STOP"};
    return static_cast<std::size_t>(std::find(kFromBest.begin(), kFromBest.end(), verdict) - kFromBest.begin());
}

std::string words_of(const FindingKey& key)
{
    return fmt::format("{} {}: {}{}", key.severity, key.finding, key.reason,
                       key.step.empty() ? "" : fmt::format(" ({})", key.step));
}

// How two results of one router differ.
class RouterComparison {
public:
    RouterComparison(const Compared& before, const Compared& after) : before_(before), after_(after)
    {
        if (before.verdict != after.verdict) {
            say("verdict {} -> {}", before.verdict, after.verdict);
        }
        findings();
        steps();
        if (before.rows != after.rows) {
            say("other numbers of rows are moved, changed, removed or new");
        }
        if (before.errors != after.errors) {
            say("refused with other errors");
        }
        if (!why_.empty() && before.sha256 != after.sha256) {
            say("the backup itself is another");
        }
    }

    RouterDifference difference() const { return {after_.name, kind(), before_.verdict, after_.verdict, why_}; }

private:
    template <typename... Arguments>
    void say(fmt::format_string<Arguments...> format, Arguments&&... arguments)
    {
        why_.push_back(fmt::format(format, std::forward<Arguments>(arguments)...));
    }

    void findings()
    {
        for (const auto& [key, words] : after_.findings) {
            const auto old = before_.findings.find(key);
            if (old == before_.findings.end()) {
                say("now {}", words_of(key));
                more_ = more_ || key.severity != "note";
            } else if (old->second.count != words.count) {
                say("another number of places of {}", words_of(key));
            } else if (old->second.sentence != words.sentence || old->second.places != words.places) {
                say("other places or values of {}", words_of(key));
            }
        }
        for (const auto& [key, words] : before_.findings) {
            if (after_.findings.count(key) == 0) {
                say("no longer {}", words_of(key));
                less_ = less_ || key.severity != "note";
            }
        }
    }

    void steps()
    {
        const auto words = [](const Compared& router, const std::string& step) {
            const auto found = router.steps.find(step);
            return found == router.steps.end() ? StepWords() : found->second;
        };
        std::set<std::string> names;
        for (const Compared* router : {&before_, &after_}) {
            for (const auto& each : router->steps) {
                names.insert(each.first);
            }
        }
        for (const std::string& name : names) {
            const StepWords old = words(before_, name);
            const StepWords now = words(after_, name);
            if (old.outcome != now.outcome) {
                say("step {}: {} -> {}", name, old.outcome, now.outcome);
            } else if (old.changes != now.changes) {
                say("step {} writes other rows or values", name);
            }
        }
    }

    Difference kind() const
    {
        const std::size_t old = badness(before_.verdict);
        const std::size_t now = badness(after_.verdict);
        if (old != now) {
            return now > old ? Difference::Worse : Difference::Better;
        }
        if (more_ != less_) {
            return more_ ? Difference::Worse : Difference::Better;
        }
        return why_.empty() ? Difference::Same : Difference::Different;
    }

    const Compared& before_;
    const Compared& after_;
    std::vector<std::string> why_;
    bool more_ = false;  // to look at
    bool less_ = false;
};

class Comparer {
public:
    void add(RouterDifference difference)
    {
        ++comparison_.routers[static_cast<std::size_t>(difference.difference)];
        if (difference.difference == Difference::Same) {
            return;
        }
        for (const std::string& why : difference.why) {
            SharedDifference& shared = shared_[{difference.difference, why}];
            ++shared.routers;
            if (shared.examples.size() < kExamples) {
                shared.examples.push_back(difference.name);
            }
        }
        comparison_.differing.push_back(std::move(difference));
    }

    Comparison take()
    {
        for (auto& [key, shared] : shared_) {
            shared.difference = key.first;
            shared.why = key.second;
            comparison_.shared.push_back(std::move(shared));
        }
        std::stable_sort(comparison_.shared.begin(), comparison_.shared.end(), [](const auto& one, const auto& other) {
            return std::make_pair(one.difference, other.routers) < std::make_pair(other.difference, one.routers);
        });
        return std::move(comparison_);
    }

private:
    Comparison comparison_;
    std::map<std::pair<Difference, std::string>, SharedDifference> shared_;
};

}  // namespace

Comparison compare(const Database& before, const Database& after, const std::string& baseline)
{
    Routers old_routers(before);
    Routers new_routers(after);
    Comparer comparer;
    std::optional<Compared> old = old_routers.next();
    std::optional<Compared> now = new_routers.next();
    while (old || now) {
        if (!now || (old && old->name < now->name)) {
            comparer.add({old->name, Difference::Gone, old->verdict, {}, {}});
            old = old_routers.next();
        } else if (!old || now->name < old->name) {
            comparer.add({now->name, Difference::New, {}, now->verdict, {}});
            now = new_routers.next();
        } else {
            comparer.add(RouterComparison(*old, *now).difference());
            old = old_routers.next();
            now = new_routers.next();
        }
    }
    Comparison comparison = comparer.take();
    comparison.baseline = baseline;
    return comparison;
}

}  // namespace bgp_rehearse

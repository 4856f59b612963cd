// Stored rows that are gone. A step says in its contract which rows it takes away on purpose; all others are lost.
#include <fmt/format.h>

#include <map>
#include <string_view>

#include "contract/steps.h"
#include "judge/rule.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::schema::Node;

bool is_meant(const Node& list, std::string_view step)
{
    const std::string path = list.path();
    for (const bgp_contract::Step& each : bgp_contract::kSteps) {
        for (const bgp_contract::MeantRemoval& removal : each.meant_removals) {
            if (step == each.name && path == removal.list) {
                return true;
            }
        }
    }
    return false;
}

class RemovedRows : public Rule {
public:
    void row(const RowChange& change) override
    {
        if (change.fate != Fate::Removed) {
            return;
        }
        const std::string step = step_of_writer(change.writer);
        if (is_meant(change.list(), step)) {
            return;
        }
        lost_[{&change.list(), step}].add_row(change.before, nullptr, *change.around);
    }

    void find(std::vector<Finding>* findings) override
    {
        for (auto& [of, finding] : lost_) {
            finding.id = FindingId::RowLost;
            finding.severity = Severity::Stop;
            finding.step = of.second;
            finding.count = finding.places.size();
            finding.reason = fmt::format("{} are gone, and nothing says that they should be", noun_of(*of.first).many);
            finding.sentence = fmt::format("{} {} gone, and nothing says that {} should be",
                                           counted(finding.count, noun_of(*of.first)),
                                           finding.count == 1 ? "is" : "are", finding.count == 1 ? "it" : "they");
            findings->push_back(std::move(finding));
        }
    }

private:
    std::map<std::pair<const Node*, std::string>, Finding> lost_;
};

}  // namespace

std::unique_ptr<Rule> removed_rows_rule()
{
    return std::make_unique<RemovedRows>();
}

}  // namespace bgp_rehearse

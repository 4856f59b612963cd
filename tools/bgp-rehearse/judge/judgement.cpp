#include "judge/judgement.h"

#include <iterator>
#include <stdexcept>
#include <utility>

#include "contract/steps.h"
#include "judge/assumptions.h"
#include "judge/compiled_for.h"
#include "judge/effects.h"
#include "judge/list_order.h"
#include "judge/references.h"
#include "judge/rule.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::schema::Node;

// Hands everything on to several visitors.
class Everybody : public RowVisitor {
public:
    explicit Everybody(std::vector<RowVisitor*> visitors) : visitors_(std::move(visitors)) {}

    void kept(const Node& list, std::size_t rows) override
    {
        for (RowVisitor* visitor : visitors_) {
            visitor->kept(list, rows);
        }
    }
    void row(const RowChange& change) override
    {
        for (RowVisitor* visitor : visitors_) {
            visitor->row(change);
        }
    }
    void outside(const RowChange& change) override
    {
        for (RowVisitor* visitor : visitors_) {
            visitor->outside(change);
        }
    }

private:
    std::vector<RowVisitor*> visitors_;
};

std::vector<std::unique_ptr<Rule>> all_rules(const Evidence& evidence)
{
    std::vector<std::unique_ptr<Rule>> rules;
    rules.push_back(outcome_rule(evidence));
    rules.push_back(removed_rows_rule());
    rules.push_back(left_rows_rule(evidence));
    rules.push_back(failures_rule(evidence));
    rules.push_back(doubts_rule(evidence));
    rules.push_back(left_out_rule(evidence));
    rules.push_back(carried_rule(evidence));
    rules.push_back(references_rule(evidence));
    rules.push_back(family_off_rule(evidence));
    rules.push_back(effects_rule(evidence));
    return rules;
}

}  // namespace

void prepare_judgements(const bgp_platform::schema::Schema& schema)
{
    compile_references(schema);
    compile_effects(schema);
    compiled_for<ListOrder>(schema);
}

const char* step_of_writer(bgp_platform::store::Writer writer) noexcept
{
    return writer == 0 || writer > std::size(bgp_contract::kSteps) ? "" : bgp_contract::kSteps[writer - 1].name;
}

Judgement judge(const Evidence& evidence, const SeverityChoices& choices)
{
    const auto& stored = evidence.device.configuration(Datastore::Stored);
    const auto& result = evidence.device.configuration(Datastore::Transaction);
    AccountKeeper account(stored, result);
    const auto rules = all_rules(evidence);
    AssumptionsRule assumptions(evidence);
    std::vector<RowVisitor*> visitors = {&account, &assumptions};
    for (const std::unique_ptr<Rule>& rule : rules) {
        visitors.push_back(rule.get());
    }
    Everybody everybody(std::move(visitors));
    walk_rows(evidence.device, everybody);

    Judgement judgement;
    judgement.account = account.take();
    if (const std::string mistake = judgement.account.mistake(); !mistake.empty()) {
        throw std::logic_error(mistake);
    }
    for (const std::unique_ptr<Rule>& rule : rules) {
        rule->find(&judgement.findings);
    }
    assumptions.find(&judgement.findings);
    judgement.assumptions = assumptions.take();
    settle(choices, &judgement);
    return judgement;
}

}  // namespace bgp_rehearse

// What makes findings. A rule sees the rows that were written or are gone, then says what it has found.
#pragma once

#include <memory>
#include <vector>

#include "judge/evidence.h"
#include "judge/finding.h"
#include "judge/row_changes.h"

namespace bgp_rehearse {

class Rule : public RowVisitor {
public:
    void kept(const bgp_platform::schema::Node& /*list*/, std::size_t /*rows*/) override {}
    void row(const RowChange& /*change*/) override {}
    void outside(const RowChange& /*change*/) override {}

    // Called once, after all rows.
    virtual void find(std::vector<Finding>* findings) = 0;
};

// The rules, one for each source of that name. The evidence outlives them.
std::unique_ptr<Rule> carried_rule(const Evidence& evidence);  // rows that are carried into another shape, and were not
std::unique_ptr<Rule> effects_rule(const Evidence& evidence);  // leaves that get another value
std::unique_ptr<Rule> family_off_rule(const Evidence& evidence);  // neighbours' families that are turned off
std::unique_ptr<Rule> failures_rule(const Evidence& evidence);    // failed writes
std::unique_ptr<Rule> doubts_rule(const Evidence& evidence);      // what the embedded platform takes for granted
std::unique_ptr<Rule> left_out_rule(const Evidence& evidence);    // parts of modules that are not known
std::unique_ptr<Rule> left_rows_rule(const Evidence& evidence);   // rows that stayed under their old index
std::unique_ptr<Rule> outcome_rule(const Evidence& evidence);     // steps that gave up, and what update() came to
std::unique_ptr<Rule> references_rule(const Evidence& evidence);  // references that lead nowhere
std::unique_ptr<Rule> removed_rows_rule();                        // rows that are gone

}  // namespace bgp_rehearse

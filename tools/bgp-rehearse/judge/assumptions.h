// What the rehearsal takes for granted of the device, and which leaves of the result that decided: with another user profile
// or with other interfaces just these are other.
#pragma once

#include <vector>

#include "judge/judgement.h"
#include "judge/rule.h"

namespace bgp_rehearse {

// Tells of identities that nobody has given. Its assumptions are there once it has seen all rows.
class AssumptionsRule : public Rule {
public:
    explicit AssumptionsRule(const Evidence& evidence);

    void row(const RowChange& change) override;
    void find(std::vector<Finding>* findings) override;

    std::vector<Assumption> take();

private:
    void decide_limits();

    const Evidence& evidence_;
    Assumption profile_;
    Assumption interfaces_;
    const bgp_platform::schema::Node* limit_;
    const bgp_platform::schema::Node* identifier_;
    Finding guessed_;  // router ids of instances
};

}  // namespace bgp_rehearse

// The judgement of a rehearsal: the account of rows, the findings, what was assumed, and the verdict. Nothing here prints:
// the reports are faces of this.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "judge/account.h"
#include "judge/evidence.h"
#include "judge/finding.h"

namespace bgp_rehearse {

// Severities that the user wants instead of those of the rules.
using SeverityChoices = std::map<FindingId, Severity>;

struct Verdict {
    Severity severity = Severity::Note;  // the highest of the findings
    std::string sentence;  // why: "Nothing is lost; 2 rows are left behind, and the user profile is assumed."

    const char* word() const noexcept;  // "SAFE", "REVIEW", "STOP"
};

// Something that the rehearsal took for granted, and the leaves of the result that it decided: another value changes just
// these.
struct Assumption {
    std::string name;    // "user profile"
    std::string value;   // "0"
    std::string option;  // that gives it: "--user-profile"
    bool given = false;
    struct Leaf {
        const bgp_platform::store::Row* row = nullptr;  // of the result; the root for a leaf outside of all lists
        const bgp_platform::schema::Node* leaf = nullptr;
    };
    std::vector<Leaf> decided;
};

struct Judgement {
    Account account;
    std::vector<Assumption> assumptions;
    std::vector<Finding> findings;  // the severest first
    Verdict verdict;
};

// From pairs of an id and a level, "row-left" and "stop", of which a later one counts. Throws std::invalid_argument that
// names an id or level that is none, and those that there are.
SeverityChoices chosen_severities(const std::vector<std::pair<std::string, std::string>>& pairs);

// Judges an upgrade that returned. Throws std::logic_error when the account does not close.
Judgement judge(const Evidence& evidence, const SeverityChoices& choices);

// Compiles what judgements look rows up by, before the children are made that judge: else each of them does.
void prepare_judgements(const bgp_platform::schema::Schema& schema);

// Gives the findings the chosen severities, puts them in order, and draws the verdict from them.
void settle(const SeverityChoices& choices, Judgement* judgement);

}  // namespace bgp_rehearse

// The sections on findings of docs/rehearse.md, which is compiled in.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "judge/finding.h"

namespace bgp_rehearse {

// The page as it stands in docs/.
std::string_view builtin_page();

// One begins with the id as its heading, then with what the finding is in bold and the severities that it has as code:
//
//     ### row-left
//
//     **A row stays behind.** `review`; `note` where nothing uses it.
struct FindingSection {
    std::string_view id;
    std::string sentence;  // what it is, without a full stop
    std::vector<Severity> severities;
    std::string_view text;  // all below the heading, as it stands in the page
};

// Those of a page's chapter "Findings", in its order.
std::vector<FindingSection> finding_sections(std::string_view page);

}  // namespace bgp_rehearse

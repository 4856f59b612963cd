// `bgp-rehearse findings`: what findings mean and what to do, from the page in docs/ itself.
#pragma once

#include <string>

#include "base/exit_status.h"

namespace bgp_rehearse {

struct FindingsOptions {
    std::string id;  // of the one that is told; empty: all are listed
};

// Prints to standard output. Throws CommandError for an id that no finding has, and where it cannot print.
ExitStatus tell_findings(const FindingsOptions& options);

}  // namespace bgp_rehearse

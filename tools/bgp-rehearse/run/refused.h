// What is told of a rehearsal that did not come to a report.
#pragma once

#include "report/model.h"
#include "run/request.h"

namespace bgp_rehearse {

// Gives the JSON and the JUnit document where they were asked for. Returns the ending, with a word about a document that
// could not be written.
Ending tell_refused(const RunOptions& options, const Report& report, Ending ending);

}  // namespace bgp_rehearse

// The report for pipelines, as a JUnit document: a test case a step and a finding id.
//
// A case fails exactly where the command ends with another status than 0 for it, so that a pipeline which looks at the
// document comes to what one does that looks at the status: a finding as bad as --fail-on says or worse, a step that such
// a finding is about, a result that is not valid. What kept the command from its work is an error: an upgrade that ended, an
// input that was refused, a file that could not be written. docs/rehearse.md tells the rest.
#pragma once

#include "report/model.h"

namespace bgp_rehearse {

// False, with errno set, when not all of it could be written.
[[nodiscard]] bool write_junit_report(const Report& report, const Ending& ending, int file);

}  // namespace bgp_rehearse

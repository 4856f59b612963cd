// The report as one JSON document for programs; docs/report.schema.json is its schema, docs/rehearse.md tells its members.
#pragma once

#include <string>

#include "report/model.h"

namespace bgp_rehearse {

// False, with errno set, when not all of it could be written.
[[nodiscard]] bool write_json_report(const Report& report, const Ending& ending, int file);

}  // namespace bgp_rehearse

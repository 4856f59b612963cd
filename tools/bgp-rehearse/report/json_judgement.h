// The account and the findings of a rehearsal as JSON, each as a member.
#pragma once

#include "report/json_writer.h"
#include "report/model.h"

namespace bgp_rehearse {

void write_account(const Report& report, JsonWriter* json);
void write_findings(const Report& report, JsonWriter* json);

}  // namespace bgp_rehearse

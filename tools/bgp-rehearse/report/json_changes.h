// The changes of an upgrade as JSON, from which its result can be made of what was stored.
#pragma once

#include "device.h"
#include "report/json_writer.h"

namespace bgp_rehearse {

// An array, of an upgrade that is still open on the device.
void write_changes(const bgp_platform::Device& device, JsonWriter* json);

}  // namespace bgp_rehearse

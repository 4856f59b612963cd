// What single calls of the ConfD API take on a large list.
#pragma once

#include "device.h"

namespace bgp_bench {

// Prints the member "calls" of the JSON document. The device has no upgrade open; what the calls write is dropped.
void print_call_times(bgp_platform::Device& device);

}  // namespace bgp_bench

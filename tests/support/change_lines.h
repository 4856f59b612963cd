// What a transaction changed, as lines of text: "create /router/bgp{65010}", "set /router/bgp{65010}/as-size
// fourOctet", "delete /router/bgp{65010}/router-id", in the order of the schema and of the keys. A created entry is
// followed by everything below it; its key leaves are in its path.
#pragma once

#include <string>
#include <vector>

#include "device.h"

namespace bgp_test {

std::vector<std::string> change_lines(const bgp_platform::Device& device);

}  // namespace bgp_test

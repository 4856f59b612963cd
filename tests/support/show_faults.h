// Faults of a device on standard error, for death tests to match: "1 backtrace, then 1, Create,
// src/daemon/bgp_router_mgr, 325, <text>" with the number of call stacks before it, the severity, the function, the
// source, the line and the text.
#pragma once

#include <iostream>

#include "device.h"

namespace bgp_test {

inline void show_faults(bgp_platform::Device& device)
{
    device.fault_sink = [&device](const bgp_platform::Fault& fault) {
        std::cerr << device.backtraces() << " backtrace, then " << fault.severity << ", " << fault.function << ", "
                  << fault.source << ", " << fault.line << ", <" << fault.text << ">" << std::endl;
    };
}

}  // namespace bgp_test

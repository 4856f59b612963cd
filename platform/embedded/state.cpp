#include "state.h"

namespace bgp_platform {

void Reports::add_line(std::string_view line)
{
    if (keep) {
        log.emplace_back(line);
    }
    if (log_sink) {
        log_sink(line);
    }
}

void Reports::add_trace(TraceLine line)
{
    trace.push_back(std::move(line));
}

void Reports::add_fault(const Fault& fault)
{
    faults.push_back(fault);
    if (fault_sink) {
        fault_sink(fault);
    }
}

}  // namespace bgp_platform

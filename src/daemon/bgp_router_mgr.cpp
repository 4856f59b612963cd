// Where the router manager reports to.
#include "bgp_update/bgp_router_mgr.h"

#include <cstdarg>

namespace {

constexpr int kTraceLevel = 10;

}  // namespace

BgpRouterMgr::BgpRouterMgr(nzmw_trace_category_t trace_category, nzmw_log_t* log)
    : trace_category_(trace_category), log_(log)
{
}

void BgpRouterMgr::LogDebug(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    if (log_ != nullptr) {
        nzmw_vlog_debug(log_, format, args);
    } else if (trace_category_ != nullptr) {
        nzmw_vtrace(trace_category_, kTraceLevel, format, args);
    }
    va_end(args);
}

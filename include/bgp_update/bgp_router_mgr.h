// The manager of BGP instances in the routing stack's tables, shared by the upgrade and the device's BGP daemon.
#pragma once

#include <nzmw_log.h>
#include <nzmw_trace.h>

#include "bgp_update/export.h"

/** Handles, and texts in calls, are borrowed. Not for several threads at once. */
class BGP_UPDATE_EXPORT BgpRouterMgr {
public:
    /**
     * Names where the manager reports to.
     *
     * @param trace_category a trace category, or null; borrowed for the manager's life
     * @param log            a log, or null; borrowed for the manager's life. It wins over the trace category
     */
    BgpRouterMgr(nzmw_trace_category_t trace_category, nzmw_log_t* log);

    /**
     * Reports one line: to the log when there is one, else at level 10 to the trace category when there is one, else
     * nowhere. The line is the formatted text as it is.
     *
     * @param format a printf format, followed by its arguments
     */
    void LogDebug(const char* format, ...) __attribute__((format(printf, 2, 3)));

private:
    // In this order; code built against this class may rely on the layout.
    nzmw_trace_category_t trace_category_;
    nzmw_log_t* log_;
};

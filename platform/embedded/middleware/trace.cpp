// Trace categories over zlog's calls: these functions know nothing of a device, so that they also work over the
// system's zlog.
#include "nzmw_trace.h"

#include "zlog.h"

extern "C" {

nzmw_trace_category_t nzmw_trace_register_category(const char* name)
{
    return zlog_get_category(name);
}

void nzmw_vtrace(nzmw_trace_category_t category, int level, const char* format, va_list args)
{
    if (category == nullptr) {
        return;
    }
    vzlog(category, "", 0, "", 0, 0, level, format, args);
}

}  // extern "C"

// The upgrade's log: each line goes to the device of the process. There is one log; its handle is the same before,
// during and after the life of a device, so that a program may keep it.
#include "conf_updt_log.h"
#include "middleware/format.h"
#include "nzmw_log.h"
#include "registry.h"

struct nzmw_log_s {};

extern "C" {

nzmw_log_t* get_conf_updt_log_handle(void)
{
    static nzmw_log_t upgrade_log;
    return &upgrade_log;
}

void nzmw_vlog_debug(nzmw_log_t* log, const char* format, va_list args)
{
    bgp_platform::DeviceState* const device = bgp_platform::Registry::instance().current();
    if (log == nullptr || device == nullptr || !device->reports.wants(format)) {
        return;
    }
    bgp_platform::report_or_lose([&] { device->reports.add_line(bgp_platform::FormattedText(format, args).view()); });
}

void nzmw_log_debug(nzmw_log_t* log, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    nzmw_vlog_debug(log, format, args);
    va_end(args);
}

}  // extern "C"

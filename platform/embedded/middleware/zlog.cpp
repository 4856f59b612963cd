// The calls of zlog that the trace functions use: each line goes to the device of the process, whatever its level. Left
// out of the build where the system's zlog is used.
#include "zlog.h"

#include <map>
#include <string>
#include <utility>

#include "middleware/format.h"
#include "registry.h"

struct zlog_category_s {
    std::string name;
};

namespace {

// By name; a map keeps its elements in place, so that a category is known by its address. Never destroyed, since traces
// may come from destructors of static objects.
std::map<std::string, zlog_category_s>& categories()
{
    static auto* const all = new std::map<std::string, zlog_category_s>;
    return *all;
}

}  // namespace

extern "C" {

int zlog_init(const char* /*config*/)
{
    return 0;
}

void zlog_fini(void)
{
    categories().clear();
}

zlog_category_t* zlog_get_category(const char* name)
{
    zlog_category_t* category = nullptr;
    if (name != nullptr) {
        bgp_platform::report_or_lose(
            [&] { category = &categories().try_emplace(name, zlog_category_s{name}).first->second; });
    }
    return category;
}

void vzlog(zlog_category_t* category, const char* file, size_t filelen, const char* func, size_t funclen, long line,
           int level, const char* format, va_list args)
{
    bgp_platform::DeviceState* const device = bgp_platform::Registry::instance().current();
    if (category == nullptr || device == nullptr || !device->reports.keep) {
        return;
    }
    bgp_platform::report_or_lose([&] {
        device->reports.add_trace({category->name, level, std::string(file, filelen), std::string(func, funclen), line,
                                   std::string(bgp_platform::FormattedText(format, args).view())});
    });
}

void zlog(zlog_category_t* category, const char* file, size_t filelen, const char* func, size_t funclen, long line,
          int level, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    vzlog(category, file, filelen, func, funclen, line, level, format, args);
    va_end(args);
}

}  // extern "C"

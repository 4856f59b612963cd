#include "calls/function.h"

namespace bgp_platform::capi {

namespace {

struct Described {
    const char* name;
    Effect effect;
};

constexpr Described kDescribed[] = {
#define BGP_PLATFORM_DESCRIBED(name, effect) {#name, Effect::effect},
    BGP_PLATFORM_CAPI_FUNCTIONS(BGP_PLATFORM_DESCRIBED)
#undef BGP_PLATFORM_DESCRIBED
};

}  // namespace

const char* name_of(Function function) noexcept
{
    return kDescribed[static_cast<std::size_t>(function)].name;
}

Effect effect_of(Function function) noexcept
{
    return kDescribed[static_cast<std::size_t>(function)].effect;
}

}  // namespace bgp_platform::capi

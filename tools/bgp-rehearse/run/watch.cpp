#include "run/watch.h"

namespace bgp_rehearse {

using bgp_platform::capi::Effect;

CallTotals Watch::totals() const noexcept
{
    const bgp_platform::capi::LastCalls& calls = shared_->calls;
    return {calls.calls(Effect::Read), calls.calls(Effect::Write), calls.failures(Effect::Write)};
}

LastSeen Watch::seen(const bgp_platform::Device& device) const
{
    const bgp_platform::capi::LastCalls& calls = shared_->calls;
    const bgp_platform::store::Configuration& stored = device.configuration(bgp_platform::Datastore::Stored);
    LastSeen seen;
    seen.reading = calls.read(stored);
    seen.writing = calls.written(stored);
    seen.function = calls.function();
    seen.under_way = calls.under_way();
    seen.calls = totals();
    seen.log = shared_->lines.all();
    return seen;
}

}  // namespace bgp_rehearse

#include "calls/recorder.h"

#include <new>

namespace bgp_platform::capi {

namespace {

constexpr std::size_t kFirstRoom = 64;  // calls

std::size_t sum_of(const std::array<std::size_t, kFunctions>& counts, Effect effect) noexcept
{
    std::size_t sum = 0;
    for (std::size_t i = 0; i < kFunctions; ++i) {
        sum += effect_of(static_cast<Function>(i)) == effect ? counts[i] : 0;
    }
    return sum;
}

}  // namespace

std::string RecordedCall::text() const
{
    std::string text = name_of(function);
    for (const std::string* part : {&path, &arguments}) {
        if (!part->empty()) {
            text.append(" ").append(*part);
        }
    }
    text.append(" -> ").append(std::to_string(result));
    if (error != 0) {
        text.append(" (").append(confd_strerror(error)).append(")");
    }
    return text;
}

void Recorder::make_room()
{
    if (calls_.size() == calls_.capacity()) {
        calls_.reserve(calls_.empty() ? kFirstRoom : 2 * calls_.size());
    }
}

void Recorder::add(RecordedCall call) noexcept
{
    if (calls_.size() < calls_.capacity()) {
        calls_.push_back(std::move(call));
    }
}

std::size_t CallCounts::reads() const noexcept
{
    return sum_of(calls, Effect::Read);
}

std::size_t CallCounts::writes() const noexcept
{
    return sum_of(calls, Effect::Write);
}

std::size_t CallCounts::failed_write_count() const noexcept
{
    return sum_of(failures, Effect::Write);
}

}  // namespace bgp_platform::capi

#include "judge/failed_calls.h"

#include <algorithm>

#include "judge/call_site.h"

namespace bgp_rehearse {

namespace {

using bgp_contract::Class;
using bgp_platform::capi::Function;

constexpr std::size_t kMostPath = UINT16_MAX;

}  // namespace

// A second try follows its first one at once: the call before it at its site.
bool FailedCalls::is_second_try(const bgp_contract::CallSite* site, std::size_t call) noexcept
{
    const bool second = site == last_site_ && call == last_call_ + 1 && !last_was_second_;
    last_site_ = site;
    last_call_ = call;
    last_was_second_ = second;
    return second;
}

void FailedCalls::add(const char* step, Function function, int error, std::string_view path, std::string_view message,
                      std::size_t call, std::size_t log_lines)
{
    const char* const name = bgp_platform::capi::name_of(function);
    const bgp_contract::CallSite* const site = find_call_site(step, name, without_keys(path));
    FailureMeaning meaning{Class::Loses, ""};
    if (site != nullptr) {
        const bool two_tries = site->meaning.when == bgp_contract::When::SecondTry;
        meaning = meaning_of(site->meaning, error, two_tries && is_second_try(site, call));
    }
    const bool write = bgp_platform::capi::effect_of(function) == bgp_platform::capi::Effect::Write;
    if (!write && (site == nullptr || meaning.kind == Class::Expected)) {
        return;
    }
    Kept kept{step,
              meaning.sentence,
              texts_.size(),
              0,
              static_cast<uint32_t>(log_lines),
              static_cast<uint16_t>(std::min(path.size(), kMostPath)),
              static_cast<uint16_t>(error),
              function,
              meaning.kind,
              site != nullptr};
    texts_ += path.substr(0, kept.length);
    if (meaning.kind != Class::Expected) {
        messages_.emplace_back(message);
        kept.message = static_cast<uint32_t>(messages_.size() - 1);
    }
    kept_.push_back(kept);
}

FailedCalls::Call FailedCalls::call_of(const Kept& kept) const noexcept
{
    return {kept.step,
            kept.function,
            kept.error,
            kept.known,
            kept.kind,
            kept.sentence,
            std::string_view(texts_).substr(kept.path, kept.length),
            messages_[kept.message],
            kept.log_line};
}

}  // namespace bgp_rehearse

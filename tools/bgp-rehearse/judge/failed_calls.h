// The calls of an upgrade that failed: what the contract says of each, and what it named. Kept small, as a router of many
// neighbours has many that fail on every router.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "calls/function.h"
#include "contract/step.h"

namespace bgp_rehearse {

class FailedCalls {
public:
    struct Call {
        const char* step;  // its function's name
        bgp_platform::capi::Function function;
        int error;                 // the ConfD code
        bool known;                // the contract has its call site, which says:
        bgp_contract::Class kind;  // what the failure means
        const char* sentence;      // in words; "" where the contract has no site
        std::string_view path;     // with keys; empty where the call names none
        std::string_view message;  // of the C API; "" where the failure was expected
        std::size_t log_line;      // that was written last before the call, from 1; 0: none, or not known

        bool is_write() const noexcept
        {
            return bgp_platform::capi::effect_of(function) == bgp_platform::capi::Effect::Write;
        }
    };

    // `step` lives as long as this; `call` is the number of the call among all. A read is kept only where the contract says
    // that its failure means something. `log_lines` were written before it, as far as they are counted.
    void add(const char* step, bgp_platform::capi::Function function, int error, std::string_view path,
             std::string_view message, std::size_t call, std::size_t log_lines = 0);

    // In the order of the calls.
    template <typename Visit>
    void for_each(Visit&& visit) const
    {
        for (const Kept& kept : kept_) {
            visit(call_of(kept));
        }
    }
    std::size_t size() const noexcept { return kept_.size(); }

private:
    struct Kept {
        const char* step;
        const char* sentence;
        std::size_t path;  // where it begins in texts_
        uint32_t message;  // in messages_
        uint32_t log_line;
        uint16_t length;  // of the path
        uint16_t error;
        bgp_platform::capi::Function function;
        bgp_contract::Class kind;
        bool known;
    };
    Call call_of(const Kept& kept) const noexcept;
    bool is_second_try(const bgp_contract::CallSite* site, std::size_t call) noexcept;

    std::string texts_;
    std::vector<Kept> kept_;
    std::vector<std::string> messages_ = {{}};  // that of 0 is empty
    const bgp_contract::CallSite* last_site_ = nullptr;
    std::size_t last_call_ = 0;
    bool last_was_second_ = false;
};

}  // namespace bgp_rehearse

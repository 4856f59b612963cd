// What the device's middleware remembers and answers: the settings that its functions read, and where they report to.
// A Device owns one and keeps it in the registry; the middleware functions reach it through current_middleware().
#pragma once

#include <netinet/in.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace bgp_platform {

// A report of nzmw_gen_fault, or a failed assertion (severity 0, kind Assertion, text the asserted expression).
struct Fault {
    enum class Kind { Fault, Assertion };
    Kind kind = Kind::Fault;
    int severity = 0;
    std::string function;  // short name; for an assertion the full signature
    std::string source;    // source path without extension
    unsigned int line = 0;
    std::string text;
};

struct TraceLine {
    std::string category;
    int level = 0;
    std::string source;    // empty when the call does not tell one (nzmw_vtrace)
    std::string function;  // likewise
    long line = 0;
    std::string text;
};

struct MiddlewareState {
    // Settings.
    uint32_t vrf_base = 1;
    uint32_t vrf_step = 65536;
    uint32_t user_profile = 0;
    std::vector<in_addr> interfaces;  // the host's IPv4 addresses in list order

    // Reports: called with every line, trace line and fault; may be empty.
    std::function<void(std::string_view)> on_log;
    std::function<void(const TraceLine&)> on_trace;
    std::function<void(const Fault&)> on_fault;
    std::function<void()> on_backtrace;
};

// The state of the device made last that still lives; null without one.
MiddlewareState* current_middleware() noexcept;

}  // namespace bgp_platform

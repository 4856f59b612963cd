// What the program asked of the C API: counts always, and the calls themselves when recording is switched on.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "calls/function.h"
#include "schema/schema.h"

namespace bgp_platform::capi {

inline constexpr char kMasked[] = "********";  // shown in place of the values of secret leaves

// One call: function, the path it named (formatted; empty where it names none), its other arguments as text, its result
// and, when it failed, the code. Values of secret leaves show as "********".
struct RecordedCall {
    Function function = Function::cdb_get;
    std::string path;
    std::string arguments;
    int result = 0;
    int error = 0;       // confd_errno after a failure, else 0
    std::string values;  // of an array of tagged values that is written, each value: "bgpRmEntIndex=1 bgpRmEntAsSize=…"

    std::string text() const;  // "maapi_set_elem /router/bgp{65010}/as-size 2 -> 0"
};

// A call that has failed, while it is told of.
struct Failure {
    Function function;
    int error;                 // the code
    std::string_view path;     // as the program called it, its arguments filled in; empty where the call names none
    std::string_view message;  // confd_lasterr()
    std::size_t number;        // of the call, among all of the device from 1
};

class Recorder {
public:
    void start() noexcept { on_ = true; }
    void stop() noexcept { on_ = false; }
    bool on() const noexcept { return on_; }
    void make_room();  // for one more call, which add() then needs no memory for
    void add(RecordedCall call) noexcept;
    void clear() noexcept { calls_.clear(); }
    const std::vector<RecordedCall>& calls() const noexcept { return calls_; }

    // Called after each call, also while recording is off.
    std::function<void()> after_call;

    // Called after each call that failed, before that one; likewise.
    std::function<void(const Failure&)> after_failure;

private:
    bool on_ = false;
    std::vector<RecordedCall> calls_;
};

struct CallCounts {
    std::size_t total = 0;
    std::array<std::size_t, kFunctions> calls{};
    std::array<std::size_t, kFunctions> failures{};

    std::size_t of(Function function) const noexcept { return calls[static_cast<std::size_t>(function)]; }
    std::size_t reads() const noexcept;
    std::size_t writes() const noexcept;
    std::size_t failed_write_count() const noexcept;
};

}  // namespace bgp_platform::capi

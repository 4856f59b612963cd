// The border of the C API: what every entry point does besides its own work.
//
// An entry point says which function it is, on which socket, and hands its work over as a lambda. Here the device is
// found, the session or transaction is checked, the keypath resolved, a planned failure made to happen, the call
// counted and recorded, and a failure turned into confd_errno and a text that names function and path.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

#include "calls/function.h"
#include "calls/readings.h"
#include "capi/errors.h"
#include "keypath/keypath.h"
#include "registry.h"
#include "store/configuration.h"

namespace bgp_platform::capi {

// Whether the calling thread may call; if not, the call has failed, and stderr got a line that names the function.
bool admitted(const char* function) noexcept;

// The socket a call came on, and the transaction handle that a MAAPI call brought along.
struct Handle {
    int socket = -1;
    int thandle = -1;
};

class Call {
public:
    Call(Function function, Handle handle) : function_(function), handle_(handle) {}
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    DeviceState& device() const noexcept { return *endpoint_->device; }
    Endpoint& endpoint() const noexcept { return *endpoint_; }

    // What the call reads: the stored configuration on a CDB socket, the transaction on a MAAPI socket.
    const store::Configuration& view() const noexcept;
    store::Configuration& transaction() const noexcept { return *device().transaction; }

    // The path as the program called it, its arguments filled in; empty where a call names none.
    const std::string& path() const;

    // Fails the call: the work returns what this returns.
    int fail(int code, std::string_view detail = {});
    int fail(store::Result result);  // CONFD_OK for Result::Ok
    int fail_for_memory() noexcept;

    // Notes where the call goes, for a parent of this process: a place, or an entry of a list by the key `below` it.
    void go_to(const store::Path& path, const std::vector<schema::Value>& below = {}) noexcept
    {
        if (LastCalls* const last = device().last_calls) {
            last->go_to(path, below);
        }
    }

    // Notes that the call depends on a reading of an open question.
    void meet(Reading reading) noexcept;
    void meet_missing_entry(store::Result set, const store::Path& path) noexcept;  // by a set
    void meet_host_bits(const schema::Value& value) noexcept                       // of a prefix that goes in or out
    {
        if (value.has_host_bits()) {
            meet(Reading::HostBitsOfPrefixAreKept);
        }
    }

    // Tells the recorder the call's other arguments; costs nothing while it is off.
    bool recorded() const noexcept { return device().recorder.on(); }
    void arguments(std::string text) { arguments_ = std::move(text); }
    void argument(const schema::Node* leaf, const confd_value_t& value);
    void values(std::string text) { values_ = std::move(text); }

    // The stages of a call; finish() ends it whatever came of the others.
    bool begin();  // finds and checks the socket
    bool locate(const char* format, va_list arguments, store::Path* path);
    void name_path(std::string_view path) noexcept { named_ = path; }
    void name_path(const char* format, va_list arguments) noexcept;  // made into text when somebody asks for it
    bool planned_failure(int* result);
    int finish(int result) noexcept;

private:
    bool is_the_same(const Endpoint& endpoint) const noexcept;
    bool check_socket();
    std::string place() const;  // the path, or the function where there is none
    void count(int result) noexcept;
    void record(int result) noexcept;

    Function function_;
    Handle handle_;
    Endpoint* endpoint_ = nullptr;
    std::string_view named_;              // the path, where its text is known
    const char* format_ = nullptr;        // else, with its arguments
    mutable va_list format_arguments_{};  // only copied, but va_copy takes no const one
    mutable std::string path_;            // made only when somebody will see it
    std::string arguments_;
    std::string values_;
    int error_ = CONFD_OK;
};

// A call without a keypath template, or on a place that is known by its path's text.
template <typename Work>
int run_call(Function function, Handle handle, std::string_view path, Work&& work)
{
    Call call(function, handle);
    call.name_path(path);
    const auto attempt = [&] {
        int result = CONFD_ERR;
        return call.begin() && !call.planned_failure(&result) ? work(call) : result;
    };
    return call.finish(unless_memory_ends(attempt, [&call] { return call.fail_for_memory(); }));
}

// A call on the place that a keypath names.
template <typename Work>
int run_call(Function function, Handle handle, const char* format, va_list arguments, Work&& work)
{
    Call call(function, handle);
    call.name_path(format, arguments);
    const auto attempt = [&] {
        store::Path path;
        int result = CONFD_ERR;
        const bool goes = call.begin() && call.locate(format, arguments, &path) && !call.planned_failure(&result);
        return goes ? work(call, path) : result;
    };
    return call.finish(unless_memory_ends(attempt, [&call] { return call.fail_for_memory(); }));
}

// The body of an entry point whose last parameters are (const char* fmt, ...).
#define BGP_PLATFORM_PATH_CALL(function, handle, fmt, ...)                                                \
    va_list keypath_arguments;                                                                            \
    va_start(keypath_arguments, fmt);                                                                     \
    const int keypath_result = run_call(Function::function, handle, fmt, keypath_arguments, __VA_ARGS__); \
    va_end(keypath_arguments);                                                                            \
    return keypath_result

}  // namespace bgp_platform::capi

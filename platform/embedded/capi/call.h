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
#include "keypath/keypath.h"
#include "registry.h"
#include "store/configuration.h"

namespace bgp_platform::capi {

// Fails a call: sets confd_errno, and confd_lasterr() to function, code, path and detail, the last two where there are
// any. Returns CONFD_ERR. For calls that have no device to go to; others fail through their Call.
int fail_call(Function function, int code, std::string_view path, std::string_view detail);

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

    // Tells the recorder the call's other arguments; costs nothing while it is off.
    bool recorded() const noexcept { return device().recorder.on(); }
    void arguments(std::string text) { arguments_ = std::move(text); }
    void argument(const schema::Node* leaf, const confd_value_t& value);
    void values(std::string text) { values_ = std::move(text); }

    // The three stages of a call; finish() must follow begin() whatever comes between.
    bool begin();  // finds and checks the socket
    bool locate(const char* format, va_list arguments, store::Path* path);
    void name_path(const std::string& path) { path_ = path; }
    void name_path(const char* format, va_list arguments);  // made into text when somebody asks for it
    bool planned_failure(int* result);
    int finish(int result);

private:
    bool check_socket();

    Function function_;
    Handle handle_;
    Endpoint* endpoint_ = nullptr;
    const char* format_ = nullptr;        // with its arguments, until the path is made of them
    mutable va_list format_arguments_{};  // only copied, but va_copy takes no const one
    mutable std::string path_;            // made only when somebody will see it
    std::string arguments_;
    std::string values_;
    int error_ = CONFD_OK;
};

// A call without a keypath template, or on a place that is known by its path's text.
template <typename Work>
int run_call(Function function, Handle handle, const std::string& path, Work&& work)
{
    Call call(function, handle);
    call.name_path(path);
    int result = CONFD_ERR;
    if (call.begin() && !call.planned_failure(&result)) {
        result = work(call);
    }
    return call.finish(result);
}

// A call on the place that a keypath names.
template <typename Work>
int run_call(Function function, Handle handle, const char* format, va_list arguments, Work&& work)
{
    Call call(function, handle);
    call.name_path(format, arguments);
    store::Path path;
    int result = CONFD_ERR;
    if (call.begin() && call.locate(format, arguments, &path) && !call.planned_failure(&result)) {
        result = work(call, path);
    }
    return call.finish(result);
}

// The body of an entry point whose last parameters are (const char* fmt, ...).
#define BGP_PLATFORM_PATH_CALL(function, handle, fmt, ...)                                                \
    va_list keypath_arguments;                                                                            \
    va_start(keypath_arguments, fmt);                                                                     \
    const int keypath_result = run_call(Function::function, handle, fmt, keypath_arguments, __VA_ARGS__); \
    va_end(keypath_arguments);                                                                            \
    return keypath_result

}  // namespace bgp_platform::capi

#include "capi/call.h"

#include <cerrno>

int confd_errno = CONFD_OK;

namespace bgp_platform::capi {

namespace {

// The text of the last error; the API hands out a pointer to it.
std::string& last_error()
{
    static auto* const text = new std::string;
    return *text;
}

int code_of(store::Result result)
{
    switch (result) {
        case store::Result::Ok:
            return CONFD_OK;
        case store::Result::NotFound:
            return CONFD_ERR_NOEXISTS;
        case store::Result::AlreadyExists:
            return CONFD_ERR_ALREADY_EXISTS;
        case store::Result::NotDeletable:
            return CONFD_ERR_NOTDELETABLE;
        case store::Result::NotCreatable:
            return CONFD_ERR_NOTCREATABLE;
        case store::Result::NotMovable:
            return CONFD_ERR_NOTMOVABLE;
        case store::Result::NotWritable:
            return CONFD_ERR_NOT_WRITABLE;
    }
    return CONFD_ERR_INTERNAL;
}

// The list of functions has CDB's in one run, from the one to the other.
constexpr bool is_cdb(Function function)
{
    return function >= Function::cdb_connect && function <= Function::cdb_get_values;
}

}  // namespace

int fail_call(Function function, int code, std::string_view path, std::string_view detail)
{
    confd_errno = code;
    std::string& text = last_error();
    text.assign(name_of(function)).append(": ").append(confd_strerror(code));
    for (const std::string_view part : {path, detail}) {
        if (!part.empty()) {
            text.append(": ").append(part);
        }
    }
    return CONFD_ERR;
}

const store::Configuration& Call::view() const noexcept
{
    return endpoint_->kind == Endpoint::Kind::Cdb ? device().stored : *device().transaction;
}

bool Call::begin()
{
    auto& endpoints = Registry::instance().endpoints;
    const auto found = endpoints.find(handle_.socket);
    if (found == endpoints.end()) {
        errno = EBADF;
        fail(CONFD_ERR_OS, "socket " + std::to_string(handle_.socket) + " is not connected to a device");
        return false;
    }
    endpoint_ = &found->second;
    return check_socket();
}

bool Call::check_socket()
{
    if (is_cdb(function_) != (endpoint_->kind == Endpoint::Kind::Cdb)) {
        fail(CONFD_ERR_PROTOUSAGE, "the socket is of the other kind");
        return false;
    }
    if (endpoint_->kind == Endpoint::Kind::Maapi &&
        (device().transaction == nullptr || handle_.thandle != device().upgrade.thandle)) {
        fail(CONFD_ERR_NOTRANS, "no transaction " + std::to_string(handle_.thandle) + " on the socket");
        return false;
    }
    const bool needs_session = is_cdb(function_) && effect_of(function_) == Effect::Read;
    if (needs_session && !endpoint_->session) {
        fail(CONFD_ERR_NOSESSION, "no session on the socket");
        return false;
    }
    return true;
}

void Call::name_path(const char* format, va_list arguments)
{
    format_ = format;
    va_copy(format_arguments_, arguments);
}

Call::~Call()
{
    if (format_ != nullptr) {
        va_end(format_arguments_);  // NOLINT(clang-analyzer-valist.Uninitialized): begun by name_path()
    }
}

bool Call::locate(const char* format, va_list arguments, store::Path* path)
{
    if (recorded()) {
        this->path();  // now, as the work may write where the arguments point to
    }
    const PathError error = device().keypaths.resolve(format, arguments, endpoint_->name_space, path);
    if (error) {
        fail(error.code, error.detail);
        return false;
    }
    return true;
}

const std::string& Call::path() const
{
    if (path_.empty() && format_ != nullptr) {
        va_list arguments;
        va_copy(arguments, format_arguments_);  // NOLINT(clang-analyzer-valist.Uninitialized): begun by name_path()
        path_ = format_template(format_, arguments, endpoint_ == nullptr ? nullptr : &device().keypaths);
        va_end(arguments);
    }
    return path_;
}

bool Call::planned_failure(int* result)
{
    FaultPlan& plan = device().fault_plan;
    if (!plan.active()) {
        return false;
    }
    const auto planned = plan.next(function_, plan.looks_at_path(function_) ? path() : std::string());
    if (!planned) {
        return false;
    }
    fail(planned->code, "as planned");
    *result = planned->result;
    return true;
}

int Call::fail(int code, std::string_view detail)
{
    error_ = code;
    return fail_call(function_, code, path(), detail);
}

int Call::fail(store::Result result)
{
    return result == store::Result::Ok ? CONFD_OK : fail(code_of(result));
}

void Call::argument(const schema::Node* leaf, const confd_value_t& value)
{
    if (!recorded()) {
        return;
    }
    schema::Value typed;
    if (leaf != nullptr && is_secret(*leaf)) {
        arguments_ = kMasked;
    } else if (leaf != nullptr && leaf->type != nullptr && leaf->type->from_confd(value, &typed)) {
        arguments_ = leaf->type->text(typed);
    } else {
        char text[256];
        confd_pp_value(text, sizeof text, &value);
        arguments_ = text;
    }
}

int Call::finish(int result)
{
    if (endpoint_ == nullptr) {
        return result;
    }
    CallCounts& counts = device().calls;
    const auto slot = static_cast<std::size_t>(function_);
    ++counts.calls[slot];
    if (result < 0) {
        ++counts.failures[slot];
        if (effect_of(function_) == Effect::Write && counts.failed_writes.size() < CallCounts::kKept) {
            counts.failed_writes.push_back({function_, error_, last_error()});
        }
    }
    if (recorded()) {
        device().recorder.add(
            {function_, path(), std::move(arguments_), result, result < 0 ? error_ : CONFD_OK, std::move(values_)});
    }
    if (device().recorder.after_call) {
        device().recorder.after_call();
    }
    return result;
}

}  // namespace bgp_platform::capi

char* confd_lasterr(void)
{
    return bgp_platform::capi::last_error().data();
}

#include "capi/call.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace bgp_platform::capi {

namespace {

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

bool picks_by_position(const store::Path& path)
{
    return std::any_of(path.entries.begin(), path.entries.end(),
                       [](const store::Selector& selector) { return selector.position >= 0; });
}

// The list of functions has CDB's in one run, from the one to the other.
constexpr bool is_cdb(Function function)
{
    return function >= Function::cdb_connect && function <= Function::cdb_get_values;
}

}  // namespace

bool admitted(const char* function) noexcept
{
    Registry& registry = Registry::instance();
    if (registry.admits_this_thread()) {
        return true;
    }
    registry.note_refused(function);
    fail_call(function, CONFD_ERR_PROTOUSAGE, {}, "another thread has the platform, one at a time may call");
    std::fprintf(stderr, "%s\n", confd_lasterr());
    return false;
}

const store::Configuration& Call::view() const noexcept
{
    return endpoint_->kind == Endpoint::Kind::Cdb ? device().stored : *device().transaction;
}

bool Call::begin()
{
    if (!admitted(name_of(function_))) {
        return false;
    }
    auto& endpoints = Registry::instance().endpoints;
    const auto found = endpoints.find(handle_.socket);
    if (found == endpoints.end() || !is_the_same(found->second)) {
        errno = EBADF;
        fail(CONFD_ERR_OS, "socket " + std::to_string(handle_.socket) + " is not connected to a device");
        return false;
    }
    endpoint_ = &found->second;
    if (LastCalls* const last = device().last_calls) {
        last->begin(function_);
    }
    if (Registry::instance().several()) {
        meet(Reading::OneThreadOneDevice);
    }
    if (recorded()) {
        device().recorder.make_room();
        path();  // now, as the work may write where the arguments point to
    }
    return check_socket();
}

// A socket that the program may have closed without a word, so that its number is another's: one that it connected
// itself, and that of a transaction, which is closed with it.
bool Call::is_the_same(const Endpoint& endpoint) const noexcept
{
    const bool may_differ = endpoint.private_socket || (endpoint.kind == Endpoint::Kind::Maapi && is_cdb(function_));
    return !may_differ || endpoint.socket == socket_behind(handle_.socket);
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

void Call::name_path(const char* format, va_list arguments) noexcept
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
    const PathError error = device().keypaths.resolve(format, arguments, endpoint_->name_space, path);
    device().readings.meet_all(device().keypaths.met(), [this] { return place(); });
    if (error) {
        fail(error.code, error.detail);
        if (LastCalls* const last = device().last_calls) {
            last->go_to(this->path());
        }
        return false;
    }
    go_to(*path);
    if (endpoint_->kind == Endpoint::Kind::Maapi && picks_by_position(*path)) {
        fail(CONFD_ERR_BADPATH, "a position, which CDB alone takes");
        return false;
    }
    return true;
}

void Call::meet(Reading reading) noexcept
{
    device().readings.meet(reading, [this] { return place(); });
}

void Call::meet_missing_entry(store::Result set, const store::Path& path) noexcept
{
    if (set == store::Result::NotFound && transaction().find_row(path) == nullptr) {
        meet(Reading::SetBelowMissingEntryFails);
    }
}

std::string Call::place() const
{
    return path().empty() ? name_of(function_) : path();
}

const std::string& Call::path() const
{
    if (path_.empty() && format_ == nullptr) {
        path_ = named_;
    } else if (path_.empty()) {
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
    return fail_call(name_of(function_), code, path(), detail);
}

int Call::fail_for_memory() noexcept
{
    error_ = CONFD_ERR_MALLOC;
    const auto with_path = [this] { return fail(CONFD_ERR_MALLOC); };
    return unless_memory_ends(with_path, [this] { return fail_call(name_of(function_), CONFD_ERR_MALLOC, {}, {}); });
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
    } else if (leaf != nullptr && leaf->type != nullptr && schema::from_confd(*leaf, value, &typed)) {
        arguments_ = leaf->type->text(typed);
    } else {
        char text[256];
        plain_value_text(text, sizeof text, value);
        arguments_ = text;
    }
}

int Call::finish(int result) noexcept
{
    if (endpoint_ == nullptr) {
        return result;
    }
    count(result);
    if (LastCalls* const last = device().last_calls) {
        last->end(result < 0);
    }
    if (recorded()) {
        record(result);
    }
    if (device().recorder.after_call) {
        device().recorder.after_call();
    }
    return result;
}

void Call::count(int result) noexcept
{
    CallCounts& counts = device().calls;
    const auto slot = static_cast<std::size_t>(function_);
    ++counts.total;
    ++counts.calls[slot];
    if (result >= 0) {
        return;
    }
    ++counts.failures[slot];
    if (device().recorder.after_failure) {
        device().recorder.after_failure({function_, error_, path(), confd_lasterr(), counts.total});
    }
}

void Call::record(int result) noexcept
{
    const int error = result < 0 ? error_ : CONFD_OK;
    device().recorder.add({function_, std::move(path_), std::move(arguments_), result, error, std::move(values_)});
}

}  // namespace bgp_platform::capi

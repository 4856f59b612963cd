#include "device.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "keypath/keypath.h"
#include "nz_confd_cdb_session.h"
#include "registry.h"
#include "values/owned_values.h"

namespace bgp_platform {

namespace {

// A real descriptor, so that a program that closes or mixes up its handles behaves as on the device.
int open_socket(Endpoint::Kind kind, DeviceState* device, bool session)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot open a socket for the upgrade");
    }
    const Endpoint endpoint{kind, device, false, socket_behind(descriptor), session};
    Registry::instance().endpoints.insert_or_assign(descriptor, endpoint);
    return descriptor;
}

// The descriptor of the MAAPI socket stays known, so that calls with the transaction's handle learn that it is gone. One
// that the program closed itself may be another socket's by now.
void close_socket(int* descriptor) noexcept
{
    auto& endpoints = Registry::instance().endpoints;
    const auto known = endpoints.find(*descriptor);
    if (known != endpoints.end()) {
        if (socket_behind(*descriptor) == known->second.socket) {
            close(*descriptor);
        }
        if (known->second.kind == Endpoint::Kind::Cdb) {
            endpoints.erase(known);
        }
    }
    *descriptor = -1;
}

// False: it is no path of the schema.
bool resolve(capi::KeypathCache* names, store::Path* path, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const bool found = !names->resolve(format, arguments, nullptr, path);
    va_end(arguments);
    return found;
}

}  // namespace

Device::Device(Options options)
    : state_(options.schema != nullptr ? std::move(options.schema) : schema::Schema::builtin(), options.port),
      interface_(std::make_unique<NzConfdInterface>(-1)),
      values_before_(values::live_owned_values())
{
    Registry::instance().add(&state_);
}

Device::~Device()
{
    close_upgrade();
    Registry::instance().remove(&state_);
}

void Device::load_file(const std::string& path, const xml::Progress& progress, const xml::Limits& limits)
{
    store::Configuration loaded = state_.stored;
    xml::read_config_file(path, &loaded, progress, limits);
    state_.stored = std::move(loaded);
}

void Device::load_text(std::string_view xml, const std::string& name, const xml::Limits& limits)
{
    store::Configuration loaded = state_.stored;
    xml::read_config_text(xml, name, &loaded, limits);
    state_.stored = std::move(loaded);
}

void Device::clear()
{
    state_.stored = store::Configuration(state_.schema);
}

UpgradeHandles Device::open_upgrade()
{
    if (upgrade_open()) {
        throw std::logic_error("an upgrade is open already: commit or drop it first");
    }
    state_.upgrade.maapi_socket = open_socket(Endpoint::Kind::Maapi, &state_, false);
    state_.upgrade.cdb_socket = open_socket(Endpoint::Kind::Cdb, &state_, true);
    state_.upgrade.thandle = next_thandle_++;
    state_.transaction = std::make_unique<store::Configuration>(state_.stored);
    if (keep_history_) {
        state_.history = std::make_unique<store::History>(state_.stored);
        state_.transaction->note_in(state_.history.get());
    }
    *interface_ = NzConfdInterface(state_.upgrade.maapi_socket);
    context_.fd = state_.upgrade.maapi_socket;
    context_.thandle = state_.upgrade.thandle;
    context_.t_opaque = interface_.get();
    return state_.upgrade;
}

void Device::close_upgrade() noexcept
{
    close_socket(&state_.upgrade.maapi_socket);
    close_socket(&state_.upgrade.cdb_socket);
    state_.upgrade.thandle = -1;
    state_.transaction.reset();
    state_.history.reset();
    *interface_ = NzConfdInterface(-1);
}

confd_trans_ctx* Device::transaction_context()
{
    return upgrade_open() ? &context_ : nullptr;
}

void Device::walk_changes(store::ChangeVisitor& visitor) const
{
    if (upgrade_open()) {
        store::walk_changes(state_.stored, *state_.transaction, visitor);
    }
}

void Device::commit()
{
    if (upgrade_open()) {
        state_.stored = std::move(*state_.transaction);
    }
    close_upgrade();
}

void Device::drop()
{
    close_upgrade();
}

const store::Configuration& Device::configuration(Datastore which) const
{
    if (which == Datastore::Stored) {
        return state_.stored;
    }
    if (!upgrade_open()) {
        throw std::logic_error("no upgrade is open: there is no transaction to look at");
    }
    return *state_.transaction;
}

std::optional<store::Path> Device::path_of(const std::string& keypath) const
{
    capi::KeypathCache names(*state_.schema);
    store::Path path;
    return resolve(&names, &path, "%s", keypath.c_str()) ? std::optional<store::Path>(std::move(path)) : std::nullopt;
}

void Device::write(Datastore which, int descriptor, const xml::Progress& progress) const
{
    xml::write_config(configuration(which), descriptor, progress);
}

std::string Device::text(Datastore which) const
{
    return xml::config_text(configuration(which));
}

std::string Device::validate(Datastore which) const
{
    return state_.schema->validate(xml::config_text(configuration(which), false));
}

void Device::set_vrf_component(uint32_t base, uint32_t step)
{
    state_.settings.vrf.base = base;
    state_.settings.vrf.step = step;
}

void Device::set_user_profile(uint32_t value)
{
    state_.settings.user_profile = value;
}

void Device::set_interfaces(std::vector<in_addr> addresses)
{
    state_.settings.interfaces = std::move(addresses);
}

std::vector<capi::MetReading> Device::readings() const
{
    capi::Readings all = state_.readings;
    const Registry& registry = Registry::instance();
    for (std::size_t i = 0; i < registry.refused(); ++i) {
        all.meet(capi::Reading::OneThreadOneDevice, [&registry] { return std::string(registry.first_refused()); });
    }
    return all.met();
}

OpenThings Device::open_things() const
{
    OpenThings open;
    for (const auto& [descriptor, endpoint] : Registry::instance().endpoints) {
        if (endpoint.device == &state_ && endpoint.private_socket) {
            ++open.cdb_sockets;
            open.cdb_sessions += endpoint.session ? 1 : 0;
        }
    }
    open.cursors = state_.cursors;
    const std::size_t live = values::live_owned_values();
    open.values = live > values_before_ ? live - values_before_ : 0;
    return open;
}

}  // namespace bgp_platform

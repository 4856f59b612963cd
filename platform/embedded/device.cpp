#include "device.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "capi/endpoint.h"
#include "nz_confd_cdb_session.h"
#include "registry.h"
#include "values/owned_values.h"

namespace bgp_platform {

namespace {

// A real descriptor, so that a program that closes or mixes up its handles behaves as on the device.
int open_socket(capi::Endpoint::Kind kind, Device* device, bool session)
{
    const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), "cannot open a socket for the upgrade");
    }
    auto endpoint = std::make_unique<capi::Endpoint>(kind, device, false);
    endpoint->session = session;
    Registry::instance().endpoints[descriptor] = std::move(endpoint);
    return descriptor;
}

void close_socket(int* descriptor) noexcept
{
    if (Registry::instance().endpoints.erase(*descriptor) != 0) {
        close(*descriptor);
    }
    *descriptor = -1;
}

}  // namespace

Device::Device(Options options)
    : schema_(options.schema != nullptr ? std::move(options.schema) : schema::Schema::builtin()),
      port_(options.port),
      stored_(schema_),
      interface_(std::make_unique<NzConfdInterface>(-1)),
      keypaths_(*schema_),
      values_before_(values::live_owned_values())
{
    connect_middleware();
    Registry::instance().add(this);
}

Device::~Device()
{
    close_upgrade();
    Registry::instance().remove(this);
}

void Device::connect_middleware()
{
    in_addr loopback{};
    loopback.s_addr = htonl(INADDR_LOOPBACK);
    middleware_.interfaces = {loopback};
    middleware_.on_log = [this](std::string_view line) {
        if (keep_reports_) {
            log_.emplace_back(line);
        }
        if (log_sink) {
            log_sink(line);
        }
    };
    middleware_.on_trace = [this](const TraceLine& line) {
        if (keep_reports_) {
            trace_.push_back(line);
        }
    };
    middleware_.on_fault = [this](const Fault& fault) {
        faults_.push_back(fault);
        if (fault_sink) {
            fault_sink(fault);
        }
    };
    middleware_.on_backtrace = [this] { ++backtraces_; };
}

void Device::load_file(const std::string& path, const xml::Progress& progress, const xml::Limits& limits)
{
    store::Configuration loaded = stored_;
    xml::read_config_file(path, &loaded, progress, limits);
    stored_ = std::move(loaded);
}

void Device::load_text(std::string_view xml, const std::string& name, const xml::Limits& limits)
{
    store::Configuration loaded = stored_;
    xml::read_config_text(xml, name, &loaded, limits);
    stored_ = std::move(loaded);
}

void Device::clear()
{
    stored_ = store::Configuration(schema_);
}

UpgradeHandles Device::open_upgrade()
{
    if (upgrade_open()) {
        throw std::logic_error("an upgrade is open already: commit or drop it first");
    }
    upgrade_.maapi_socket = open_socket(capi::Endpoint::Kind::Maapi, this, false);
    upgrade_.cdb_socket = open_socket(capi::Endpoint::Kind::Cdb, this, true);
    upgrade_.thandle = next_thandle_++;
    transaction_ = std::make_unique<store::Configuration>(stored_);
    *interface_ = NzConfdInterface(upgrade_.maapi_socket);
    context_.fd = upgrade_.maapi_socket;
    context_.thandle = upgrade_.thandle;
    context_.t_opaque = interface_.get();
    return upgrade_;
}

void Device::close_upgrade() noexcept
{
    close_socket(&upgrade_.maapi_socket);
    close_socket(&upgrade_.cdb_socket);
    upgrade_.thandle = -1;
    transaction_.reset();
    *interface_ = NzConfdInterface(-1);
}

confd_trans_ctx* Device::transaction_context()
{
    return upgrade_open() ? &context_ : nullptr;
}

void Device::set_data_timeout(int seconds) noexcept
{
    data_timeout_ = seconds;
    ++data_timeout_calls_;
}

void Device::walk_changes(store::ChangeVisitor& visitor) const
{
    if (upgrade_open()) {
        store::walk_changes(stored_, *transaction_, visitor);
    }
}

void Device::commit()
{
    if (upgrade_open()) {
        stored_ = std::move(*transaction_);
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
        return stored_;
    }
    if (!upgrade_open()) {
        throw std::logic_error("no upgrade is open: there is no transaction to look at");
    }
    return *transaction_;
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
    return schema_->validate(xml::config_text(configuration(which), false));
}

void Device::set_vrf_component(uint32_t base, uint32_t step)
{
    middleware_.vrf_base = base;
    middleware_.vrf_step = step;
}

void Device::set_user_profile(uint32_t value)
{
    middleware_.user_profile = value;
}

void Device::set_interfaces(std::vector<in_addr> addresses)
{
    middleware_.interfaces = std::move(addresses);
}

OpenThings Device::open_things() const
{
    OpenThings open;
    for (const auto& [descriptor, endpoint] : Registry::instance().endpoints) {
        if (endpoint->device == this && endpoint->private_socket) {
            ++open.cdb_sockets;
            open.cdb_sessions += endpoint->session ? 1 : 0;
        }
    }
    open.cursors = cursors_;
    const std::size_t live = values::live_owned_values();
    open.values = live > values_before_ ? live - values_before_ : 0;
    return open;
}

}  // namespace bgp_platform

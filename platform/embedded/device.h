// A device on the workstation: the one face of the stand-in for tests and tools.
//
// A device holds a stored configuration, opens one upgrade transaction over it as the update framework does, answers
// the ConfD C API on real socket descriptors and keeps what the code under rehearsal reported. It belongs to one
// thread.
//
//     Device device;
//     device.load_file("examples/edge-router.xml");
//     const UpgradeHandles upgrade = device.open_upgrade();
//     update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket);
//     device.walk_changes(report);
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "confd_cdb.h"
#include "confd_dp.h"
#include "confd_lib.h"
#include "state.h"
#include "store/changes.h"
#include "store/history.h"
#include "xml/config_reader.h"
#include "xml/config_writer.h"

class NzConfdInterface;

namespace bgp_platform {

// What the program has open or has not given back.
struct OpenThings {
    std::size_t cdb_sessions = 0;  // read sessions on sockets that the program connected itself
    std::size_t cdb_sockets = 0;   // sockets that the program connected itself and did not close
    std::size_t cursors = 0;       // initialised and not destroyed
    std::size_t values = 0;        // owned values not released

    bool none() const noexcept { return cdb_sessions + cdb_sockets + cursors + values == 0; }
};

// The two configurations of an upgrade.
enum class Datastore { Stored, Transaction };

class Device {
    DeviceState state_;  // first: the two sinks are parts of it

public:
    struct Options {
        uint16_t port = CONFD_PORT;                    // where private CDB sessions reach it, on 127.0.0.1
        std::shared_ptr<const schema::Schema> schema;  // null: the modules the platform is built with
    };

    Device() : Device(Options{}) {}
    explicit Device(Options options);
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    // The stored configuration. A load adds the file's content ("-": that of standard input) to it, or throws
    // xml::LoadError and leaves it as it was.
    void load_file(const std::string& path, const xml::Progress& progress = {}, const xml::Limits& limits = {});
    void load_text(std::string_view xml, const std::string& name = "configuration", const xml::Limits& limits = {});
    void clear();  // an empty stored configuration

    // Whether the upgrades opened from now on keep a history of their transaction (store/history.h).
    void keep_history(bool keep) noexcept { keep_history_ = keep; }

    // The history of the open transaction; null when none is open or it keeps none.
    store::History* history() const noexcept { return state_.history.get(); }

    // What was loaded of modules that the schema does not know: no call sees it, and both datastores are written with it.
    const std::vector<store::ForeignPart>& foreign() const noexcept { return state_.stored.foreign(); }

    // Opens the transaction and the two sockets (once; a second call before drop() or commit() throws
    // std::logic_error).
    UpgradeHandles open_upgrade();
    bool upgrade_open() const noexcept { return state_.transaction != nullptr; }

    // A transaction context as a daemon's callback gets it, for the open transaction. Owned by the device.
    confd_trans_ctx* transaction_context();
    int data_timeout() const noexcept { return state_.data_timeout; }  // seconds last set, -1 when never
    std::size_t data_timeout_calls() const noexcept { return state_.data_timeout_calls; }

    // What the transaction changed; visits nothing when none is open.
    void walk_changes(store::ChangeVisitor& visitor) const;

    void commit();  // the transaction becomes the stored configuration
    void drop();    // the transaction is forgotten; both close the upgrade's sockets

    const store::Configuration& configuration(Datastore which) const;
    const schema::Schema& schema() const noexcept { return *state_.schema; }

    // The place that a keypath names, keys and quotes as the platform writes them; none when the schema has it not.
    std::optional<store::Path> path_of(const std::string& keypath) const;

    // Writes a datastore to an open descriptor, or as text. Throws xml::WriteError.
    void write(Datastore which, int descriptor, const xml::Progress& progress = {}) const;
    std::string text(Datastore which) const;

    // The first thing libyang finds against a datastore, empty when it is valid.
    std::string validate(Datastore which) const;

    // What was reported, in order. A sink, when set, gets each line as it comes; keep_reports(false) stops the keeping. A
    // filter is asked then, when set, and lines of a format that it refuses are not made.
    const std::vector<std::string>& log() const noexcept { return state_.reports.log; }
    const std::vector<TraceLine>& trace() const noexcept { return state_.reports.trace; }
    const std::vector<Fault>& faults() const noexcept { return state_.reports.faults; }
    std::size_t backtraces() const noexcept { return state_.reports.backtraces; }
    std::function<bool(const char* format)>& log_filter = state_.reports.log_filter;
    std::function<void(std::string_view)>& log_sink = state_.reports.log_sink;
    std::function<void(const Fault&)>& fault_sink = state_.reports.fault_sink;
    void keep_reports(bool keep) noexcept { state_.reports.keep = keep; }

    // The settings that the middleware answers with.
    void set_vrf_component(uint32_t base, uint32_t step);
    void set_user_profile(uint32_t value);
    void set_interfaces(std::vector<in_addr> addresses);

    // Every call of the C API passes here (calls/recorder.h, calls/fault_plan.h).
    capi::Recorder& recorder() noexcept { return state_.recorder; }
    capi::FaultPlan& fault_plan() noexcept { return state_.fault_plan; }
    const capi::CallCounts& calls() const noexcept { return state_.calls; }

    // Notes each call there from now on, in memory that the caller shares with another process; null: no more.
    void watch(capi::LastCalls* last_calls) noexcept { state_.last_calls = last_calls; }

    // Of the questions that the published pages leave open (calls/readings.h), those that calls depended on, by number.
    std::vector<capi::MetReading> readings() const;

    OpenThings open_things() const;

private:
    void close_upgrade() noexcept;

    int next_thandle_ = 1;
    bool keep_history_ = false;
    std::unique_ptr<NzConfdInterface> interface_;
    confd_trans_ctx context_{};
    std::size_t values_before_;
};

}  // namespace bgp_platform

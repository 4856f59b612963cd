// What a device is made of: its configurations, the open upgrade, what passes the C API, its settings and reports.
//
// The entry points and the middleware find it through the registry and work on it; tests and tools have the Device
// (device.h) before it.
#pragma once

#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "calls/fault_plan.h"
#include "calls/readings.h"
#include "calls/recorder.h"
#include "keypath/keypath.h"
#include "keypath/last_calls.h"
#include "store/configuration.h"
#include "store/history.h"

namespace bgp_platform {

// What the update framework hands to update(), in its order.
struct UpgradeHandles {
    int maapi_socket = -1;
    int thandle = -1;
    int cdb_socket = -1;
};

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

// What the code under rehearsal reported, in order.
struct Reports {
    std::vector<std::string> log;
    std::vector<TraceLine> trace;
    std::vector<Fault> faults;
    std::size_t backtraces = 0;

    bool keep = true;  // of log and trace
    std::function<bool(const char* format)> log_filter;
    std::function<void(std::string_view)> log_sink;
    std::function<void(const Fault&)> fault_sink;

    // Whether a line of this format is worth making.
    bool wants(const char* format) const { return keep || !log_filter || log_filter(format); }

    void add_line(std::string_view line);
    void add_trace(TraceLine line);
    void add_fault(const Fault& fault);
};

// VRF v has the components from base + step * v on.
struct VrfNumbering {
    uint32_t base = 1;
    uint32_t step = 65536;
};

// What the middleware answers with.
struct Settings {
    VrfNumbering vrf;
    uint32_t user_profile = 0;
    std::vector<in_addr> interfaces{{htonl(INADDR_LOOPBACK)}};  // the host's IPv4 addresses in list order
};

struct DeviceState {
    DeviceState(std::shared_ptr<const schema::Schema> schema_, uint16_t port_)
        : schema(std::move(schema_)), port(port_), stored(schema), keypaths(*schema)
    {
    }

    std::shared_ptr<const schema::Schema> schema;
    uint16_t port;  // where private CDB sessions reach it, on 127.0.0.1

    store::Configuration stored;
    std::unique_ptr<store::Configuration> transaction;  // null: no upgrade is open
    std::unique_ptr<store::History> history;            // of the transaction; null: nobody asked for it
    UpgradeHandles upgrade;

    capi::Recorder recorder;
    capi::FaultPlan fault_plan;
    capi::CallCounts calls;
    capi::LastCalls* last_calls = nullptr;  // where they are noted; null: nowhere
    capi::Readings readings;                // of the open questions, those that calls depended on
    capi::KeypathCache keypaths;
    std::size_t cursors = 0;  // initialised and not destroyed
    int data_timeout = -1;    // seconds last set, -1 when never
    std::size_t data_timeout_calls = 0;

    Settings settings;
    Reports reports;
};

}  // namespace bgp_platform

// What a rehearsal found, for the report in either form.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "calls/recorder.h"
#include "judge/judgement.h"
#include "judge/upgrade_steps.h"
#include "report/change.h"
#include "store/configuration.h"

namespace bgp_rehearse {

// How large a stored configuration is.
struct ConfigurationSize {
    std::size_t entries = 0;  // of lists
    std::size_t values = 0;   // leaves that are set, and entries of leaf-lists
};

ConfigurationSize size_of(const bgp_platform::store::Configuration& configuration);

// Where an upgrade had come to when it ended.
struct LastSeen {
    std::string reading;           // the keypath that was read last; empty: none was
    std::string writing;           // and written
    std::string function;          // of the C API, that was called last; empty: none was
    bool under_way = false;        // it had not returned
    std::vector<std::string> log;  // the last ten lines, the oldest first, a long one cut
    CallTotals calls;              // all that were made
    const char* step = "";         // the one it was in, "update" between the steps
};

// How an upgrade ended that did not return.
struct Ended {
    enum class Kind { Fault, Assertion, Exception, Signal, Exit };

    Kind kind = Kind::Exit;
    std::string function;  // of the fault or assertion reported last; empty when there was none
    std::string source;
    unsigned int line = 0;
    std::string text;
    int signal = 0;  // that ended the process, 0 when it exited
    int status = 0;  // that it exited with
    LastSeen last;
};

// "fault", "assertion", "exception", "signal", "exit"
const char* name_of(Ended::Kind kind) noexcept;

// "SIGSEGV"
std::string signal_name(int number);

// "a fault in StartCdbSession (src/daemon/bgp_utils:397): Could not convert 127.0.0.1 to IPv4"
std::string describe(const Ended& ended);

struct Report {
    std::string configuration;
    std::string library;  // the file that the loader took
    ConfigurationSize loaded;
    std::optional<Ended> ended;  // when set, nothing is known of what the upgrade did but log and steps
    int result = 0;              // of update()
    Judgement judgement;
    bgp_platform::capi::CallCounts calls;
    std::vector<Step> steps;  // empty when the log tells of none
    std::vector<Change> changes;
    std::vector<bgp_platform::Fault> faults;  // reported without ending the upgrade
    std::size_t log_lines = 0;                // of an upgrade that returned
    std::vector<std::string> log;             // kept only where the report shows it
    std::optional<std::string> check;         // --commit-check: what is not valid, "" when all is
    bool show_log = false;
};

}  // namespace bgp_rehearse

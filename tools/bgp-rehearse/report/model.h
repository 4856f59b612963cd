// What a rehearsal found, for the report in either form.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/upgrade_limits.h"
#include "calls/recorder.h"
#include "judge/failed_calls.h"
#include "judge/judgement.h"
#include "judge/upgrade_steps.h"
#include "report/device_time.h"
#include "report/subtree.h"

namespace bgp_rehearse {

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
    enum class Kind { Fault, Assertion, Exception, Signal, Exit, TimeLimit, MemoryLimit };

    Kind kind = Kind::Exit;
    std::string function;  // of the fault or assertion reported last; empty when there was none
    std::string source;
    unsigned int line = 0;
    std::string text;
    int signal = 0;  // that ended the process, 0 when it exited
    int status = 0;  // that it exited with
    LastSeen last;
};

// "fault", "assertion", "exception", "signal", "exit", "time limit", "memory limit"
const char* name_of(Ended::Kind kind) noexcept;

// "SIGSEGV"
std::string signal_name(int number);

// "a fault in StartCdbSession (src/daemon/bgp_utils:397): Could not convert 127.0.0.1 to IPv4"
std::string describe(const Ended& ended);

// "the upgrade ended in SIGSEGV", "the upgrade needed more than 512 MB (--memory-limit)"
std::string sentence_of(const Ended& ended);

// A library's name and version, by the name of the file that leads to: "libbgp_update", "0.1.0". Both are empty where that
// file is not there or has no version.
struct LibraryVersion {
    std::string name;
    std::string version;
};
LibraryVersion version_of(const std::string& library);

// "libbgp_update 0.1.0", or the file where it has no version.
std::string words_of_library(const std::string& library);

// "IPv6 unicast: ran (9 writes failed)"
std::string what_came_of(const Step& step);

// Of what a rehearsal was made, beside the assumptions about the device.
struct Inputs {
    std::string configuration;         // its name
    std::string configuration_sha256;  // of the file's bytes; empty where they were not read for it
    std::string library;               // the file that the loader took, or that it was to take
    std::string fail_on;               // "stop"
    std::vector<std::pair<std::string, std::string>> severities;  // as given
    std::size_t max_entries = 0;
    bool commit_check = false;
    bool again = false;
    UpgradeLimits limits;
};

// Lines of the log that one step wrote, up to the next part.
struct LogPart {
    std::size_t first = 0;  // its first line, from 1
    std::size_t step = 0;   // its place among the steps, from 1, as UpgradeSteps counts them
};

// Tells while the log is written which step each line is of.
class LogParts {
public:
    // A line; `before` and `after` are the numbers of the step that ran when it came and of the one that it left running.
    // The first and the last line of a step are its own.
    void add(std::size_t before, std::size_t after);

    const std::vector<LogPart>& all() const noexcept { return parts_; }

private:
    std::size_t lines_ = 0;
    std::vector<LogPart> parts_;
};

struct Report {
    Inputs inputs;
    DeviceTimes times;
    const bgp_platform::Device* device = nullptr;  // with the upgrade, still open; null when it did not return
    const FailedCalls* failed_calls = nullptr;     // likewise
    std::optional<int> returned;                   // what update() did
    std::optional<Ended> ended;
    std::optional<Judgement> judgement;  // none where nothing was rehearsed
    bgp_platform::capi::CallCounts calls;
    std::vector<Step> steps;                  // empty when the log tells of none
    std::vector<bgp_platform::Fault> faults;  // reported without ending the upgrade
    std::vector<std::string> log;             // kept only where a report shows it
    std::vector<LogPart> log_parts;           // likewise
    std::optional<std::string> check;         // --commit-check: what is not valid, "" when all is
    std::optional<Subtree> listed;            // whose changes the text lists
    bool show_log = false;                    // in the text
    bool log_in_json = false;
};

// How the command ends: its exit status and, where it has one, its message on standard error.
struct Ending {
    int status = 0;
    std::string error;

    bool operator==(const Ending& other) const { return status == other.status && error == other.error; }
};

}  // namespace bgp_rehearse

// What the child process tells its parent while it rehearses: one JSON document a line.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "device.h"
#include "judge/upgrade_steps.h"
#include "report/model.h"

namespace bgp_rehearse {

// How it went after update() had returned.
struct Finished {
    int severity = 0;          // of the verdict
    std::string mistake;       // the command found itself wrong; nothing was written
    std::string invalid;       // what --commit-check found
    std::string write_error;   // why the output could not be written
    std::string report_error;  // why a report could not be
};

// The child's side. A message that cannot be sent is lost: its parent is gone, and this process with it.
class Teller {
public:
    explicit Teller(int channel) : channel_(channel) {}

    void library(const std::string& path) const;       // the library is open
    void refused(const std::string& reason) const;     // it cannot be used
    void log_line(std::string_view line) const;        //
    void log_failed(const std::string& reason) const;  // the log's file could not be written any further
    void returned() const;                             // update() has
    void finished(const Finished& finished) const;

    void fault(const bgp_platform::Fault& fault) const;  // of an upgrade that may go on
    void exception(const std::string& text) const;       // that left update()

    // A log line at the border of a step, and all calls made until it was written.
    void step_line(std::string_view line, const CallTotals& calls) const;

private:
    int channel_;
};

// The parent's side: all that it was told. `steps` follows the upgrade, so that its current() step is that of the moment.
struct Told {
    // `holds` tells the conditions of the steps apart (UpgradeSteps).
    explicit Told(UpgradeSteps::Holds holds) : steps([this] { return calls_at_step_line; }, std::move(holds)) {}
    Told(const Told&) = delete;
    Told& operator=(const Told&) = delete;

    std::string library;
    std::optional<std::string> refused;
    std::vector<std::string> log;
    LogParts log_parts;
    std::string log_error;
    CallTotals calls_at_step_line;
    UpgradeSteps steps;
    std::vector<bgp_platform::Fault> faults;
    std::optional<std::string> exception;
    bool returned = false;
    std::optional<Finished> finished;

    void take(std::string_view line);  // a line that is no message is passed over

    void take_log_line(std::string line);

private:
    std::size_t step_of_line_ = 1;  // that ran when the log's last line had been written
};

}  // namespace bgp_rehearse

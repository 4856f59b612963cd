// What happens in the child process: the library is opened, its upgrade runs against the device, and what came of it is
// written down.
#pragma once

#include <string>

#include "device.h"
#include "report/model.h"
#include "report/page.h"
#include "run/messages.h"
#include "run/request.h"
#include "run/upgrade.h"
#include "run/watch.h"

namespace bgp_rehearse {

// The open descriptors that a rehearsal writes to, -1 where nothing is wanted.
struct RehearsalFiles {
    int report = -1;
    int output = -1;
    int log = -1;
    int json = -1;
    int junit = -1;
    int html = -1;
};

// Runs the upgrade in this process, which a fault in the library then ends. `report` comes with what is known before
// the run. Everything that the parent needs to know goes through the channel (messages.h), the report's text to its
// file; calls and log lines are noted in the watch as they come. Returns the exit status of the process: 0 when update() returned.
int rehearse(const RunOptions& options, const std::string& library, bgp_platform::Device& device, Report report,
             const RehearsalFiles& files, const Watch& watch, const Look& look, int channel);

// Its parts that a benchmark runs, too:

// Takes the log's lines to the parent, where options ask for it, and into the file `log` (-1: none). Each line goes out
// with a write of its own, so that the log is complete up to the moment the upgrade ends, whichever way it does.
FollowedUpgrade::TakeLine log_taker(const RunOptions& options, int log, const Teller& teller);

// All there is to tell of an upgrade that returned; `report` comes with what is known before the run.
Report complete_report(const RunOptions& options, const FollowedUpgrade& upgrade, const bgp_platform::Device& device,
                       Report report);

}  // namespace bgp_rehearse

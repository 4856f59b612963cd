// One router in a process of its own, which whatever the backup or the library does to it ends alone.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "base/child.h"
#include "base/shared_memory.h"
#include "fleet/plan/plan.h"
#include "run/library.h"
#include "run/request.h"
#include "run/watch.h"

namespace bgp_rehearse {

// How far the process is: each phase has the time limit to itself.
class Phases {
public:
    enum class Phase : uint8_t { Loading, Upgrading, Judging };

    void begin(Phase phase) const noexcept;  // the child's side
    Phase phase() const noexcept { return shared_->phase; }
    Duration since() const noexcept;  // it began

private:
    struct Shared {
        std::atomic<Phase> phase{Phase::Loading};
        std::atomic<std::chrono::steady_clock::rep> began{0};
    };
    SharedMemory<Shared> shared_;
};

// What both sides know of the router at hand.
struct RouterTask {
    const PlannedInput& input;
    const std::string& bytes;
    const RunOptions& options;
    uint64_t max_bytes;  // of the configuration, unpacked
    const UpgradeLibrary& library;
    const Watch& watch;
    const Phases& phases;
    int channel;  // what is written there comes to the parent; the last line is the result
};

// The child's side: loads, upgrades, judges and tells. Returns the exit status of the process.
int rehearse_router(const RouterTask& task);

// The same of an upgrade that did not return, in a further process: what its process had written is in `told`.
int tell_ended_router(const RouterTask& task, const ChildEnd& end, const std::string& told);

// The line of the result in what a child wrote; none where it did not come so far.
std::optional<std::string> result_in(const std::string& written, const PlannedInput& input);

}  // namespace bgp_rehearse

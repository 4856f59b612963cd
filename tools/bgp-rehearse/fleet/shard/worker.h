// The warm worker: schema and library are loaded once, and each router runs in a child process that finds them there.
#pragma once

#include <functional>
#include <string>

#include "base/child.h"
#include "fleet/plan/input_reader.h"
#include "fleet/plan/plan.h"
#include "fleet/shard/router.h"
#include "run/library.h"
#include "run/request.h"

namespace bgp_rehearse {

class Worker {
public:
    // All outlive the worker. Throws CommandError when it cannot work.
    Worker(const Plan& plan, const UpgradeLibrary& library, const InterruptGuard& interrupts);
    ~Worker();
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // The line of an input's result, whatever comes of it. Throws Interrupted.
    std::string rehearse(const PlannedInput& input);

private:
    RunOptions options_for(const PlannedInput& input) const;
    std::string rehearse(const PlannedInput& input, const std::string& bytes);
    ChildEnd run(const std::function<int()>& body, const Phases& phases) const;
    std::string line_of_ended(const RouterTask& task, const ChildEnd& end, const std::string& told);
    std::string written() const;

    const Plan& plan_;
    const UpgradeLibrary& library_;
    const InterruptGuard& interrupts_;
    RunOptions options_;
    InputReader reader_;
    int channel_;
};

}  // namespace bgp_rehearse

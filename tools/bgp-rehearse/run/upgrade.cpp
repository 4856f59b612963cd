#include "run/upgrade.h"

#include <arpa/inet.h>

#include <exception>
#include <new>
#include <utility>

#include "judge/stored_condition.h"
#include "run/again.h"
#include "run/memory_limit.h"

namespace bgp_rehearse {

namespace {

using bgp_platform::Datastore;
using bgp_platform::Device;

Assumptions assumptions_of(const DeviceOptions& device)
{
    Assumptions assumptions;
    assumptions.user_profile = std::to_string(device.user_profile);
    assumptions.user_profile_given = device.user_profile_known;
    assumptions.interfaces_given = device.interfaces_known;
    for (const in_addr& address : device.interfaces) {
        char text[INET_ADDRSTRLEN] = {};
        inet_ntop(AF_INET, &address, text, sizeof text);
        assumptions.interfaces.append(assumptions.interfaces.empty() ? "" : ",").append(text);
    }
    return assumptions;
}

// What is not valid in the result, or nothing. A text that XML has no place for shows before libyang sees it.
std::string check(const Device& device)
{
    try {
        return device.validate(Datastore::Transaction);
    } catch (const bgp_platform::xml::WriteError& error) {
        return error.what();
    }
}

// The result of update(), or none when an exception left it.
std::optional<int> run_update(const UpgradeLibrary& library, Device& device, const Teller& teller,
                              const UpgradeLimits& limits, const Watch& watch)
{
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    const MemoryLimit memory(limits.memory, watch);
    try {
        return library.update(upgrade.maapi_socket, upgrade.thandle, upgrade.cdb_socket);
    } catch (const std::bad_alloc& error) {
        MemoryLimit::reached();
        teller.exception(error.what());
    } catch (const std::exception& error) {
        teller.exception(error.what());
    } catch (...) {
        teller.exception("of a type that is not known");
    }
    return std::nullopt;
}

}  // namespace

FollowedUpgrade::FollowedUpgrade(const UpgradeLibrary& library, Device& device, const Teller& teller,
                                 const Watch& watch, TakeLine take_line)
    : library_(library),
      device_(device),
      teller_(teller),
      watch_(watch),
      steps_([&device] { return totals_of(device.calls()); }, conditions_on(device))
{
    device.keep_history(true);
    follow_log(std::move(take_line));
    device.fault_sink = [this](const bgp_platform::Fault& fault) { teller_.fault(fault); };
    watch.start(device);
    follow_failures();
}

void FollowedUpgrade::follow_log(TakeLine take_line)
{
    device_.log_sink = [this, take_line = std::move(take_line)](std::string_view line) {
        watch_.take_line(line);
        const std::size_t step = steps_.current_number();
        if (steps_.take(line)) {
            device_.history()->set_writer(static_cast<bgp_platform::store::Writer>(steps_.current_number()));
            teller_.step_line(line, totals_of(device_.calls()));
        }
        log_parts_.add(step, steps_.current_number());
        if (take_line) {
            take_line(line);
        }
    };
}

void FollowedUpgrade::follow_failures()
{
    device_.recorder().after_failure = [this](const bgp_platform::capi::Failure& failure) {
        if (failure.error == CONFD_ERR_MALLOC) {
            MemoryLimit::reached();
        }
        failed_calls_.add(steps_.current(), failure.function, failure.error, failure.path, failure.message,
                          failure.number, device_.log().size());
    };
}

void FollowedUpgrade::pass_over_other_lines()
{
    device_.log_filter = [this](const char* format) { return steps_.may_know(format); };
}

bool FollowedUpgrade::run(const UpgradeLimits& limits)
{
    result_ = run_update(library_, device_, teller_, limits, watch_);
    if (result_) {
        teller_.returned();
        steps_.returned();
    }
    return result_.has_value();
}

FollowedUpgrade::Judged FollowedUpgrade::judged(const RunOptions& options) const
{
    Judged judged;
    if (options.commit_check) {
        judged.check = check(device_);
    }
    const Evidence evidence{
        device_,
        *result_,
        steps_.all(),
        failed_calls_,
        assumptions_of(options.device),
        judged.check,
        options.again ? std::optional<Again>(upgrade_again(library_, device_, options.limits, watch_)) : std::nullopt};
    judged.judgement = judge(evidence, chosen_severities(options.severities));
    return judged;
}

}  // namespace bgp_rehearse

#include "fleet/options.h"

#include <fmt/format.h>

#include <string>

namespace bgp_rehearse {

namespace {

constexpr char kStatuses[] =
    "Exit status:\n"
    "  0  done\n"
    "  2  bad command line, plan, list of inputs or library; nothing was run\n"
    "  5  what was asked for could not be written\n"
    "  6  the parts and the plan do not agree\n"
    "  70 the command found itself wrong";

// A verb that is still to come: whatever it is given, it says so.
void add_unbuilt(CLI::App* fleet, const std::string& name, const std::string& what, FleetAction* action)
{
    CLI::App* verb = fleet->add_subcommand(name, what);
    verb->prefix_command();
    verb->final_callback([=] {
        *action = [name]() -> ExitStatus {
            throw CommandError(ExitStatus::BadInput, fmt::format("fleet {}: this build cannot do that yet", name));
        };
    });
}

void add_plan(CLI::App* fleet, FleetAction* action)
{
    add_unbuilt(fleet, "plan", "List the backups of folders, archives and repositories, and cut them into shards",
                action);
}

void add_work(CLI::App* fleet, FleetAction* action)
{
    add_unbuilt(fleet, "work", "Rehearse the upgrade of each backup of a shard", action);
}

void add_merge(CLI::App* fleet, FleetAction* action)
{
    add_unbuilt(fleet, "merge", "Put the results of all shards into a database", action);
}

void add_run(CLI::App* fleet, FleetAction* action)
{
    add_unbuilt(fleet, "run", "Plan, work and merge on this machine", action);
}

void add_report(CLI::App* fleet, FleetAction* action)
{
    add_unbuilt(fleet, "report", "Rank the reasons to look at a router, worst first", action);
}

void add_show(CLI::App* fleet, FleetAction* action)
{
    add_unbuilt(fleet, "show", "List the routers that have a finding, a verdict or a name", action);
}

}  // namespace

CLI::App* add_fleet(CLI::App* app, FleetAction* action)
{
    CLI::App* fleet = app->add_subcommand("fleet", "Rehearse the upgrade of many backups, and rank what needs a look");
    fleet->require_subcommand(1);
    fleet->footer(kStatuses);
    for (const auto add : {add_plan, add_work, add_merge, add_run, add_report, add_show}) {
        add(fleet, action);
    }
    return fleet;
}

}  // namespace bgp_rehearse

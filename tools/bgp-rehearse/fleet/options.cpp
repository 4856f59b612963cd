#include "fleet/options.h"

#include <fmt/format.h>

#include <limits>
#include <memory>
#include <string>

#include "base/given_value.h"
#include "base/option_kinds.h"
#include "base/upgrade_limits.h"
#include "fleet/plan/make_plan.h"
#include "fleet/work/work.h"
#include "run/shared_options.h"

namespace bgp_rehearse {

namespace {

constexpr char kStatuses[] =
    "Exit status:\n"
    "  0  done\n"
    "  2  bad command line, plan, list of inputs or library; nothing was run\n"
    "  5  what was asked for could not be written\n"
    "  6  the parts and the plan do not agree\n"
    "  70 the command found itself wrong";

constexpr std::size_t kMostShards = 1'000'000;
constexpr uint64_t kNoLimit = std::numeric_limits<uint64_t>::max();

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

// What is rehearsed and how: of `plan`, and of `run`, which begins with a plan.
void add_planning(CLI::App* verb, PlanOptions* options)
{
    verb->add_option("PATH", options->paths,
                     "Folders, archives, git repositories and files of backups; @FILE: a list of files")
        ->required()
        ->option_text("...");
    add_library(verb, &options->library);
    add_device(verb, &options->options.device);
    verb->add_option("--facts", options->facts, "Take interfaces and profile from a file of devices (CSV or JSON)")
        ->option_text("FILE");
    add_severities(verb, &options->options.severities);
    FleetOptions* const all = &options->options;
    add_value(verb, "--time-limit", "TIME", "The longest that a rehearsal may take: 90s, 10m, none (default: 60s)",
              [all](const std::string& text) { all->time_limit = given_time_limit(text).value_or(Duration{}); });
    add_value(verb, "--memory-limit", "SIZE", "The most that a rehearsal may need: 512M, 2G, none (default: none)",
              [all](const std::string& text) { all->memory_limit = given_memory_limit(text).value_or(0); });
    add_value(verb, "--max-bytes", "SIZE", "The most that a backup may have, packed or not: 512M, 2G (default: 1G)",
              [all](const std::string& text) { all->max_bytes = given_memory_limit(text).value_or(kNoLimit); });
    verb->add_flag("--all-names", options->all_names,
                   "Take files of any name (default: those whose name ends in .xml, .xml.gz and the like)");
}

void add_plan(CLI::App* fleet, FleetAction* action)
{
    CLI::App* verb = fleet->add_subcommand(
        "plan", "List the backups of folders, archives and repositories, and cut them into shards");
    const auto options = std::make_shared<PlanOptions>();
    add_planning(verb, options.get());
    CLI::Option* const output =
        verb->add_option("-o,--output", options->output, "Where the plan goes")->required()->option_text("PLAN");
    add_value(verb, "--shards", "N", "How many shards (default: as many as take two minutes each)",
              [options](const std::string& text) { options->shards = given_number(text, 1, kMostShards); });
    verb->final_callback([=] {
        refuse_empty(*output, "-o");
        *action = [options] { return plan_fleet(*options); };
    });
}

void add_work(CLI::App* fleet, FleetAction* action)
{
    CLI::App* verb = fleet->add_subcommand("work", "Rehearse the upgrade of each backup of a shard");
    const auto options = std::make_shared<WorkOptions>();
    CLI::Option* const plan =
        verb->add_option("PLAN", options->plan, "The plan, as fleet plan made it")->required()->option_text(" ");
    add_value(verb, "--shard", "N", "Which of its shards, from 0", [options](const std::string& text) {
        options->shard = given_number(text, 0, kMostShards);
    })->required();
    CLI::Option* const output =
        verb->add_option("-o,--output", options->output, "Where its results go")->required()->option_text("PART");
    CLI::Option* const library =
        verb->add_option("--library", options->library, "Where the plan's library lies on this machine")
            ->option_text("PATH");
    verb->final_callback([=] {
        refuse_empty(*plan, "PLAN");
        refuse_empty(*output, "-o");
        refuse_empty(*library, "--library");
        *action = [options] { return work_shard(*options); };
    });
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

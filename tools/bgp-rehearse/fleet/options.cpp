#include "fleet/options.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/given_value.h"
#include "base/option_files.h"
#include "base/option_kinds.h"
#include "base/upgrade_limits.h"
#include "fleet/merge/merge.h"
#include "fleet/plan/make_plan.h"
#include "fleet/report/comparison.h"
#include "fleet/report/report.h"
#include "fleet/report/show.h"
#include "fleet/report/summary.h"
#include "fleet/run/fleet_run.h"
#include "fleet/shard/work.h"
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
constexpr std::size_t kMostJobs = 1024;

// What is rehearsed and how: of `plan`, and of `run`, which begins with a plan.
void add_planning(CLI::App* verb, PlanOptions* options)
{
    verb->add_option("PATH", options->paths,
                     "Folders, archives, git repositories and files of backups; @FILE: a list of files")
        ->required()
        ->option_text("...");
    add_library(verb, &options->library);
    add_device(verb, &options->options.device);
    add_facts(verb, &options->facts);
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
    CLI::App* verb =
        add_command(fleet, "plan", "List the backups of folders, archives and repositories, and cut them into shards");
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
    CLI::App* verb = add_command(fleet, "work", "Rehearse the upgrade of each backup of a shard");
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
            ->envname("BGP_REHEARSE_LIBRARY")
            ->option_text("PATH");
    verb->final_callback([=] {
        refuse_empty(*plan, "PLAN");
        refuse_empty(*output, "-o");
        refuse_empty(*library, "--library");
        *action = [options] { return work_shard(*options); };
    });
}

void add_database(CLI::App* verb, std::string* database)
{
    verb->add_option("FLEET.db", *database, "The database that fleet merge or fleet run made")
        ->required()
        ->option_text(" ");
}

void add_merge(CLI::App* fleet, FleetAction* action)
{
    auto options = std::make_shared<MergeOptions>();
    CLI::App* verb = add_command(fleet, "merge", "Put the results of all shards into a database");
    verb->add_option("PLAN", options->plan, "The plan that the parts are of")->required()->option_text(" ");
    verb->add_option("PART", options->parts, "What fleet work left of each shard, in any order")
        ->required()
        ->option_text("...");
    verb->add_option("-o,--output", options->output, "The database to write")->required()->option_text("FLEET.db");
    verb->final_callback([=] { *action = [options] { return merge_fleet(*options); }; });
}

void add_run(CLI::App* fleet, FleetAction* action)
{
    CLI::App* verb = add_command(fleet, "run", "Plan, work and merge on this machine");
    const auto options = std::make_shared<FleetRunOptions>();
    options->jobs = std::max(1U, std::thread::hardware_concurrency());
    add_planning(verb, &options->plan);
    CLI::Option* const output = verb->add_option("-o,--output", options->output, "Where the database goes")
                                    ->required()
                                    ->option_text("FLEET.db");
    add_jobs(verb, &options->jobs, kMostJobs, "Routers at a time");
    verb->final_callback([=] {
        refuse_empty(*output, "-o");
        *action = [options] { return run_fleet(*options); };
    });
}

void add_report(CLI::App* fleet, FleetAction* action)
{
    auto options = std::make_shared<FleetReportOptions>();
    CLI::App* verb = add_command(fleet, "report", "Rank the reasons to look at a router, worst first");
    add_database(verb, &options->database);
    verb->add_option("--baseline", options->baseline,
                     "Compare with an earlier database: what is worse, better, different")
        ->option_text("OTHER.db");
    verb->add_option("--csv", options->csv, "Write a table, a line for each finding of a router")->option_text("FILE");
    verb->add_option("--json", options->json, "Write a JSON document")->option_text("FILE");
    verb->add_option("--html", options->html, "Write a page for a browser")->option_text("FILE");
    add_choice(verb, "--color", &options->colour, {"auto", "always", "never"}, "Whether the report has colours");
    verb->final_callback([=] { *action = [options] { return report_fleet(*options); }; });
}

// One of the words, or nothing.
void add_word(CLI::App* verb, const char* name, std::string* word, std::vector<std::string> words, const char* what)
{
    const std::string text = fmt::format("{}", fmt::join(words, "|"));
    add_value(verb, name, text, what, [=](const std::string& given) { *word = words[given_word(given, words)]; });
}

void add_question(CLI::App* verb, FleetShowOptions* options)
{
    verb->add_option("--finding", options->finding, "Those that have a finding")->option_text("ID");
    verb->add_option("--reason", options->reason, "Those that have a reason: its words, or the digits of the report")
        ->option_text("REASON");
    add_word(verb, "--severity", &options->severity, {"stop", "review", "note"},
             "Of that finding or reason, or of any");
    add_word(verb, "--verdict", &options->verdict, {kVerdicts.begin(), kVerdicts.end()}, "Those of a verdict");
    add_word(verb, "--class", &options->input_class, {kInputClasses.begin(), kInputClasses.end()},
             "Those whose backup is known whole, partly or not at all");
    verb->add_option("--step", options->step, "Those where a step of the upgrade has an outcome")->option_text("NAME");
    add_word(verb, "--outcome", &options->outcome, {kOutcomes.begin(), kOutcomes.end()}, "Of that step, or of any");
}

void add_show(CLI::App* fleet, FleetAction* action)
{
    auto options = std::make_shared<FleetShowOptions>();
    CLI::App* verb = add_command(fleet, "show", "List the routers that have a finding, a verdict or a name");
    add_database(verb, &options->database);
    add_question(verb, options.get());
    CLI::Option* router =
        verb->add_option("--router", options->router, "Show one router whole, and how its full report is made")
            ->option_text("NAME");
    verb->add_flag("--backup", options->backup, "Print that router's backup as it was found")->needs(router);
    CLI::Option* baseline =
        verb->add_option("--baseline", options->baseline, "Those that differ from an earlier database")
            ->option_text("OTHER.db");
    add_word(verb, "--difference", &options->difference, {kDifferences.begin(), kDifferences.end() - 1},
             "Those that became so since");
    verb->get_option("--difference")->needs(baseline);
    for (const char* asked : {"--finding", "--reason", "--severity", "--verdict", "--class", "--step", "--outcome"}) {
        verb->get_option(asked)->excludes(router)->excludes(baseline);
    }
    router->excludes(baseline);
    verb->add_flag("--names", options->names, "Print nothing but names, one a line");
    add_choice(verb, "--color", &options->colour, {"auto", "always", "never"}, "Whether the text has colours");
    verb->final_callback([=] { *action = [options] { return show_fleet(*options); }; });
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

#include "options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "base/given_value.h"
#include "base/nearest.h"
#include "base/option_files.h"
#include "base/option_kinds.h"
#include "base/standard_output.h"
#include "base/text_escape.h"
#include "fleet/options.h"
#include "option_tree.h"
#include "run/shared_options.h"
#include "run/version.h"

namespace bgp_rehearse {

namespace {

constexpr char kExitStatuses[] =
    "Exit status:\n"
    "  0  the upgrade ran, and the verdict is SAFE or REVIEW\n"
    "  1  the upgrade ended: in a fault, an assertion, a signal, an exit, or at a limit; no output is written\n"
    "  2  bad command line, configuration or library; nothing was run\n"
    "  3  the verdict is STOP, or what else --fail-on says\n"
    "  4  with --commit-check: the result is not valid; no output is written\n"
    "  5  the output, the log or the report could not be written\n"
    "  70 the command found itself wrong";

void add_colour(CLI::App* command, Colour* colour)
{
    add_choice(command, "--color", colour, {"auto", "always", "never"}, "Whether the report has colours");
}

void add_judgement(CLI::App* run, RunOptions* options)
{
    add_choice(run, "--fail-on", &options->fail_on, {"review", "stop", "never"},
               "The verdict from which on the exit status is 3");
    run->add_flag_callback("--strict", [] { throw CLI::ValidationError("--strict", "say --fail-on review"); })
        ->group("");
    add_severities(run, &options->severities);
    add_duration(run, "--call-time", &options->call_time, "What a call takes on the device, such as 100us or 2.5ms");
    add_duration(run, "--connect-time", &options->connect_time, "What a connection takes on the device");
    run->add_flag("--again", options->again, "Upgrade the result once more: nothing should change");
    run->add_flag("--commit-check", options->commit_check, "Validate the result against the YANG modules");
}

void add_limits(CLI::App* run, UpgradeLimits* limits)
{
    add_value(run, "--time-limit", "TIME",
              "The longest that the upgrade may take here: 90 (seconds), 10m, none (default: 10m)",
              [limits](const std::string& text) { limits->time = given_time_limit(text); });
    add_value(run, "--memory-limit", "SIZE", "The most that it may need: 512 (megabytes), 2G, none (default: none)",
              [limits](const std::string& text) { limits->memory = given_memory_limit(text); });
}

// Alone such an option means its usual value; another one comes behind "=", so that no name of a file is taken for it.
CLI::Option* add_optional_value(CLI::App* command, const char* name, std::string* value, const char* text,
                                const std::string& what)
{
    return command->add_flag(name, *value, what)->option_text(text)->multi_option_policy(CLI::MultiOptionPolicy::Throw);
}

void add_report(CLI::App* run, RunOptions* options)
{
    add_optional_value(run, "--changes{/}", &options->changes, "[=KEYPATH]",
                       "List what changed, or what did below a keypath");
    add_optional_value(run, "--json{-}", &options->json, "[=FILE]",
                       "Print the report as one JSON document, or write that to a file beside the text");
    add_value(run, "--junit", "FILE", "Write a test case for each step and each finding, for a pipeline",
              [options](const std::string& file) {
                  if (file.empty()) {
                      throw std::invalid_argument("a file name is missing");
                  }
                  options->junit = file;
              });
    run->add_flag("--json-log", options->json_log, "Put the upgrade log into the JSON document");
    add_colour(run, &options->colour);
}

CLI::App* add_run(CLI::App* app, RunOptions* options)
{
    CLI::App* run = add_command(app, "run", "Upgrade a copy of a stored configuration and report what changed");
    run->footer(kExitStatuses);
    run->add_option("CONFIG.xml", options->configuration,
                    "The stored configuration: XML, also compressed; - for standard input")
        ->required()
        ->option_text(" ");
    CLI::Option* library = add_library(run, &options->library);
    CLI::Option* output = run->add_option("-o,--output", options->output, "Write the upgraded configuration to a file")
                              ->option_text("OUT.xml");
    CLI::Option* log =
        run->add_option("--log", options->log, "Write the upgrade log to a file, or with - into the report")
            ->option_text("FILE");
    add_device(run, &options->device);
    add_max_errors(run, &options->device);
    CLI::Option* facts = add_facts(run, &options->facts);
    CLI::Option* device =
        run->add_option("--device", options->device_name, "The device in that file (default: the configuration's name)")
            ->option_text("NAME");
    add_report(run, options);
    CLI::Option* html =
        run->add_option("--html", options->html, "Write the report as a page for a browser, all in one file")
            ->option_text("FILE");
    add_judgement(run, options);
    add_limits(run, &options->limits);
    run->final_callback([=] {
        for (const CLI::Option* name : {library, output, log, facts, html}) {
            refuse_empty(*name, name->get_name());
        }
        if (device->count() > 0 && facts->count() == 0) {
            throw CLI::RequiresError("--device", "--facts");
        }
    });
    return run;
}

// The sizes of either kind.
void add_sizes(CLI::App* command, bgp_generator::healthy::Request* request)
{
    using namespace bgp_generator;
    const auto add = [command](const char* name, std::optional<uint32_t>* size, uint32_t most, const char* what) {
        add_value(command, name, "N", what,
                  [=](const std::string& text) { *size = static_cast<uint32_t>(given_number(text, 0, most)); });
    };
    add("--neighbors", &request->neighbors, kMostNeighbors, "Neighbours");
    add("--vrfs", &request->vrfs, kMostVrfs, "VRFs of the router");
    add("--prefix-rules", &request->prefix_rules, kMostPrefixRules, "Rules of prefix access lists");
    add("--route-maps", &request->route_maps, kMostRouteMaps, "Route map entries");
}

// Which of the two kinds is drawn, and what only one of them has.
void add_kinds(CLI::App* command, GenerateOptions* options)
{
    using namespace bgp_generator;
    healthy::Request* request = &options->request;
    add_choice(command, "--kind", &options->kind, {"adversarial", "healthy"},
               "Odd in all that may be odd, or a router as operators have them");
    const CLI::Option* role =
        add_value(command, "--role", "ROLE", "What a healthy router does in its network (default: drawn)",
                  [request](const std::string& name) { request->role = healthy::role_named(name); });
    const CLI::Option* flaw =
        add_values(command, "--flaw", "FLAW", "Give a healthy router something known that is wrong; may be given again",
                   [request](const std::string& name) { request->flaws.push_back(healthy::flaw_named(name)); });
    add_number(command, "--entities", &options->entities, kMostEntities, "BGP router entities of an adversarial one");
    const CLI::Option* entities = command->get_option("--entities");
    command->final_callback([=] {
        for (const CLI::Option* option : {role, flaw}) {
            if (options->kind != Kind::Healthy && option->count() > 0) {
                throw CLI::RequiresError(option->get_name(), "--kind healthy");
            }
        }
        if (options->kind == Kind::Healthy && entities->count() > 0) {
            throw CLI::ValidationError("--entities", "a healthy router has one; --flaw two-entities gives it a second");
        }
    });
}

CLI::App* add_generate(CLI::App* app, GenerateOptions* options)
{
    CLI::App* generate = add_command(app, "generate", "Draw a configuration at random, the same for the same seed");
    add_kinds(generate, options);
    add_sizes(generate, &options->request);
    add_number(generate, "--seed", &options->request.seed, std::numeric_limits<uint64_t>::max(),
               "What all else is drawn from");
    add_value(generate, "-o,--output", "FILE", "Write to a file (default: standard output)",
              [options](const std::string& file) {
                  if (file.empty()) {
                      throw std::invalid_argument("a file name is missing");
                  }
                  options->output = file;
              });
    generate->footer("A size that is not given is 0, and of a healthy router one that its role has.\n\n" +
                     roles_and_flaws() +
                     "\nExit status:\n"
                     "  0  the configuration is written\n"
                     "  2  bad command line, nothing is written\n"
                     "  5  the configuration could not be written");
    return generate;
}

constexpr char kSweepStatuses[] =
    "Exit status:\n"
    "  0  the library kept its contract in every run\n"
    "  1  the upgrade does not return even when nothing fails\n"
    "  2  bad command line, configuration or library\n"
    "  5  the report could not be written\n"
    "  6  the contract was broken or, with --all-sites, a call site was not reached";

CLI::App* add_sweep(CLI::App* app, SweepOptions* options)
{
    CLI::App* sweep = add_command(
        app, "sweep", "Make each call and each allocation of the upgrade fail in turn, and judge what it does");
    sweep->footer(kSweepStatuses);
    sweep->add_option("CONFIG.xml", options->configurations, "The stored configurations")
        ->required()
        ->option_text("...");
    CLI::Option* library = add_library(sweep, &options->library);
    add_device(sweep, &options->device);
    add_max_errors(sweep, &options->device);
    add_jobs(sweep, &options->jobs, 256, "Runs at a time");
    add_number(sweep, "--every", &options->every, 1000000, "Only each N-th run", 1);
    sweep->add_flag("--pairs", options->pairs, "Make all pairs of calls fail, too");
    sweep->add_flag("--all-sites", options->all_sites, "Exit with 6 when a call site was not reached");
    sweep->add_flag("--json", options->json, "Print the report as one JSON document");
    add_colour(sweep, &options->colour);
    sweep->final_callback([=] { refuse_empty(*library, "--library"); });
    return sweep;
}

CLI::App* add_findings(CLI::App* app, FindingsOptions* options)
{
    CLI::App* findings = app->add_subcommand("findings", "List the findings, or tell what one means and what to do");
    findings->add_option("ID", options->id, "The finding (default: all are listed)")->option_text(" ");
    findings->footer(
        "Exit status:\n"
        "  0  printed\n"
        "  2  no finding has the id\n"
        "  5  it could not be printed");
    return findings;
}

// For whoever packages the command, and not shown.
void add_generation(CLI::App* app, std::optional<ManualOptions>* options)
{
    const auto take = [=](const std::vector<std::string>& given) {
        if (given.size() != 2) {
            throw CLI::ValidationError("--generate", "give a kind and a folder");
        }
        try {
            given_word(given[0], kinds_of_manual());
        } catch (const std::invalid_argument& wrong) {
            throw CLI::ValidationError("--generate", wrong.what());
        }
        *options = {given[0], given[1], option_tree(*app)};
        throw CLI::Success();  // without a command
    };
    app->add_option_function<std::vector<std::string>>("--generate", take)->expected(1, 2)->group("");
}

// The command that was named, and its verb where it has some.
const CLI::App& deepest(const CLI::App& app)
{
    const std::vector<CLI::App*> commands = app.get_subcommands();
    return commands.empty() ? app : deepest(*commands.front());
}

// As it is typed behind bgp-rehearse, for messages.
std::string named(const CLI::App& app)
{
    const std::vector<CLI::App*> commands = app.get_subcommands();
    if (commands.empty()) {
        return "run";
    }
    const std::string& command = commands.front()->get_name();
    const std::vector<CLI::App*> verbs = commands.front()->get_subcommands();
    return verbs.empty() ? command : command + " " + verbs.front()->get_name();
}

// The first argument that nothing takes, and what it may have been meant for; empty when there is none.
std::string unexpected(const CLI::App& app)
{
    const CLI::App* at = &deepest(app);
    while (at != &app && at->remaining().empty()) {
        at = at->get_parent();
    }
    if (at->remaining().empty()) {
        return {};
    }
    const std::string argument = at->remaining().front();
    if (argument.front() == '-') {
        const std::string name = argument.substr(0, argument.find('='));
        return fmt::format("{} is no option of {}{}", name, at->get_name(), did_you_mean(name, names_of_options(*at)));
    }
    const std::vector<std::string> commands = names_of_commands(*at);
    return commands.empty() ? fmt::format("{} is one argument too many", argument)
                            : fmt::format("{} is no command{}", argument, did_you_mean(argument, commands));
}

std::string message_of(const CLI::App& app, const CLI::Error& error)
{
    const bool incomplete = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError) ||
                            error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const std::string argument = incomplete ? unexpected(app) : std::string();
    return fmt::format("bgp-rehearse: {}\nbgp-rehearse {} --help tells the options.\n",
                       escaped(argument.empty() ? error.what() : argument), named(app));
}

// As CLI11 shows them, but for the usual values of options that need none.
class Help : public CLI::Formatter {
public:
    std::string make_option_name(const CLI::Option* option, bool positional) const override
    {
        const std::string name = CLI::Formatter::make_option_name(option, positional);
        return name.substr(0, name.find('{'));
    }
};

}  // namespace

CommandLine parse_command_line(int argc, const char* const* argv)
{
    CLI::App app("Rehearses the upgrade of a network device's BGP configuration on this machine.", "bgp-rehearse");
    RunOptions run_options;
    run_options.device.interfaces = {in_addr{htonl(INADDR_LOOPBACK)}};
    GenerateOptions generate_options;
    SweepOptions sweep_options;
    sweep_options.device = run_options.device;
    sweep_options.jobs = std::max(1U, std::thread::hardware_concurrency());
    app.set_version_flag("--version", version_text, "Tell the version, the library, the schema and zlog");
    app.formatter(std::make_shared<Help>());
    app.require_subcommand(1);
    app.footer(
        "See bgp-rehearse run --help for the options of a rehearsal, bgp-rehearse generate --help for those of a "
        "configuration, bgp-rehearse sweep --help for those of a fault sweep, bgp-rehearse fleet --help for those of "
        "many backups, and bgp-rehearse findings for what is found.");
    const CLI::App* run = add_run(&app, &run_options);
    const CLI::App* generate = add_generate(&app, &generate_options);
    const CLI::App* sweep = add_sweep(&app, &sweep_options);
    FindingsOptions findings_options;
    const CLI::App* findings = add_findings(&app, &findings_options);
    CommandLine command;
    add_fleet(&app, &command.fleet);
    add_generation(&app, &command.manual);
    app.failure_message([](const CLI::App* parsed, const CLI::Error& error) { return message_of(*parsed, error); });
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream err;
        const bool asked_for = app.exit(error, out, err) == 0;
        print_out(out.str());
        print_message(err.str());
        command.status = asked_for ? ExitStatus::Ok : ExitStatus::BadInput;
        command.fleet = {};
        return command;
    }
    if (run->parsed()) {
        command.run = run_options;
    } else if (generate->parsed()) {
        command.generate = generate_options;
    } else if (sweep->parsed()) {
        command.sweep = sweep_options;
    } else if (findings->parsed()) {
        command.findings = findings_options;
    }
    return command;
}

}  // namespace bgp_rehearse

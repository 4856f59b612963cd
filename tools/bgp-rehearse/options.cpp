#include "options.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <thread>

#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

constexpr char kExitStatuses[] =
    "Exit status:\n"
    "  0  the upgrade ran; failed writes, if any, are in the summary\n"
    "  1  the upgrade ended in a fault, an assertion, a signal or an exit; no output is written\n"
    "  2  bad command line, configuration or library; nothing was run\n"
    "  3  with --strict: the upgrade ran, and a write failed, a fault was reported or update did not return 0\n"
    "  4  with --commit-check: the result is not valid; no output is written\n"
    "  5  the output, the log or the report could not be written";

std::vector<in_addr> parse_addresses(const std::string& text)
{
    std::vector<in_addr> addresses;
    std::istringstream parts(text + ",");
    for (std::string part; std::getline(parts, part, ',');) {
        in_addr address{};
        if (inet_pton(AF_INET, part.c_str(), &address) != 1) {
            throw CLI::ValidationError("--interfaces", "\"" + part + "\" is not an IPv4 address");
        }
        addresses.push_back(address);
    }
    return addresses;
}

void refuse_empty(const CLI::Option& option, const std::string& name)
{
    if (option.count() > 0 && option.as<std::string>().empty()) {
        throw CLI::ValidationError(name, "a file name is missing");
    }
}

CLI::Option* add_library(CLI::App* command, std::string* library)
{
    return command->add_option("--library", *library, "The upgrade library (default: this build's libbgp_update.so)")
        ->option_text("PATH");
}

void add_device(CLI::App* command, DeviceOptions* device)
{
    command
        ->add_option_function<std::string>(
            "--interfaces", [device](const std::string& text) { device->interfaces = parse_addresses(text); },
            "The device's IPv4 interface addresses, in order (default: 127.0.0.1)")
        ->option_text("ADDR[,ADDR...]");
    command
        ->add_option("--user-profile", device->user_profile,
                     "The user profile of the forwarding resources (default: 0)")
        ->option_text("N");
    command
        ->add_option("--max-entries", device->max_entries,
                     fmt::format("The most entries that a configuration may have (default: {})", device->max_entries))
        ->check(CLI::NonNegativeNumber)
        ->option_text("N");
}

CLI::App* add_run(CLI::App* app, RunOptions* options)
{
    CLI::App* run = app->add_subcommand("run", "Upgrade a copy of a stored configuration and report what changed");
    run->footer(kExitStatuses);
    run->add_option("CONFIG.xml", options->configuration, "The stored configuration, in ConfD's XML load format")
        ->required()
        ->option_text(" ");
    CLI::Option* library = add_library(run, &options->library);
    CLI::Option* output = run->add_option("-o,--output", options->output, "Write the upgraded configuration to a file")
                              ->option_text("OUT.xml");
    CLI::Option* log =
        run->add_option("--log", options->log, "Write the upgrade log to a file, or with - into the report")
            ->option_text("FILE");
    add_device(run, &options->device);
    run->add_flag("--json", options->json, "Print the report as one JSON document");
    run->add_flag("--strict", options->strict, "Exit with 3 when a write or another part of the upgrade failed");
    run->add_flag("--commit-check", options->commit_check, "Validate the result against the YANG modules");
    run->final_callback([=] {
        refuse_empty(*library, "--library");
        refuse_empty(*output, "--output");
        refuse_empty(*log, "--log");
    });
    return run;
}

void add_number(CLI::App* command, const char* name, uint32_t* number, uint32_t most, const std::string& what)
{
    command->add_option(name, *number, fmt::format("{} (default: {})", what, *number))
        ->check(CLI::Range(uint32_t{0}, most))
        ->option_text("N");
}

CLI::App* add_generate(CLI::App* app, GenerateOptions* options)
{
    using namespace bgp_generator;
    CLI::App* generate = app->add_subcommand("generate", "Draw a configuration at random, the same for the same seed");
    Settings* settings = &options->settings;
    add_number(generate, "--neighbors", &settings->neighbors, kMostNeighbors, "Neighbours");
    add_number(generate, "--vrfs", &settings->vrfs, kMostVrfs, "VRFs of the router");
    add_number(generate, "--prefix-rules", &settings->prefix_rules, kMostPrefixRules, "Rules of prefix access lists");
    add_number(generate, "--route-maps", &settings->route_maps, kMostRouteMaps, "Route map entries");
    add_number(generate, "--entities", &settings->entities, kMostEntities, "BGP router entities");
    generate->add_option("--seed", settings->seed, "What all else is drawn from (default: 0)")->option_text("N");
    CLI::Option* output =
        generate->add_option("-o,--output", options->output, "Write to a file (default: standard output)")
            ->option_text("FILE");
    generate->footer(
        "Exit status: 0 written; 2 bad command line, nothing is written; 5 the configuration could not be written");
    generate->final_callback([=] { refuse_empty(*output, "--output"); });
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
    CLI::App* sweep = app->add_subcommand(
        "sweep", "Make each call and each allocation of the upgrade fail in turn, and judge what it does");
    sweep->footer(kSweepStatuses);
    sweep->add_option("CONFIG.xml", options->configurations, "The stored configurations")
        ->required()
        ->option_text("...");
    CLI::Option* library = add_library(sweep, &options->library);
    add_device(sweep, &options->device);
    sweep->add_option("--jobs", options->jobs, fmt::format("Runs at a time (default here: {})", options->jobs))
        ->check(CLI::Range(1U, 256U))
        ->option_text("N");
    sweep->add_option("--every", options->every, "Only each N-th run (default: 1)")
        ->check(CLI::Range(std::size_t{1}, std::size_t{1000000}))
        ->option_text("N");
    sweep->add_flag("--pairs", options->pairs, "Make all pairs of calls fail, too");
    sweep->add_flag("--all-sites", options->all_sites, "Exit with 6 when a call site was not reached");
    sweep->add_flag("--json", options->json, "Print the report as one JSON document");
    sweep->final_callback([=] { refuse_empty(*library, "--library"); });
    return sweep;
}

// The command that was named, for messages.
std::string named(const CLI::App& app)
{
    const std::vector<CLI::App*> commands = app.get_subcommands();
    return commands.empty() ? "run" : commands.front()->get_name();
}

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
    app.set_version_flag("--version", "bgp-rehearse " BGP_REHEARSE_VERSION);
    app.require_subcommand(1);
    app.footer(
        "See bgp-rehearse run --help for the options of a rehearsal, bgp-rehearse generate --help for those of a "
        "configuration, bgp-rehearse sweep --help for those of a fault sweep.");
    const CLI::App* run = add_run(&app, &run_options);
    const CLI::App* generate = add_generate(&app, &generate_options);
    add_sweep(&app, &sweep_options);
    app.failure_message([](const CLI::App* parsed, const CLI::Error& error) {
        return fmt::format("bgp-rehearse: {}\nbgp-rehearse {} --help tells the options.\n", escaped(error.what()),
                           named(*parsed));
    });
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, std::nullopt, std::nullopt, app.exit(error) == 0 ? ExitStatus::Ok : ExitStatus::BadInput};
    }
    CommandLine command;
    if (run->parsed()) {
        command.run = run_options;
    } else if (generate->parsed()) {
        command.generate = generate_options;
    } else {
        command.sweep = sweep_options;
    }
    return command;
}

}  // namespace bgp_rehearse

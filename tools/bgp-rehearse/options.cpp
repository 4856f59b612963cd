#include "options.h"

#include <arpa/inet.h>

#include <CLI/CLI.hpp>
#include <sstream>

#include "text_escape.h"

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

void add_run(CLI::App* app, RunOptions* options)
{
    CLI::App* run = app->add_subcommand("run", "Upgrade a copy of a stored configuration and report what changed");
    run->footer(kExitStatuses);
    run->add_option("CONFIG.xml", options->configuration, "The stored configuration, in ConfD's XML load format")
        ->required()
        ->option_text(" ");
    CLI::Option* library =
        run->add_option("--library", options->library, "The upgrade library (default: this build's libbgp_update.so)")
            ->option_text("PATH");
    CLI::Option* output = run->add_option("-o,--output", options->output, "Write the upgraded configuration to a file")
                              ->option_text("OUT.xml");
    CLI::Option* log =
        run->add_option("--log", options->log, "Write the upgrade log to a file, or with - into the report")
            ->option_text("FILE");
    run->add_option_function<std::string>(
           "--interfaces", [options](const std::string& text) { options->interfaces = parse_addresses(text); },
           "The device's IPv4 interface addresses, in order (default: 127.0.0.1)")
        ->option_text("ADDR[,ADDR...]");
    run->add_option("--user-profile", options->user_profile,
                    "The user profile of the forwarding resources (default: 0)")
        ->option_text("N");
    run->add_flag("--json", options->json, "Print the report as one JSON document");
    run->add_flag("--strict", options->strict, "Exit with 3 when a write or another part of the upgrade failed");
    run->add_flag("--commit-check", options->commit_check, "Validate the result against the YANG modules");
    run->final_callback([=] {
        refuse_empty(*library, "--library");
        refuse_empty(*output, "--output");
        refuse_empty(*log, "--log");
    });
}

}  // namespace

CommandLine parse_command_line(int argc, const char* const* argv)
{
    CLI::App app("Rehearses the upgrade of a network device's BGP configuration on this machine.", "bgp-rehearse");
    RunOptions options;
    options.interfaces = {in_addr{htonl(INADDR_LOOPBACK)}};
    app.set_version_flag("--version", "bgp-rehearse " BGP_REHEARSE_VERSION);
    app.require_subcommand(1);
    app.footer("See bgp-rehearse run --help for the options of a rehearsal.");
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "bgp-rehearse: " + escaped(error.what()) + "\nbgp-rehearse run --help tells the options.\n";
    });
    add_run(&app, &options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return {std::nullopt, app.exit(error) == 0 ? ExitStatus::Ok : ExitStatus::BadInput};
    }
    return {options, ExitStatus::Ok};
}

}  // namespace bgp_rehearse

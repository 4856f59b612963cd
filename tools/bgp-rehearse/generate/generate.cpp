#include "generate/generate.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/child.h"
#include "base/output_file.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

bgp_generator::Settings adversarial_settings(const GenerateOptions& options)
{
    const bgp_generator::healthy::Request& request = options.request;
    bgp_generator::Settings settings;
    settings.neighbors = request.neighbors.value_or(0);
    settings.vrfs = request.vrfs.value_or(0);
    settings.prefix_rules = request.prefix_rules.value_or(0);
    settings.route_maps = request.route_maps.value_or(0);
    settings.entities = options.entities;
    settings.seed = request.seed;
    return settings;
}

bool write_drawn(const GenerateOptions& options, const bgp_generator::Sink& sink)
{
    return options.kind == Kind::Healthy ? bgp_generator::write_configuration(options.request, sink)
                                         : bgp_generator::write_configuration(adversarial_settings(options), sink);
}

[[noreturn]] void not_written(const std::string& what)
{
    throw CommandError(ExitStatus::NotWritten, fmt::format("{} could not be written: {}", what, std::strerror(errno)));
}

void generate_file(const GenerateOptions& options)
{
    const InterruptGuard interrupts;
    OutputFile output("-o", replaceable_file("-o", options.output));
    const auto write_piece = [&](std::string_view piece) {
        if (const int signal = interrupts.take(); signal != 0) {
            throw Interrupted{signal};
        }
        return write_all(output.descriptor(), piece.data(), piece.size());
    };
    if (!write_drawn(options, write_piece)) {
        not_written(escaped(options.output));
    }
    output.put_in_place();
}

}  // namespace

std::string roles_and_flaws()
{
    namespace healthy = bgp_generator::healthy;
    std::string text = "Roles:\n";
    for (const healthy::KnownRole& role : healthy::kRoles) {
        text += fmt::format("  {:<22}{}\n", role.name, role.what);
    }
    text += "Flaws:\n";
    for (const healthy::KnownFlaw& flaw : healthy::known_flaws()) {
        text += fmt::format("  {:<22}{}\n{:24}({})\n", flaw.name, flaw.adds, "", healthy::names_of(flaw.roles));
    }
    return text;
}

ExitStatus generate(const GenerateOptions& options)
{
    if (options.to_file()) {
        generate_file(options);
        return ExitStatus::Ok;
    }
    const auto write_piece = [](std::string_view piece) {
        return write_all(STDOUT_FILENO, piece.data(), piece.size());
    };
    if (!write_drawn(options, write_piece)) {
        not_written("standard output");
    }
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse

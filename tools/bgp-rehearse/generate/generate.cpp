#include "generate/generate.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/child.h"
#include "base/output_file.h"
#include "base/text_escape.h"
#include "generate/configuration.h"

namespace bgp_rehearse {

namespace {

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
    if (!bgp_generator::write_configuration(options.settings, write_piece)) {
        not_written(escaped(options.output));
    }
    output.put_in_place();
}

}  // namespace

ExitStatus generate(const GenerateOptions& options)
{
    if (options.to_file()) {
        generate_file(options);
        return ExitStatus::Ok;
    }
    const auto write_piece = [](std::string_view piece) {
        return write_all(STDOUT_FILENO, piece.data(), piece.size());
    };
    if (!bgp_generator::write_configuration(options.settings, write_piece)) {
        not_written("standard output");
    }
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse

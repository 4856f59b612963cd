#include "run/files.h"

#include "base/exit_status.h"

namespace bgp_rehearse {

namespace {

// The file for a name of the command line; empty for none.
std::string check_target(const std::string& option, const std::string& name, const std::string& configuration,
                         const std::string& library)
{
    if (name.empty()) {
        return {};
    }
    std::string target = replaceable_file(option, name);
    const std::string stored = configuration == "-" ? "/dev/stdin" : configuration;
    refuse_same_file(option, target, "the configuration to upgrade", stored);
    refuse_same_file(option, target, "the upgrade library", library);
    return target;
}

void refuse_printed(const std::string& option, const std::string& name)
{
    if (name == "-") {
        throw CommandError(ExitStatus::BadInput, option + " -: the report goes to standard output; name a file");
    }
}

void refuse_same_target(const std::string& option, const std::string& target, const std::string& what,
                        const std::string& other)
{
    if (!target.empty() && !other.empty()) {
        refuse_same_file(option, target, what, other);
    }
}

void open_file(const std::string& option, const std::string& target, const Readers& readers,
               std::optional<OutputFile>* file)
{
    if (!target.empty()) {
        file->emplace(option, target, readers);
    }
}

}  // namespace

std::string json_target(const RunOptions& options, const std::string& library)
{
    return check_target("--json", options.json_in_file() ? options.json : std::string(), options.configuration,
                        library);
}

std::string junit_target(const RunOptions& options, const std::string& library)
{
    refuse_printed("--junit", options.junit);
    std::string target = check_target("--junit", options.junit, options.configuration, library);
    refuse_same_target("--junit", target, "the output file", options.output);
    refuse_same_target("--junit", target, "the log file", options.log_in_file() ? options.log : std::string());
    refuse_same_target("--junit", target, "the file of --json", options.json_in_file() ? options.json : std::string());
    return target;
}

std::string html_target(const RunOptions& options, const std::string& library)
{
    refuse_printed("--html", options.html);
    std::string target = check_target("--html", options.html, options.configuration, library);
    refuse_same_target("--html", target, "the output file", options.output);
    refuse_same_target("--html", target, "the log file", options.log_in_file() ? options.log : std::string());
    refuse_same_target("--html", target, "the file of --json", options.json_in_file() ? options.json : std::string());
    refuse_same_target("--html", target, "the file of --junit", options.junit);
    return target;
}

RunTargets check_targets(const RunOptions& options, const std::string& library)
{
    refuse_printed("-o", options.output);
    const auto target = [&](const std::string& option, const std::string& name) {
        return check_target(option, name, options.configuration, library);
    };
    RunTargets targets;
    targets.readers = options.configuration == "-" ? Readers{0, std::nullopt} : readers_of(options.configuration);
    targets.output = target("-o", options.output);
    targets.log = target("--log", options.log_in_file() ? options.log : std::string());
    targets.json = json_target(options, library);
    targets.junit = junit_target(options, library);
    refuse_same_target("--log", targets.log, "the output file", targets.output);
    refuse_same_target("--json", targets.json, "the output file", targets.output);
    refuse_same_target("--json", targets.json, "the log file", targets.log);
    refuse_same_target("--junit", targets.junit, "the output file", targets.output);
    refuse_same_target("--junit", targets.junit, "the log file", targets.log);
    refuse_same_target("--junit", targets.junit, "the file of --json", targets.json);
    targets.html = html_target(options, library);
    return targets;
}

RunFiles::RunFiles(const RunTargets& targets)
{
    open_file("-o", targets.output, targets.readers, &output);
    open_file("--log", targets.log, targets.readers, &log);
    open_file("--json", targets.json, targets.readers, &json);
    open_file("--junit", targets.junit, targets.readers, &junit);
    open_file("--html", targets.html, targets.readers, &html);
}

void put_in_place(std::optional<OutputFile>& file)
{
    if (file) {
        file->put_in_place();
    }
}

}  // namespace bgp_rehearse

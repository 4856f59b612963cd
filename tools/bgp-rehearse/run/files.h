// The files that a rehearsal writes beside its report: upgraded configuration, log and documents.
#pragma once

#include <optional>
#include <string>

#include "base/output_file.h"
#include "run/request.h"

namespace bgp_rehearse {

// Their names, links followed; empty where none is wanted.
struct RunTargets {
    std::string output;
    std::string log;
    std::string json;
    std::string junit;
    std::string html;
    Readers readers;  // whom the configuration is for
};

// Throws CommandError where one cannot be replaced, or would replace what is read or another one.
RunTargets check_targets(const RunOptions& options, const std::string& library);

// The file for the JSON document, the JUnit document or the page alone; likewise.
std::string json_target(const RunOptions& options, const std::string& library);
std::string junit_target(const RunOptions& options, const std::string& library);
std::string html_target(const RunOptions& options, const std::string& library);

// The files themselves, where they are wanted. Those that are not put in place leave nothing behind.
struct RunFiles {
    explicit RunFiles(const RunTargets& targets);

    static int descriptor(const std::optional<OutputFile>& file) noexcept { return file ? file->descriptor() : -1; }

    std::optional<OutputFile> output;
    std::optional<OutputFile> log;
    std::optional<OutputFile> json;
    std::optional<OutputFile> junit;
    std::optional<OutputFile> html;
};

// Does nothing where no file is wanted.
void put_in_place(std::optional<OutputFile>& file);

}  // namespace bgp_rehearse

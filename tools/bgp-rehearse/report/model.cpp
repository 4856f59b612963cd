#include "report/model.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string_view>

#include "base/text_escape.h"
#include "judge/words.h"

namespace bgp_rehearse {

const char* name_of(Ended::Kind kind) noexcept
{
    switch (kind) {
        case Ended::Kind::Fault:
            return "fault";
        case Ended::Kind::Assertion:
            return "assertion";
        case Ended::Kind::Exception:
            return "exception";
        case Ended::Kind::Signal:
            return "signal";
        case Ended::Kind::TimeLimit:
            return "time limit";
        case Ended::Kind::MemoryLimit:
            return "memory limit";
        case Ended::Kind::Exit:
            break;
    }
    return "exit";
}

std::string signal_name(int number)
{
    const char* name = sigabbrev_np(number);
    return name == nullptr ? fmt::format("signal {}", number) : fmt::format("SIG{}", name);
}

std::string describe(const Ended& ended)
{
    switch (ended.kind) {
        case Ended::Kind::Exception:
            return fmt::format("an exception: {}", escaped(ended.text));
        case Ended::Kind::Signal:
            return signal_name(ended.signal);
        case Ended::Kind::Exit:
            return fmt::format("an exit with status {}", ended.status);
        case Ended::Kind::TimeLimit:
        case Ended::Kind::MemoryLimit:
            return fmt::format("a {}: {}", name_of(ended.kind), ended.text);
        case Ended::Kind::Fault:
        case Ended::Kind::Assertion:
            break;
    }
    return fmt::format("{} in {} ({}:{}): {}", ended.kind == Ended::Kind::Fault ? "a fault" : "a failed assertion",
                       escaped(ended.function), escaped(ended.source), ended.line, escaped(ended.text));
}

std::string sentence_of(const Ended& ended)
{
    switch (ended.kind) {
        case Ended::Kind::TimeLimit:
            return "the upgrade took " + ended.text;
        case Ended::Kind::MemoryLimit:
            return "the upgrade needed " + ended.text;
        default:
            return "the upgrade ended in " + describe(ended);
    }
}

void LogParts::add(std::size_t before, std::size_t after)
{
    ++lines_;
    const std::size_t step = std::max(before, after);  // "update", which is none of them, is the first
    if (parts_.empty() || parts_.back().step != step) {
        parts_.push_back({lines_, step});
    }
}

LibraryVersion version_of(const std::string& library)
{
    constexpr std::string_view kSuffix = ".so.";
    std::error_code failed;
    const std::string file = std::filesystem::canonical(library, failed).filename();
    const std::size_t suffix = file.find(kSuffix);
    return failed || suffix == std::string::npos
               ? LibraryVersion{}
               : LibraryVersion{file.substr(0, suffix), file.substr(suffix + kSuffix.size())};
}

std::string words_of_library(const std::string& library)
{
    const LibraryVersion version = version_of(library);
    return escaped(version.version.empty() ? library : version.name + " " + version.version);
}

std::string what_came_of(const Step& step)
{
    std::string what = fmt::format("{}: {}", step.title, name_of(step.outcome));
    if (step.runs > 1) {
        what += fmt::format(" {} times", grouped(step.runs));
    }
    if (step.calls.failed_writes > 0) {
        what += fmt::format(" ({} failed)", counted(step.calls.failed_writes, {"write", "writes"}));
    }
    if (!step.text.empty()) {
        what += ": " + escaped(step.text);
    }
    return what;
}

}  // namespace bgp_rehearse

#include "report/model.h"

#include <fmt/format.h>

#include <cstring>
#include <filesystem>
#include <string_view>

#include "base/text_escape.h"

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
        case Ended::Kind::Fault:
        case Ended::Kind::Assertion:
            break;
    }
    return fmt::format("{} in {} ({}:{}): {}", ended.kind == Ended::Kind::Fault ? "a fault" : "a failed assertion",
                       escaped(ended.function), escaped(ended.source), ended.line, escaped(ended.text));
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

}  // namespace bgp_rehearse

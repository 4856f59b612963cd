#include "base/progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <utility>

#include "base/standard_output.h"

namespace bgp_rehearse {

namespace {

using std::chrono::steady_clock;
constexpr std::chrono::seconds kQuiet{1};
constexpr std::chrono::milliseconds kBetween{200};
constexpr int kUnknownColumns = 80;

}  // namespace

ProgressLine::ProgressLine(std::string what)
    : what_(std::move(what)), terminal_(isatty(STDERR_FILENO) == 1), next_(steady_clock::now() + kQuiet)
{
}

bool ProgressLine::due()
{
    if (!terminal_ || steady_clock::now() < next_) {
        return false;
    }
    next_ = steady_clock::now() + kBetween;
    return true;
}

// Cut to the terminal's width: a line that runs over cannot be taken away.
void ProgressLine::put(std::string_view line)
{
    winsize size{};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 1;
    print_message(fmt::format("\r{:.{}}\033[K", line, known ? size.ws_col - 1 : kUnknownColumns - 1));
    shown_ = true;
}

void ProgressLine::clear()
{
    if (shown_) {
        print_message("\r\033[K");
    }
    shown_ = false;
}

void ProgressLine::show(std::size_t bytes, std::size_t total)
{
    const double done = static_cast<double>(bytes);
    show([&] {
        return total > 0 ? fmt::format("{} {:.0f} %", what_, 100.0 * done / static_cast<double>(total))
                         : fmt::format("{} {:.0f} MB", what_, done / 1e6);
    });
}

}  // namespace bgp_rehearse

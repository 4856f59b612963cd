#include "base/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

namespace bgp_rehearse {

namespace {

using std::chrono::steady_clock;
constexpr std::chrono::seconds kQuiet{1};
constexpr std::chrono::milliseconds kBetween{200};
constexpr double kMegabyte = 1e6;

}  // namespace

ProgressLine::ProgressLine(std::string what)
    : what_(std::move(what)), terminal_(isatty(STDERR_FILENO) == 1), next_(steady_clock::now() + kQuiet)
{
}

ProgressLine::~ProgressLine()
{
    if (shown_) {
        std::fputs("\r\033[K", stderr);
    }
}

void ProgressLine::show(std::size_t bytes, std::size_t total)
{
    if (!terminal_ || steady_clock::now() < next_) {
        return;
    }
    next_ = steady_clock::now() + kBetween;
    shown_ = true;
    const double done = static_cast<double>(bytes);
    if (total > 0) {
        fmt::print(stderr, "\r{} {:.0f} %\033[K", what_, 100.0 * done / static_cast<double>(total));
    } else {
        fmt::print(stderr, "\r{} {:.0f} MB\033[K", what_, done / kMegabyte);
    }
}

}  // namespace bgp_rehearse

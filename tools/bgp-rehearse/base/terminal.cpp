#include "base/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <charconv>
#include <cstdlib>
#include <string_view>

namespace bgp_rehearse {

namespace {

constexpr std::size_t kUsualColumns = 100;
constexpr std::size_t kFewestColumns = 20;  // below, nothing can be read

std::string_view environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

// 0: it is not a number.
std::size_t number_of(std::string_view text)
{
    std::size_t number = 0;
    const auto [end, failed] = std::from_chars(text.begin(), text.end(), number);
    return failed == std::errc() && end == text.end() ? number : 0;
}

}  // namespace

bool wants_colour(Colour asked)
{
    if (asked != Colour::Auto) {
        return asked == Colour::Always;
    }
    const std::string_view terminal = environment("TERM");
    return environment("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb" && isatty(STDOUT_FILENO) == 1;
}

std::optional<std::size_t> line_columns()
{
    if (isatty(STDOUT_FILENO) != 1) {
        return std::nullopt;
    }
    winsize size{};
    std::size_t columns = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
    if (columns == 0) {
        columns = number_of(environment("COLUMNS"));
    }
    if (columns == 0) {
        columns = kUsualColumns;
    }
    return columns < kFewestColumns ? kFewestColumns : columns;
}

}  // namespace bgp_rehearse

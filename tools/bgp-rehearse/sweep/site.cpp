#include "sweep/site.h"

#include <fmt/format.h>

namespace bgp_rehearse {

namespace {

// Where the key tuple ends that begins at `at`, its closing brace or bracket.
std::size_t end_of_keys(std::string_view path, std::size_t at)
{
    const char closing = path[at] == '{' ? '}' : ']';
    bool quoted = false;
    for (++at; at < path.size(); ++at) {
        if (path[at] == '\\') {
            ++at;
        } else if (path[at] == '"') {
            quoted = !quoted;
        } else if (path[at] == closing && !quoted) {
            break;
        }
    }
    return at;
}

}  // namespace

std::string without_keys(std::string_view path)
{
    std::string text;
    for (std::size_t at = 0; at < path.size(); ++at) {
        text += path[at];
        if (path[at] == '{' || path[at] == '[') {
            at = end_of_keys(path, at);
            text += path[at < path.size() ? at : path.size() - 1];
        }
    }
    return text;
}

std::string Site::name() const
{
    return fmt::format("{}: {}{}{}", step, bgp_platform::capi::name_of(function), path.empty() ? "" : " ", path);
}

}  // namespace bgp_rehearse

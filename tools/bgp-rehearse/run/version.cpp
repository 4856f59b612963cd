#include "run/version.h"

#include <fmt/format.h>

#include <cstdlib>

#include "base/exit_status.h"
#include "base/sha256.h"
#include "base/text_escape.h"
#include "report/model.h"
#include "run/library.h"
#include "schema/schema.h"

namespace bgp_rehearse {

namespace {

// Names and texts, in the order that they are compiled in.
std::string sha256_of_modules()
{
    Sha256 sum;
    for (const bgp_platform::schema::ModuleText& module : bgp_platform::schema::builtin_modules()) {
        for (const std::string_view part : {module.name, module.text}) {
            sum.add(part);
            sum.add({"\0", 1});
        }
    }
    return sum.hex();
}

std::string words_of(const std::string& library)
{
    const std::string words = words_of_library(library);
    return words == library ? words : fmt::format("{} ({})", words, escaped(library));
}

std::string lines_of_library()
{
    const char* const asked = std::getenv("BGP_REHEARSE_LIBRARY");
    try {
        const std::string library = find_library(asked == nullptr ? "" : asked);
        const std::string sum = sha256_of_file(library);
        return fmt::format("library: {}\nlibrary SHA-256: {}\n", words_of(library),
                           sum.empty() ? "unknown, the loader looks for it" : sum);
    } catch (const CommandError& error) {
        return fmt::format("library: {}\n", error.what());
    }
}

}  // namespace

std::string version_text()
{
    return fmt::format("bgp-rehearse {}\n{}schema SHA-256: {}\nzlog: {}", BGP_REHEARSE_VERSION, lines_of_library(),
                       sha256_of_modules(), BGP_REHEARSE_ZLOG);
}

}  // namespace bgp_rehearse

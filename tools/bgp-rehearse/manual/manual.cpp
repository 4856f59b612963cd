#include "manual/manual.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

#include "base/given_value.h"
#include "base/output_file.h"
#include "base/text_escape.h"
#include "manual/completion.h"
#include "manual/page.h"

namespace bgp_rehearse {

namespace {

constexpr char kOption[] = "--generate";

struct File {
    std::string name;
    std::string text;
};
using Files = std::vector<File>;

Files pages(const manual::Command& tree)
{
    Files files;
    for (const manual::Command* command : manual::all_of(tree)) {
        files.push_back({manual::name_of(*command) + ".1", manual::page_of(*command, tree)});
    }
    return files;
}

// The names that shells look for.
const std::vector<std::pair<const char*, Files (*)(const manual::Command&)>> kKinds = {
    {"man", pages},
    {"complete-bash",
     [](const manual::Command& tree) {
         return Files{{"bgp-rehearse", manual::bash_completion(tree)}};
     }},
    {"complete-zsh",
     [](const manual::Command& tree) {
         return Files{{"_bgp-rehearse", manual::zsh_completion(tree)}};
     }},
    {"complete-fish",
     [](const manual::Command& tree) {
         return Files{{"bgp-rehearse.fish", manual::fish_completion(tree)}};
     }},
};

void write(const std::string& folder, const File& file)
{
    OutputFile output(kOption, replaceable_file(kOption, std::filesystem::path(folder) / file.name));
    output.write(file.text);
    output.put_in_place();
}

}  // namespace

std::vector<std::string> kinds_of_manual()
{
    std::vector<std::string> kinds;
    std::transform(kKinds.begin(), kKinds.end(), std::back_inserter(kinds),
                   [](const auto& kind) { return kind.first; });
    return kinds;
}

ExitStatus write_manual(const ManualOptions& options)
{
    const Files files = kKinds[given_word(options.kind, kinds_of_manual())].second(options.tree);
    std::error_code failed;
    std::filesystem::create_directories(options.folder, failed);
    if (failed) {
        throw CommandError(ExitStatus::BadInput,
                           fmt::format("{} {}: {}", kOption, escaped(options.folder), failed.message()));
    }
    for (const File& file : files) {
        write(options.folder, file);
    }
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse

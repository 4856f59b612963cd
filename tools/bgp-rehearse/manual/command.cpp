#include "manual/command.h"

#include <algorithm>

namespace bgp_rehearse::manual {

std::vector<const Command*> all_of(const Command& command)
{
    std::vector<const Command*> all = {&command};
    for (const Command& below : command.commands) {
        const std::vector<const Command*> more = all_of(below);
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

std::string name_of(const Command& command)
{
    std::string name = command.words;
    std::replace(name.begin(), name.end(), ' ', '-');
    return name;
}

std::string last_word_of(const Command& command)
{
    return command.words.substr(command.words.rfind(' ') + 1);
}

std::string words_behind_first(const Command& command)
{
    const std::size_t end = command.words.find(' ');
    return end == std::string::npos ? "" : command.words.substr(end + 1);
}

}  // namespace bgp_rehearse::manual

// Completion for fish, a line for each command and option.
#include <fmt/format.h>

#include "manual/completion.h"

namespace bgp_rehearse::manual {

namespace {

constexpr char kFishBegin[] = R"(# fish completion for bgp-rehearse, written by bgp-rehearse --generate complete-fish

function __bgp_rehearse_in --description 'Whether the command line begins with these words'
    set -l words (commandline -opc)
    set -e words[1]
    test (count $words) -ge (count $argv); or return 1
    for i in (seq (count $argv))
        test "$words[$i]" = "$argv[$i]"; or return 1
    end
end

function __bgp_rehearse_only --description 'Whether the command line has these words alone'
    test (count (commandline -opc)) -eq (math (count $argv) + 1); and __bgp_rehearse_in $argv
end

complete -c bgp-rehearse -f
)";

std::string quoted(const std::string& text)
{
    std::string escaped;
    for (const char one : text) {
        escaped += (one == '\'' || one == '\\' ? "\\" : "") + std::string(1, one);
    }
    return "'" + escaped + "'";
}

std::string list_of(const Values& values)
{
    std::string all;
    if (values.kind == Values::Kind::Words) {
        for (const std::string& word : values.words) {
            all += (all.empty() ? "" : " ") + (word.find(' ') == std::string::npos ? word : '"' + word + '"');
        }
        return fmt::format(" -a '{}'", all);
    }
    for (const std::string& id : values.words) {
        for (const char* level : {"note", "review", "stop"}) {
            all += fmt::format("{}{}={}", all.empty() ? "" : " ", id, level);
        }
    }
    return all.empty() ? "" : fmt::format(" -a '{}'", all);
}

std::string fish_value(const Option& option)
{
    if (option.value.empty() || option.may_be_alone) {
        return "";
    }
    return option.values.kind == Values::Kind::Files ? " -r -F" : " -x" + list_of(option.values);
}

std::string fish_names(const Option& option)
{
    std::string names;
    for (const std::string& name : option.names) {
        names += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    return names;
}

std::string lines_of(const Command& command)
{
    const std::string words = words_behind_first(command);
    const std::string only =
        fmt::format("complete -c bgp-rehearse -n '__bgp_rehearse_only{}{}'", words.empty() ? "" : " ", words);
    const std::string in =
        words.empty() ? only : fmt::format("complete -c bgp-rehearse -n '__bgp_rehearse_in {}'", words);
    std::string lines = "\n";
    for (const Command& below : command.commands) {
        lines += fmt::format("{} -a {} -d {}\n", only, last_word_of(below), quoted(below.text));
    }
    for (const Option& option : command.options) {
        lines += fmt::format("{}{}{} -d {}\n", in, fish_names(option), fish_value(option), quoted(option.text));
    }
    for (const Option& argument : command.arguments) {
        lines += in + (argument.values.kind == Values::Kind::Files ? " -F" : list_of(argument.values)) + "\n";
    }
    return lines;
}

}  // namespace

std::string fish_completion(const Command& top)
{
    std::string text = kFishBegin;
    for (const Command* command : all_of(top)) {
        text += lines_of(*command);
    }
    return text;
}

}  // namespace bgp_rehearse::manual

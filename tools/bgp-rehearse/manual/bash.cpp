// Completion for bash, one function. It reads the line itself, as bash takes words apart at "=".
#include <fmt/format.h>

#include <map>

#include "manual/completion.h"

namespace bgp_rehearse::manual {

namespace {

constexpr char kBashBegin[] = R"(# bash completion for bgp-rehearse, written by bgp-rehearse --generate complete-bash

# Offers those of the words that the value begins.
_bgp_rehearse_offer()
{
    local prefix=
    [[ $option != *= ]] || prefix=$option
    local IFS=$'\n'
    mapfile -t COMPREPLY < <(compgen -P "$prefix" -W "$1" -- "$value")
    if [[ $COMP_WORDBREAKS == *=* && $current == *=* ]]; then
        COMPREPLY=("${COMPREPLY[@]#"${current%"${current##*=}"}"}")
    fi
    COMPREPLY=("${COMPREPLY[@]// /\\ }")
}

_bgp_rehearse_offer_severities()
{
    if [[ $value == *=* ]]; then
        _bgp_rehearse_offer "${value%%=*}"$'=note\n'"${value%%=*}"$'=review\n'"${value%%=*}=stop"
    else
        _bgp_rehearse_offer "${1//$'\n'/$'=\n'}="
        compopt -o nospace
    fi
}

_bgp_rehearse_offer_files()
{
    if [[ $option == *= && $COMP_WORDBREAKS != *=* ]]; then
        mapfile -t COMPREPLY < <(compgen -P "$option" -f -- "$value")
    else
        compopt -o default
    fi
}

_bgp_rehearse()
{
    local -a words
    local command='' current option='' value
    read -a words <<<"${COMP_LINE:0:COMP_POINT}."  # by the full stop a word that is not begun yet is one
    current=${words[-1]%.}
    value=$current
    COMPREPLY=()
    if ((${#words[@]} > 2)); then
        command=${words[1]}
        [[ ${words[-2]} != -* ]] || option=${words[-2]}
    fi
)";

constexpr char kOption[] = R"(    if [[ $current == --*=* ]]; then
        option=${current%%=*}= value=${current#*=}
    fi
    case "$command $option" in
)";

constexpr char kNoValue[] = R"(        *)
            option=
            if [[ $current == -* ]]; then
                _bgp_rehearse_offer_names "$command"
            else
                _bgp_rehearse_offer_argument "$command"
            fi
            ;;
    esac
}

)";

// A line a word, in $'...'; blanks in a word are escaped for compgen.
std::string lines_of(const std::vector<std::string>& words)
{
    std::string lines = "$'";
    for (const std::string& word : words) {
        lines += lines.back() == '\'' ? "" : "\\n";
        for (const char one : word) {
            lines += one == ' ' ? "\\\\ " : std::string(1, one);
        }
    }
    return lines + "'";
}

std::string offer(const Values& values)
{
    switch (values.kind) {
        case Values::Kind::Words:
            return fmt::format("_bgp_rehearse_offer {}", lines_of(values.words));
        case Values::Kind::Severities:
            return fmt::format("_bgp_rehearse_offer_severities {}", lines_of(values.words));
        case Values::Kind::Files:
            return "_bgp_rehearse_offer_files";
        case Values::Kind::Any:
            break;
    }
    return ":";
}

// The patterns of the options whose values are alike.
using Patterns = std::map<std::string, std::vector<std::string>>;

void add_patterns(const Command& command, Patterns* patterns)
{
    for (const Option& option : command.options) {
        for (const std::string& name : option.value.empty() ? std::vector<std::string>() : option.names) {
            std::vector<std::string>& alike = (*patterns)[offer(option.values)];
            if (!option.may_be_alone) {
                alike.push_back(fmt::format("'{} {}'", words_behind_first(command), name));
            }
            if (name.compare(0, 2, "--") == 0) {
                alike.push_back(fmt::format("'{} {}='", words_behind_first(command), name));
            }
        }
    }
}

std::string bash_names(const Command& command)
{
    std::vector<std::string> all;
    for (const Option& option : command.options) {
        all.insert(all.end(), option.names.begin(), option.names.end());
    }
    return fmt::format("        '{}') _bgp_rehearse_offer {} ;;\n", words_behind_first(command), lines_of(all));
}

std::string argument(const Command& command)
{
    std::vector<std::string> below;
    for (const Command& one : command.commands) {
        below.push_back(last_word_of(one));
    }
    const std::string what = !below.empty()              ? offer({Values::Kind::Words, below})
                             : command.arguments.empty() ? ":"
                                                         : offer(command.arguments.back().values);
    return fmt::format("        '{}') {} ;;\n", words_behind_first(command), what);
}

// A function that does for each command what `what` says.
template <typename What>
std::string by_command(const char* name, const Command& top, What what)
{
    std::string text = fmt::format("{}()\n{{\n    case $1 in\n", name);
    for (const Command* command : all_of(top)) {
        text += what(*command);
    }
    return text + "    esac\n}\n\n";
}

}  // namespace

std::string bash_completion(const Command& top)
{
    std::string text = kBashBegin;
    Patterns patterns;
    for (const Command* command : all_of(top)) {
        add_patterns(*command, &patterns);
        if (!command->commands.empty() && command != &top) {
            text += fmt::format(
                "    if [[ $command == {} && ${{#words[@]}} -gt 3 ]]; then\n"
                "        command+=\" ${{words[2]}}\"\n    fi\n",
                words_behind_first(*command));
        }
    }
    text += kOption;
    for (const auto& [what, alike] : patterns) {
        text += fmt::format("        {})\n            {}\n            ;;\n", fmt::join(alike, " | "), what);
    }
    text += kNoValue;
    text += by_command("_bgp_rehearse_offer_names", top, bash_names);
    text += by_command("_bgp_rehearse_offer_argument", top, argument);
    return text + "complete -F _bgp_rehearse bgp-rehearse\n";
}

}  // namespace bgp_rehearse::manual

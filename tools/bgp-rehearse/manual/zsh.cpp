// Completion for zsh, by its _arguments: a function for each command.
#include <fmt/format.h>

#include "manual/completion.h"

namespace bgp_rehearse::manual {

namespace {

// In single quotes, where _arguments takes these characters for its own.
std::string escaped(const std::string& text, const std::string& special)
{
    std::string all;
    for (const char one : text) {
        all += one == '\'' ? "'\\''" : std::string(special.find(one) == std::string::npos ? "" : "\\") + one;
    }
    return all;
}

std::string explained(const std::string& text)
{
    return escaped(text, "[]:\\");
}

std::string words_of(const std::vector<std::string>& words)
{
    std::string all;
    for (const std::string& word : words) {
        all += (all.empty() ? "" : " ") + escaped(word, " ");
    }
    return all;
}

std::string action(const Values& values)
{
    switch (values.kind) {
        case Values::Kind::Words:
            return fmt::format("({})", words_of(values.words));
        case Values::Kind::Severities:
            return "_bgp_rehearse_severities";
        case Values::Kind::Files:
            return "_files";
        case Values::Kind::Any:
            break;
    }
    return " ";
}

// One name of an option as _arguments takes it.
std::string named_option(const Option& option, const std::string& name)
{
    std::string text = option.repeated ? "*" : fmt::format("({})", fmt::join(option.names, " "));
    const bool with_value = !option.value.empty();
    text += name + (!with_value ? "" : option.may_be_alone ? "=-" : name[1] == '-' ? "=" : "+");
    text += "[" + explained(option.text) + "]";
    if (with_value) {
        text +=
            fmt::format("{}{}:{}", option.may_be_alone ? "::" : ":", escaped(option.value, ":"), action(option.values));
    }
    return fmt::format(" \\\n        '{}'", text);
}

std::string all_arguments(const Command& command)
{
    std::string text;
    for (const Option& option : command.options) {
        for (const std::string& name : option.names) {
            text += named_option(option, name);
        }
    }
    for (const Option& argument : command.arguments) {
        text += fmt::format(" \\\n        '{}:{}:{}'",
                            argument.repeated   ? "*"
                            : argument.required ? ""
                                                : ":",
                            escaped(argument.value, ":"), action(argument.values));
    }
    return text;
}

// "_bgp_rehearse_fleet_run"
std::string function_of(const Command& command)
{
    std::string name = "_" + name_of(command);
    for (char& one : name) {
        one = one == '-' ? '_' : one;
    }
    return name;
}

std::string function_of_words(const Command& command)
{
    return fmt::format("{}()\n{{\n    _arguments -s{}\n}}\n\n", function_of(command), all_arguments(command));
}

std::string function_of_commands(const Command& command)
{
    std::string list;
    std::string calls;
    for (const Command& below : command.commands) {
        list += fmt::format(" \\\n        '{}:{}'", last_word_of(below), explained(below.text));
        calls += fmt::format("        {}) {} ;;\n", last_word_of(below), function_of(below));
    }
    const std::string name = function_of(command);
    return fmt::format(
        "{0}_commands()\n{{\n    local -a commands=({1})\n    _describe command commands\n}}\n\n"
        "{0}()\n{{\n    local context state state_descr line\n    local -A opt_args\n"
        "    _arguments -C{2} \\\n        ':command:{0}_commands' \\\n        '*::: :->below'\n"
        "    [[ $state == below ]] || return\n"
        "    words=(\"$line[1]\" \"${{words[@]}}\")\n    ((CURRENT += 1))\n"
        "    case $line[1] in\n{3}    esac\n}}\n\n",
        name, list, all_arguments(command), calls);
}

std::string severities(const Command& top)
{
    for (const Command* command : all_of(top)) {
        for (const Option& option : command->options) {
            if (option.values.kind == Values::Kind::Severities) {
                return fmt::format(
                    "_bgp_rehearse_severities()\n{{\n    if compset -P '*='; then\n"
                    "        compadd note review stop\n    else\n        compadd -S = -- {}\n    fi\n}}\n\n",
                    fmt::join(option.values.words, " "));
            }
        }
    }
    return "";
}

}  // namespace

std::string zsh_completion(const Command& top)
{
    std::string text =
        "#compdef bgp-rehearse\n# zsh completion for bgp-rehearse, written by bgp-rehearse --generate "
        "complete-zsh\n\n" +
        severities(top);
    for (const Command* command : all_of(top)) {
        text += command->commands.empty() ? function_of_words(*command) : function_of_commands(*command);
    }
    return text + "_bgp_rehearse \"$@\"\n";
}

}  // namespace bgp_rehearse::manual

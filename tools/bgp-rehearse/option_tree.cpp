#include "option_tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include "findings/page.h"
#include "generate/healthy/flaw.h"

namespace bgp_rehearse {

namespace {

using manual::Command;
using manual::Option;
using manual::Values;

std::vector<std::string> ids_of_findings()
{
    std::vector<std::string> ids;
    for (const FindingSection& section : finding_sections(builtin_page())) {
        ids.emplace_back(section.id);
    }
    return ids;
}

std::vector<std::string> words_between(const std::string& text, char sign)
{
    std::vector<std::string> words;
    std::istringstream stream(text);
    for (std::string word; std::getline(stream, word, sign);) {
        words.push_back(word);
    }
    return words;
}

// What goes where help has this name of a value.
Values values_named(const std::string& name)
{
    using Kind = Values::Kind;
    static const std::set<std::string> files = {"FILE", "PATH", "CONFIG.xml", "OUT.xml",
                                                "PLAN", "PART", "FLEET.db",   "OTHER.db"};
    static const std::set<std::string> any = {"",     "N",      "TIME",    "SIZE",          "DURATION",
                                              "NAME", "REASON", "KEYPATH", "ADDR[,ADDR...]"};
    static const std::map<std::string, Values> known = {{"ID", {Kind::Words, ids_of_findings()}},
                                                        {"ID=LEVEL", {Kind::Severities, ids_of_findings()}},
                                                        {"ROLE", {Kind::Words, bgp_generator::healthy::role_names()}},
                                                        {"FLAW", {Kind::Words, bgp_generator::healthy::flaw_names()}}};
    const auto found = known.find(name);
    if (found != known.end()) {
        return found->second;
    }
    if (name.find('|') != std::string::npos) {
        return {Kind::Words, words_between(name, '|')};
    }
    if (files.count(name) == 0 && any.count(name) == 0) {
        throw std::logic_error(fmt::format("option_tree.cpp does not know what {} stands for", name));
    }
    return {files.count(name) > 0 ? Kind::Files : Kind::Any, {}};
}

std::vector<std::string> names_of(const CLI::Option& option)
{
    std::vector<std::string> names;
    for (const std::string& name : option.get_snames()) {
        names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

Option option_of(const CLI::Option& given)
{
    constexpr std::string_view kAlone = "[=";
    Option option;
    option.names = names_of(given);
    option.value = given.get_positional() ? given.get_name(true, false) : given.get_option_text();
    if (option.value.compare(0, kAlone.size(), kAlone) == 0) {
        option.value = option.value.substr(kAlone.size(), option.value.size() - kAlone.size() - 1);
        option.may_be_alone = true;
    }
    option.required = given.get_required();
    option.repeated =
        given.get_expected_max() > 1 || given.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    option.text = given.get_description();
    for (const CLI::Option* other : given.get_needs()) {
        option.text += fmt::format("; only with {}", other->get_name());
    }
    option.variable = given.get_envname();
    option.values = values_named(option.value);
    return option;
}

// Takes the exit statuses, lines of number and text below their title, out of what help tells last.
void take_footer(const std::string& footer, Command* command)
{
    bool statuses = false;
    for (const std::string& line : words_between(footer, '\n')) {
        if (line == "Exit status:") {
            statuses = true;
        } else if (statuses) {
            std::istringstream words(line);
            manual::Status status;
            std::getline(words >> status.number >> std::ws, status.text);
            command->statuses.push_back(status);
        } else {
            command->notes += line + "\n";
        }
    }
}

Command command_of(const CLI::App& app, const std::string& above, const std::vector<manual::Status>& statuses)
{
    Command command;
    command.words = above + app.get_name();
    command.text = app.get_description();
    take_footer(app.get_footer(), &command);
    if (command.statuses.empty()) {
        command.statuses = statuses;
    }
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_group().empty()) {
            (option->get_positional() ? command.arguments : command.options).push_back(option_of(*option));
        }
    }
    for (const CLI::App* below : app.get_subcommands([](const CLI::App* /*all*/) { return true; })) {
        command.commands.push_back(command_of(*below, command.words + " ", command.statuses));
    }
    return command;
}

}  // namespace

manual::Command option_tree(const CLI::App& top)
{
    return command_of(top, "", {});
}

}  // namespace bgp_rehearse

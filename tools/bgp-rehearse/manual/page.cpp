#include "manual/page.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <ctime>
#include <set>
#include <sstream>
#include <vector>

#include "manual/mdoc.h"

namespace bgp_rehearse::manual {

namespace {

struct Section {
    std::string title;  // empty for what stands before the first
    std::string text;
};

// The title is the page's own.
std::vector<Section> sections_of(std::string_view markdown)
{
    constexpr std::string_view kHeading = "## ";
    std::vector<Section> sections = {{}};
    std::istringstream lines{std::string(markdown)};
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        if (line.compare(0, kHeading.size(), kHeading) == 0) {
            sections.push_back({line.substr(kHeading.size()), ""});
        } else if (!line.empty() || !sections.back().text.empty()) {
            sections.back().text += line + "\n";
        }
    }
    return sections;
}

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char one) { return static_cast<char>(std::toupper(static_cast<unsigned char>(one))); });
    return text;
}

std::string text_of(const std::vector<Section>& sections, const std::string& title)
{
    const auto found =
        std::find_if(sections.begin(), sections.end(), [&](const Section& one) { return one.title == title; });
    return found == sections.end() ? "" : found->text;
}

std::string section(const std::string& title, const std::string& content)
{
    return content.empty() ? "" : ".Sh " + upper(title) + "\n" + content;
}

std::string date()
{
    const char* const seconds = std::getenv("SOURCE_DATE_EPOCH");
    if (seconds == nullptr || *seconds == '\0') {
        return "";
    }
    const std::time_t time = std::strtoll(seconds, nullptr, 10);
    std::tm utc{};
    gmtime_r(&time, &utc);
    char month[16] = "";
    std::strftime(month, sizeof month, "%B", &utc);
    return fmt::format(" {} {}, {}", month, utc.tm_mday, 1900 + utc.tm_year);
}

std::string sentence(std::string text)
{
    return mdoc_lines(text.empty() || text.back() == '.' ? text : text + ".");
}

std::string with_first(std::string text, int (*changed)(int))
{
    text.front() = static_cast<char>(changed(static_cast<unsigned char>(text.front())));
    return text;
}

// As it stands behind a name and a dash.
std::string in_mid_sentence(const std::string& text)
{
    return mdoc_words(with_first(text.substr(0, text.size() - (text.back() == '.' ? 1 : 0)), std::tolower));
}

// What stands for a value, as arguments of a macro.
std::string value_of(const Option& option)
{
    std::string value = mdoc_words(option.value);
    const char* macro = "Ar";
    if (option.value.find('|') != std::string::npos) {
        macro = "Cm";
        for (std::size_t at = 0; (at = value.find('|', at)) != std::string::npos; at += 3) {
            value.replace(at, 1, " | ");
        }
    }
    return fmt::format("{} {}", macro, value);
}

// "Fl o , Fl -output Ar OUT.xml"
std::string option_macros(const Option& option)
{
    std::string macros;
    for (const std::string& name : option.names) {
        macros += (macros.empty() ? "Fl " : " , Fl ") + name.substr(1);
    }
    return option.value.empty()  ? macros
           : option.may_be_alone ? macros + " Ns Op = Ns " + value_of(option)
                                 : macros + " " + value_of(option);
}

std::string synopsis_of(const Command& command)
{
    std::string text = ".Nm " + command.words + "\n";
    if (!command.commands.empty()) {
        return text + ".Ar command\n.Op Ar argument ...\n";
    }
    text += ".Op Ar option ...\n";
    for (const Option& argument : command.arguments) {
        text += fmt::format(argument.required ? ".Ar {}{}\n" : ".Op Ar {}{}\n", argument.value,
                            argument.repeated ? " ..." : "");
    }
    for (const Option& option : command.options) {
        if (option.required) {
            text += fmt::format(".Fl {} {}\n", option.names.front().substr(1), value_of(option));
        }
    }
    return text;
}

std::string synopsis(const Command& command)
{
    if (command.commands.empty()) {
        return synopsis_of(command);
    }
    std::string text;
    for (const Command& below : command.commands) {
        text += synopsis_of(below);
    }
    return text;
}

std::string commands(const Command& command)
{
    std::string list;
    for (const Command& below : command.commands) {
        list += fmt::format(".It Xr {} 1\n{}", name_of(below), sentence(below.text));
    }
    return list.empty() ? "" : ".Bl -tag -width Ds\n" + list + ".El\n";
}

std::string options(const Command& command)
{
    std::string list;
    for (const Option& argument : command.arguments) {
        list += fmt::format(".It Ar {}\n{}", argument.value, sentence(argument.text));
    }
    for (const Option& option : command.options) {
        list += fmt::format(".It {}\n{}", option_macros(option), sentence(option.text));
    }
    return ".Bl -tag -width Ds\n" + list + ".El\n";
}

// Lines as help has them: "  name  text", which goes on in lines set in further; titles that end in a colon; sentences.
std::string notes(const Command& command)
{
    constexpr std::size_t kName = 2;
    std::string markdown;
    std::istringstream lines(command.commands.empty() ? command.notes : "");
    for (std::string line; std::getline(lines, line);) {
        const std::size_t first = line.find_first_not_of(' ');
        if (first == std::string::npos) {
            markdown += "\n";
        } else if (first == kName) {
            const std::size_t end = line.find(' ', first);
            markdown += fmt::format("- `{}`: {}\n", line.substr(first, end - first),
                                    line.substr(line.find_first_not_of(' ', end)));
        } else if (first > kName) {
            markdown += "  " + line.substr(first) + "\n";
        } else {
            markdown += line.back() == ':' ? "\n" + line + "\n\n" : line + "\n";
        }
    }
    return markdown.empty() ? "" : ".Pp\n" + mdoc_blocks(markdown);
}

bool reads_files(const Command& command)
{
    const std::vector<const Command*> all = all_of(command);
    return std::any_of(all.begin(), all.end(), [](const Command* one) {
        return std::any_of(one->options.begin(), one->options.end(),
                           [](const Option& option) { return option.names.back() == "--config"; });
    });
}

// What all pages have, and those of commands that read options from files.
std::string shared(const Command& command, const std::string& title)
{
    const std::vector<Section> sections = sections_of(prose_of("shared"));
    return (reads_files(command) ? text_of(sections, title + " of options in files") : "") + text_of(sections, title);
}

// Of a command that has others below it, their variables.
std::string variables(const Command& command)
{
    std::string markdown;
    std::set<std::string> told;
    for (const Command* one : all_of(command)) {
        for (const Option& option : one->options) {
            if (!option.variable.empty() && told.insert(option.variable).second) {
                markdown +=
                    fmt::format("- `{}`: As `{}`, where that is not given.\n", option.variable, option.names.back());
            }
        }
    }
    return markdown;
}

std::string statuses(const Command& command)
{
    if (command.statuses.empty()) {
        return "The page of each command has its exit statuses.\n";
    }
    std::string list;
    for (const Status& status : command.statuses) {
        list += fmt::format(".It {}\n{}", status.number, sentence(with_first(status.text, std::toupper)));
    }
    return ".Bl -tag -width Ds\n" + list + ".El\n";
}

std::string see_also(const Command& command, const Command& top)
{
    std::set<std::string> names;
    for (const Command* other : all_of(top)) {
        if (other->words != command.words) {
            names.insert(name_of(*other));
        }
    }
    std::string list;
    for (const std::string& name : names) {
        list += fmt::format(".Xr {} 1{}\n", name, name == *names.rbegin() ? "" : " ,");
    }
    return list;
}

}  // namespace

std::string page_of(const Command& command, const Command& top)
{
    const std::vector<Section> own = sections_of(prose_of(name_of(command)));
    std::string page = fmt::format(".\\\" Written by {} {} --generate man.\n.Dd{}\n.Dt {} 1\n.Os\n", top.words,
                                   BGP_REHEARSE_VERSION, date(), upper(name_of(command)));
    page += section("Name", fmt::format(".Nm {}\n.Nd {}\n", name_of(command), in_mid_sentence(command.text)));
    page += section("Synopsis", synopsis(command));
    page += section("Description", mdoc_blocks(own.front().text));
    page += section("Commands", commands(command));
    page += section("Options", options(command) + notes(command));
    for (const Section& one : own) {
        if (!one.title.empty() && one.title != "Examples") {
            page += section(one.title, mdoc_blocks(one.text));
        }
    }
    page += section("Environment", mdoc_blocks(variables(command) + shared(command, "Environment")));
    page += section("Files", mdoc_blocks(shared(command, "Files")));
    page += section("Exit status", statuses(command));
    page += section("Examples", mdoc_blocks(text_of(own, "Examples")));
    return page + section("See also", see_also(command, top));
}

}  // namespace bgp_rehearse::manual

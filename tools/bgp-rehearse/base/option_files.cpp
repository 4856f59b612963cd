#include "base/option_files.h"

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <vector>

#include "base/nearest.h"

namespace bgp_rehearse {

namespace {

constexpr char kConfig[] = "--config";

// Whose file it is: in the user's own, which all commands share, no option stands before the first section.
enum class FileOf { Command, User };

std::vector<std::string> names_of(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::App* at = &command; at->get_parent() != nullptr; at = at->get_parent()) {
        names.insert(names.begin(), at->get_name());
    }
    return names;
}

// The command that a section is for; throws CLI::ConfigError where there is none.
const CLI::App& command_of(const CLI::App& top, const std::vector<std::string>& section, const std::string& file)
{
    const CLI::App* command = &top;
    for (const std::string& name : section) {
        const std::vector<const CLI::App*> found =
            command->get_subcommands([&name](const CLI::App* one) { return one->get_name() == name; });
        if (found.empty()) {
            throw CLI::ConfigError(fmt::format("{}: [{}] is no command{}", file, fmt::join(section, "."),
                                               did_you_mean(name, names_of_commands(*command))));
        }
        command = found.front();
    }
    return *command;
}

const CLI::App& top_of(const CLI::App& command)
{
    return command.get_parent() == nullptr ? command : top_of(*command.get_parent());
}

// Whether an item is one of this command's options. Throws CLI::ConfigError for one that can be no command's.
bool is_for(const CLI::App& command, const CLI::ConfigItem& item, const std::string& file, FileOf whose)
{
    const bool border = item.name == "++" || item.name == "--";  // of a section
    if (item.parents.empty() && whose == FileOf::User) {
        throw CLI::ConfigError(fmt::format("{}: {} stands in no section: put it below one such as [{}]", file,
                                           item.name, fmt::join(names_of(command), ".")));
    }
    const CLI::App& named = command_of(top_of(command), item.parents, file);
    if (!item.parents.empty() && !border && named.get_option_no_throw(kConfig) == nullptr) {
        throw CLI::ConfigError(fmt::format("{}: no file can give options of {}", file, words_of_command(named)));
    }
    return !border && (item.parents.empty() || &named == &command);
}

// What the command line and the environment say: options with their values.
using Given = std::map<CLI::Option*, std::vector<std::string>>;

Given given_to(CLI::App* command)
{
    Given given;
    for (CLI::Option* option : command->get_options()) {
        if (option->count() > 0) {
            given[option] = option->results();
        }
    }
    return given;
}

bool may_be_given_again(const CLI::Option& option)
{
    return option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
}

// Here and now, so that what is wrong with it is told with the file.
void take_item(const CLI::ConfigItem& item, const std::string& file, CLI::Option* option)
{
    option->clear();
    const bool flag = option->get_expected_min() == 0;
    try {
        for (const std::string& value : item.inputs) {
            option->add_result(flag ? option->get_flag_value(item.name, value == "true" ? "" : value) : value);
        }
        option->run_callback();
    } catch (const CLI::ParseError& wrong) {
        throw CLI::ConfigError(fmt::format("{}: {}", file, wrong.what()));
    }
}

void take_file(CLI::App* command, const std::string& file, FileOf whose, const Given& given)
{
    for (const CLI::ConfigItem& item : CLI::ConfigTOML().from_file(file)) {
        if (!is_for(*command, item, file, whose)) {
            continue;
        }
        CLI::Option* const option = command->get_option_no_throw("--" + item.name);
        if (option == nullptr || !option->get_configurable()) {
            const std::string name = option == nullptr ? "--" + item.name : std::string();
            throw CLI::ConfigError(fmt::format("{}: {} is no option that a file can give{}", file, item.fullname(),
                                               did_you_mean(name, names_of_options(*command))));
        }
        if (given.count(option) == 0 || may_be_given_again(*option)) {
            take_item(item, file, option);
        }
    }
}

// Empty where the environment tells of no home.
std::filesystem::path users_own()
{
    const char* const folder = std::getenv("XDG_CONFIG_HOME");
    const char* const home = std::getenv("HOME");
    const std::filesystem::path name = "bgp-rehearse.toml";
    if (folder != nullptr && std::filesystem::path(folder).is_absolute()) {
        return folder / name;
    }
    return home != nullptr && *home != '\0' ? home / (".config" / name) : std::filesystem::path();
}

// What counts more is taken later.
void take_files(CLI::App* command, const std::string& file)
{
    const CLI::Option* const help = command->get_help_ptr();
    if (!command->parsed() || (help != nullptr && help->count() > 0)) {
        return;
    }
    const Given given = given_to(command);
    std::error_code none;
    if (const std::filesystem::path own = users_own(); std::filesystem::exists(own, none)) {
        take_file(command, own, FileOf::User, given);
    }
    if (!file.empty()) {
        std::string name = file;
        if (const std::string wrong = CLI::ExistingFile(name); !wrong.empty()) {
            throw CLI::ValidationError(kConfig, wrong);
        }
        take_file(command, file, FileOf::Command, given);
    }
    for (const auto& [option, values] : given) {
        if (option->get_configurable() && may_be_given_again(*option) && option->results() != values) {
            option->clear();
            option->add_result(values);
        }
    }
}

}  // namespace

// Comes before the other options, as theirs are read in their order; and is read when it is not given, too.
CLI::App* add_command(CLI::App* app, const std::string& name, const std::string& what)
{
    CLI::App* const command = app->add_subcommand(name, what);
    command
        ->add_option_function<std::string>(
            kConfig, [command](const std::string& file) { take_files(command, file); },
            "Read options from a file, a line for each: library = \"libbgp_update.so\"")
        ->force_callback()
        ->configurable(false)
        ->envname("BGP_REHEARSE_CONFIG")
        ->option_text("FILE");
    return command;
}

std::string words_of_command(const CLI::App& command)
{
    return fmt::format("{}", fmt::join(names_of(command), " "));
}

std::vector<std::string> names_of_commands(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App* /*all*/) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

std::vector<std::string> names_of_options(const CLI::App& command)
{
    std::vector<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            if (!option->get_group().empty()) {  // the others are not shown
                names.push_back("--" + name);
            }
        }
    }
    return names;
}

}  // namespace bgp_rehearse

// Kinds of options of a command line, for all commands: what their values may be, and how a wrong one is told.
#pragma once

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/given_value.h"

namespace bgp_rehearse {

// An option whose value `take` reads, or throws std::invalid_argument.
template <typename Take>
CLI::Option* add_value(CLI::App* command, const char* name, const std::string& value, const std::string& what,
                       Take take)
{
    const auto read = [=](const std::string& text) {
        try {
            take(text);
        } catch (const std::invalid_argument& wrong) {
            throw CLI::ValidationError(name, wrong.what());
        }
    };
    return command->add_option_function<std::string>(name, read, what)->option_text(value);
}

// The same, of an option that may be given again.
template <typename Take>
CLI::Option* add_values(CLI::App* command, const std::string& name, const std::string& value, const std::string& what,
                        Take take)
{
    const auto read = [=](const std::vector<std::string>& texts) {
        try {
            std::for_each(texts.begin(), texts.end(), take);
        } catch (const std::invalid_argument& wrong) {
            throw CLI::ValidationError(name, wrong.what());
        }
    };
    return command->add_option_function<std::vector<std::string>>(name, read, what)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->option_text(value);
}

template <typename Number>
void add_number(CLI::App* command, const char* name, Number* number, uint64_t most, const std::string& what,
                uint64_t least = 0)
{
    add_value(command, name, "N", fmt::format("{} (default: {})", what, *number),
              [=](const std::string& text) { *number = static_cast<Number>(given_number(text, least, most)); });
}

// How much is done at a time. Its usual value is this machine's, which help does not tell: it is the same everywhere.
template <typename Number>
void add_jobs(CLI::App* command, Number* jobs, uint64_t most, const std::string& what)
{
    add_value(command, "--jobs", "N", what + " (default: as many as the machine has processors)",
              [=](const std::string& text) { *jobs = static_cast<Number>(given_number(text, 1, most)); });
}

// One of the words, which stand in the order of the enumeration.
template <typename Choice>
void add_choice(CLI::App* command, const char* name, Choice* choice, const std::vector<std::string>& words,
                const std::string& what)
{
    add_value(command, name, fmt::format("{}", fmt::join(words, "|")),
              fmt::format("{} (default: {})", what, words[static_cast<std::size_t>(*choice)]),
              [=](const std::string& text) { *choice = static_cast<Choice>(given_word(text, words)); });
}

inline void refuse_empty(const CLI::Option& option, const std::string& name)
{
    if (option.count() > 0 && option.as<std::string>().empty()) {
        throw CLI::ValidationError(name, "a file name is missing");
    }
}

}  // namespace bgp_rehearse

// What the command line offers, as data: the manual pages and the completion of shells are made of it.
#pragma once

#include <string>
#include <vector>

namespace bgp_rehearse::manual {

// What a value may be: one of the words, a file, a finding with its severity ("again=note"), or anything else.
struct Values {
    enum class Kind { Any, Words, Files, Severities } kind = Kind::Any;
    std::vector<std::string> words;  // of Severities: the ids of the findings
};

// An option or an argument.
struct Option {
    std::vector<std::string> names;  // "-o", "--output"; of an argument none
    std::string value;               // as help names it: "FILE", "auto|always|never"; empty where it takes none
    bool may_be_alone = false;       // the value may be left out, and stands behind "="
    bool required = false;
    bool repeated = false;
    std::string text;
    std::string variable;  // of the environment, which gives it as well; may be empty
    Values values;
};

struct Status {
    std::string number;
    std::string text;
};

struct Command {
    std::string words;  // as it is typed: "bgp-rehearse fleet run"
    std::string text;
    std::vector<Option> arguments;
    std::vector<Option> options;
    std::string notes;  // what help tells behind the options, without the exit statuses; lines that stay
    std::vector<Status> statuses;
    std::vector<Command> commands;
};

// The command and all below it, in the order of help.
std::vector<const Command*> all_of(const Command& command);

// "bgp-rehearse-fleet-run"
std::string name_of(const Command& command);

// "run" of "bgp-rehearse fleet run"
std::string last_word_of(const Command& command);

// "fleet run" of "bgp-rehearse fleet run"
std::string words_behind_first(const Command& command);

}  // namespace bgp_rehearse::manual

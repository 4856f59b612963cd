#include "run/shared_options.h"

#include <fmt/format.h>

#include <limits>
#include <stdexcept>

#include "base/given_value.h"
#include "base/option_kinds.h"

namespace bgp_rehearse {

namespace {

constexpr uint32_t kMost32 = std::numeric_limits<uint32_t>::max();

std::pair<std::string, std::string> given_severity(const std::string& text)
{
    const std::size_t sign = text.find('=');
    if (sign == 0 || sign == std::string::npos) {
        throw std::invalid_argument(fmt::format("\"{}\" is not ID=LEVEL", text));
    }
    const std::string level = text.substr(sign + 1);
    given_word(level, {"note", "review", "stop"});
    return {text.substr(0, sign), level};
}

}  // namespace

CLI::Option* add_library(CLI::App* command, std::string* library)
{
    return command->add_option("--library", *library, "The upgrade library (default: this build's libbgp_update.so)")
        ->envname("BGP_REHEARSE_LIBRARY")
        ->option_text("PATH");
}

CLI::Option* add_facts(CLI::App* command, std::string* facts)
{
    return command->add_option("--facts", *facts, "Take interfaces and profile from a file of devices (CSV or JSON)")
        ->envname("BGP_REHEARSE_FACTS")
        ->option_text("FILE");
}

void add_device(CLI::App* command, DeviceOptions* device)
{
    add_value(command, "--interfaces", "ADDR[,ADDR...]",
              "The device's IPv4 interface addresses, in order (default: 127.0.0.1)",
              [device](const std::string& text) {
                  device->interfaces = given_addresses(text, ",");
                  device->interfaces_known = true;
              });
    add_value(command, "--user-profile", "N", "The user profile of the forwarding resources (default: 0)",
              [device](const std::string& text) {
                  device->user_profile = static_cast<uint32_t>(given_number(text, 0, kMost32));
                  device->user_profile_known = true;
              });
    add_number(command, "--max-entries", &device->max_entries, kMost32,
               "The most entries that a configuration may have");
}

void add_max_errors(CLI::App* command, DeviceOptions* device)
{
    add_number(command, "--max-errors", &device->max_errors, kMost32, "The most errors of a configuration to show", 1);
}

void add_severities(CLI::App* command, std::vector<std::pair<std::string, std::string>>* severities)
{
    add_values(command, "--severity", "ID=LEVEL", "Make a finding a note, a review or a stop; may be given again",
               [severities](const std::string& text) { severities->push_back(given_severity(text)); });
}

void add_duration(CLI::App* command, const char* name, std::optional<Duration>* duration, const std::string& what)
{
    add_value(command, name, "DURATION", what,
              [duration](const std::string& text) { *duration = given_duration(text); });
}

}  // namespace bgp_rehearse

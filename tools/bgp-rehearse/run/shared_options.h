// Options that several commands have: which library is rehearsed, on which device, and how it is judged.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/duration.h"
#include "run/request.h"

namespace bgp_rehearse {

CLI::Option* add_library(CLI::App* command, std::string* library);
CLI::Option* add_facts(CLI::App* command, std::string* facts);
void add_device(CLI::App* command, DeviceOptions* device);
void add_max_errors(CLI::App* command, DeviceOptions* device);
void add_severities(CLI::App* command, std::vector<std::pair<std::string, std::string>>* severities);
void add_duration(CLI::App* command, const char* name, std::optional<Duration>* duration, const std::string& what);

}  // namespace bgp_rehearse

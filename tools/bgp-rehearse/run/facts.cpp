#include "run/facts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "base/exit_status.h"
#include "base/given_value.h"
#include "base/standard_output.h"
#include "base/text_escape.h"
#include "run/csv.h"

namespace bgp_rehearse {

namespace {

using Json = nlohmann::json;

[[noreturn]] void refuse(const std::string& place, const std::string& why)
{
    throw CommandError(ExitStatus::BadInput, escaped(fmt::format("{}: {}", place, why)));
}

std::string content_of(const std::string& file)
{
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    std::ostringstream content;
    if (!in || !(content << in.rdbuf())) {
        refuse("--facts " + file, errno != 0 ? std::strerror(errno) : "it is empty");
    }
    return content.str();
}

uint32_t profile_of(const std::string& text)
{
    return static_cast<uint32_t>(given_number(text, 0, std::numeric_limits<uint32_t>::max()));
}

void add_facts(const std::string& device, const DeviceFacts& facts, FactsByDevice* all)
{
    if (device.empty()) {
        throw std::invalid_argument("a device without a name");
    }
    if (!all->emplace(device, facts).second) {
        throw std::invalid_argument("the device " + device + " is there twice");
    }
}

// Addresses between blanks or semicolons, as many as there are.
std::optional<std::vector<in_addr>> listed_addresses(std::string text)
{
    std::replace(text.begin(), text.end(), ';', ' ');
    std::istringstream words(text);
    std::string joined;
    for (std::string word; words >> word;) {
        joined += (joined.empty() ? "" : " ") + word;
    }
    return joined.empty() ? std::nullopt : std::optional(given_addresses(joined, " "));
}

// Which column has what.
struct Columns {
    std::size_t device = kNone;
    std::size_t interfaces = kNone;
    std::size_t profile = kNone;
    std::size_t count = 0;
    static constexpr std::size_t kNone = std::string::npos;

    explicit Columns(const CsvRecord& names) : count(names.size())
    {
        const std::vector<std::string> known = {"device", "interfaces", "profile"};
        std::size_t* const columns[] = {&device, &interfaces, &profile};
        for (std::size_t i = 0; i < names.size(); ++i) {
            std::size_t& column = *columns[given_word(names[i], known)];
            if (column != kNone) {
                throw std::invalid_argument("the column " + names[i] + " is there twice");
            }
            column = i;
        }
        if (device == kNone) {
            throw std::invalid_argument("no column has the name device");
        }
    }
};

void take_record(const CsvRecord& record, const Columns& columns, FactsByDevice* all)
{
    if (record.size() != columns.count) {
        throw std::invalid_argument(
            fmt::format("{} fields, where the first line has {}", record.size(), columns.count));
    }
    const auto field = [&](std::size_t column) { return column == Columns::kNone ? std::string() : record[column]; };
    DeviceFacts facts;
    facts.interfaces = listed_addresses(field(columns.interfaces));
    if (const std::string profile = field(columns.profile); !profile.empty()) {
        facts.user_profile = profile_of(profile);
    }
    add_facts(field(columns.device), facts, all);
}

FactsByDevice read_csv(const std::string& file, const std::string& text)
{
    FactsByDevice all;
    std::optional<Columns> columns;
    CsvReader reader(text);
    try {
        while (const std::optional<CsvRecord> record = reader.next()) {
            if (columns) {
                take_record(*record, *columns, &all);
            } else {
                columns.emplace(*record);
            }
        }
    } catch (const std::invalid_argument& wrong) {
        refuse(fmt::format("{}:{}", file, reader.line()), wrong.what());
    }
    if (!columns) {
        refuse(file, "it has no line");
    }
    return all;
}

std::vector<in_addr> addresses_in(const Json& array)
{
    std::vector<in_addr> addresses;
    for (const Json& text : array) {
        addresses.push_back(given_addresses(text.get<std::string>(), " ").front());
    }
    return addresses;
}

DeviceFacts facts_of(const Json& object)
{
    DeviceFacts facts;
    for (const auto& [name, value] : object.items()) {
        if (given_word(name, {"device", "interfaces", "profile"}) == 0 || value.is_null()) {
            continue;
        }
        if (name == "profile") {
            facts.user_profile = profile_of(value.dump());
        } else {
            facts.interfaces = value.is_array() ? addresses_in(value) : listed_addresses(value.get<std::string>());
        }
    }
    return facts;
}

void take_object(const std::string& device, const Json& object, FactsByDevice* all)
{
    if (!object.is_object()) {
        throw std::invalid_argument("not an object with interfaces and profile: " + object.dump());
    }
    add_facts(device, facts_of(object), all);
}

FactsByDevice read_json(const std::string& file, const std::string& text)
{
    FactsByDevice all;
    std::string device;
    try {
        const Json document = Json::parse(text);
        const bool named = document.is_object();
        for (const auto& [key, object] : document.items()) {
            device = named ? key : object.is_object() ? object.value("device", "") : std::string();
            take_object(device, object, &all);
        }
    } catch (const Json::parse_error& wrong) {
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(wrong.byte, text.size()));
        refuse(fmt::format("{}:{}", file, 1 + std::count(text.begin(), end, '\n')), "this is not JSON");
    } catch (const Json::type_error&) {
        refuse(fmt::format("{}: device \"{}\"", file, device), "its name and its addresses must be texts");
    } catch (const std::invalid_argument& wrong) {
        refuse(fmt::format("{}: device \"{}\"", file, device), wrong.what());
    }
    return all;
}

bool drop_ending(std::string* name)
{
    for (const char* const ending : {".xml", ".gz", ".xz", ".bz2", ".zst", ".lz4", ".Z", ".zip", ".tar", ".tgz"}) {
        const std::size_t size = std::strlen(ending);
        if (name->size() > size && name->compare(name->size() - size, size, ending) == 0) {
            name->resize(name->size() - size);
            return true;
        }
    }
    return false;
}

}  // namespace

FactsByDevice read_facts(const std::string& file)
{
    const std::string text = content_of(file);
    const std::size_t start = text.find_first_not_of(" \t\r\n");
    const bool json = start != std::string::npos && (text[start] == '[' || text[start] == '{');
    return json ? read_json(file, text) : read_csv(file, text);
}

std::string device_of(const std::string& configuration)
{
    std::string name = configuration.substr(configuration.find_last_of('/') + 1);
    while (drop_ending(&name)) {
    }
    return name;
}

RunOptions with_facts(RunOptions options)
{
    if (options.facts.empty()) {
        return options;
    }
    const FactsByDevice all = read_facts(options.facts);
    const std::string name = options.device_name.empty() ? device_of(options.configuration) : options.device_name;
    const auto found = all.find(name);
    if (found == all.end()) {
        print_message(fmt::format(
            "bgp-rehearse: {} does not have the device {} (--device names another): what is not given is assumed\n",
            escaped(options.facts), escaped(name)));
        return options;
    }
    take_facts(found->second, &options.device);
    return options;
}

void take_facts(const DeviceFacts& facts, DeviceOptions* device)
{
    if (facts.interfaces && !device->interfaces_known) {
        device->interfaces = *facts.interfaces;
        device->interfaces_known = true;
    }
    if (facts.user_profile && !device->user_profile_known) {
        device->user_profile = *facts.user_profile;
        device->user_profile_known = true;
    }
}

}  // namespace bgp_rehearse

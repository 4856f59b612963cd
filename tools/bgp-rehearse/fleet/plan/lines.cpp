#include "fleet/plan/lines.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "base/given_value.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

using Json = nlohmann::ordered_json;
constexpr int kVersion = 1;

Json json_of(const std::vector<in_addr>& addresses)
{
    Json json = Json::array();
    for (const in_addr& address : addresses) {
        char text[INET_ADDRSTRLEN];
        json.push_back(inet_ntop(AF_INET, &address, text, sizeof text));
    }
    return json;
}

std::vector<in_addr> addresses_of(const Json& json)
{
    std::vector<in_addr> addresses;
    for (const Json& text : json) {
        addresses.push_back(given_addresses(text.get<std::string>(), " ").front());
    }
    return addresses;
}

Json json_of(const FleetOptions& options)
{
    Json json;
    const DeviceOptions& device = options.device;
    if (device.interfaces_known) {
        json["interfaces"] = json_of(device.interfaces);
    }
    if (device.user_profile_known) {
        json["profile"] = device.user_profile;
    }
    json["max_entries"] = device.max_entries;
    json["severities"] = options.severities;
    json["time_limit_ns"] = options.time_limit.count();
    json["memory_limit"] = options.memory_limit;
    json["max_bytes"] = options.max_bytes;
    return json;
}

FleetOptions options_of(const Json& json)
{
    FleetOptions options;
    DeviceOptions& device = options.device;
    if (json.contains("interfaces")) {
        device.interfaces = addresses_of(json["interfaces"]);
        device.interfaces_known = true;
    }
    if (json.contains("profile")) {
        device.user_profile = json["profile"].get<uint32_t>();
        device.user_profile_known = true;
    }
    device.max_entries = json.at("max_entries").get<std::size_t>();
    options.severities = json.at("severities").get<decltype(options.severities)>();
    options.time_limit = Duration(json.at("time_limit_ns").get<Duration::rep>());
    options.memory_limit = json.at("memory_limit").get<uint64_t>();
    options.max_bytes = json.at("max_bytes").get<uint64_t>();
    return options;
}

Json json_of(const InputSource& source)
{
    Json json;
    if (const auto* const file = std::get_if<StoredFile>(&source)) {
        json["file"] = escaped_name(file->path);
    } else if (const auto* const member = std::get_if<ArchiveMember>(&source)) {
        json["archive"] = escaped_name(member->archive);
        json["member"] = member->index;
        if (member->offset) {
            json["offset"] = *member->offset;
        }
    } else {
        const auto& object = std::get<RepositoryObject>(source);
        json["repository"] = escaped_name(object.repository);
        json["object"] = object.object;
    }
    return json;
}

std::string path_in(const Json& json, const char* name)
{
    return unescaped_name(json.at(name).get<std::string>());
}

InputSource source_of(const Json& json)
{
    if (json.contains("file")) {
        return StoredFile{path_in(json, "file")};
    }
    if (json.contains("repository")) {
        return RepositoryObject{path_in(json, "repository"), json.at("object").get<std::string>()};
    }
    ArchiveMember member{path_in(json, "archive"), json.at("member").get<std::size_t>(), std::nullopt};
    if (json.contains("offset")) {
        member.offset = json["offset"].get<uint64_t>();
    }
    return member;
}

void check(bool right, const char* what)
{
    if (!right) {
        throw std::invalid_argument(what);
    }
}

bool is_digest(const std::string& text)
{
    return text.size() == 64 && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

// The shards follow one another and have all inputs together.
void check_shards(const Plan& plan)
{
    std::size_t inputs = 0;
    uint64_t offset = 0;
    for (const Shard& shard : plan.shards) {
        check(shard.offset >= offset && (inputs > 0 || shard.offset == 0), "its shards are out of order");
        offset = shard.offset;
        inputs += shard.inputs;
    }
    check(!plan.shards.empty() && inputs == plan.inputs, "its shards do not have all its inputs");
}

Plan plan_in(const Json& json)
{
    check(json.is_object() && json.contains("plan"), "this is no plan of a fleet");
    check(json["plan"] == kVersion, "this plan was made by another version of bgp-rehearse; make it again");
    Plan plan;
    plan.id = json.at("id").get<std::string>();
    plan.inputs = json.at("inputs").get<std::size_t>();
    plan.bytes = json.at("bytes").get<uint64_t>();
    const Json& library = json.at("library");
    plan.library = {path_in(library, "path"), library.at("version").get<std::string>(),
                    library.at("sha256").get<std::string>()};
    plan.options = options_of(json.at("options"));
    for (const Json& shard : json.at("shards")) {
        plan.shards.push_back(
            {shard.at(0).get<uint64_t>(), shard.at(1).get<std::size_t>(), shard.at(2).get<uint64_t>()});
    }
    plan.passed_over = json.at("passed_over").get<decltype(plan.passed_over)>();
    check(is_digest(plan.id) && is_digest(plan.library.sha256), "its id or its library's hash is none");
    check_shards(plan);
    return plan;
}

PlannedInput input_in(const Json& json)
{
    PlannedInput input;
    input.number = json.at("n").get<std::size_t>();
    input.name = json.at("name").get<std::string>();
    input.source = source_of(json.at("source"));
    input.bytes = json.at("bytes").get<uint64_t>();
    input.sha256 = json.at("sha256").get<std::string>();
    input.refused = json.value("refused", "");
    if (json.contains("interfaces")) {
        input.facts.interfaces = addresses_of(json["interfaces"]);
    }
    if (json.contains("profile")) {
        input.facts.user_profile = json["profile"].get<uint32_t>();
    }
    check(!input.name.empty(), "an input without a name");
    check(input.sha256.empty() ? !input.refused.empty() : is_digest(input.sha256), "an input without its hash");
    return input;
}

template <typename Take>
auto parsed(std::string_view line, Take take)
{
    try {
        return take(Json::parse(line));
    } catch (const Json::parse_error&) {
        throw std::invalid_argument("this is not JSON; is the plan cut off?");
    } catch (const Json::exception&) {
        throw std::invalid_argument("something is missing, or is of another kind than in a plan");
    }
}

}  // namespace

std::string line_of(const FleetOptions& options)
{
    return json_of(options).dump();
}

std::string line_of(const Plan& plan)
{
    Json shards = Json::array();
    for (const Shard& shard : plan.shards) {
        shards.push_back({shard.offset, shard.inputs, shard.bytes});
    }
    const Json library = {
        {"path", escaped_name(plan.library.path)}, {"version", plan.library.version}, {"sha256", plan.library.sha256}};
    return Json{{"plan", kVersion},
                {"id", plan.id},
                {"inputs", plan.inputs},
                {"bytes", plan.bytes},
                {"library", library},
                {"options", json_of(plan.options)},
                {"passed_over", plan.passed_over},
                {"shards", shards}}
        .dump();
}

std::string line_of(const PlannedInput& input)
{
    Json json = {{"n", input.number},
                 {"name", input.name},
                 {"source", json_of(input.source)},
                 {"bytes", input.bytes},
                 {"sha256", input.sha256}};
    if (!input.refused.empty()) {
        json["refused"] = input.refused;
    }
    if (input.facts.interfaces) {
        json["interfaces"] = json_of(*input.facts.interfaces);
    }
    if (input.facts.user_profile) {
        json["profile"] = *input.facts.user_profile;
    }
    return json.dump();
}

FleetOptions fleet_options_of(std::string_view line)
{
    return parsed(line, options_of);
}

Plan plan_of(std::string_view line)
{
    return parsed(line, plan_in);
}

PlannedInput input_of(std::string_view line)
{
    return parsed(line, input_in);
}

}  // namespace bgp_rehearse

#include "fleet/run/known_results.h"

#include <fstream>
#include <stdexcept>
#include <utility>

#include "base/exit_status.h"
#include "base/sha256.h"
#include "fleet/plan/lines.h"
#include "fleet/shard/part.h"
#include "fleet/shard/result.h"

namespace bgp_rehearse {

namespace {

// All that makes a result besides library and options; empty where there are no bytes to know.
std::string key_of(PlannedInput input)
{
    if (input.sha256.empty()) {
        return {};
    }
    input.number = 0;
    input.name.clear();
    input.source = StoredFile{};
    const Sha256::Digest digest = [&] {
        Sha256 sha256;
        sha256.add(line_of(input));
        return sha256.digest();
    }();
    return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

// Quotes within a text of the line stand behind a backslash.
bool is_refused(std::string_view line)
{
    return line.find(R"("class":"refused")") != std::string_view::npos;
}

}  // namespace

void KnownResults::add(const PlanReader& plan, const std::string& part)
{
    std::vector<std::pair<std::string, Place>> found;
    const auto number = static_cast<uint32_t>(parts_.size());
    try {
        const PartReader reader(part);
        std::vector<std::string> keys;
        plan.each_input(reader.header().shard, [&](PlannedInput input) { keys.push_back(key_of(std::move(input))); });
        std::size_t result = 0;
        reader.each([&](std::string_view line, uint64_t offset) {
            if (result < keys.size() && !keys[result].empty() && !is_refused(line)) {
                found.emplace_back(std::move(keys[result]), Place{number, offset});
            }
            ++result;
        });
    } catch (const PartError&) {
        return;
    } catch (const CommandError&) {
        return;  // of the plan
    }
    parts_.push_back(part);
    places_.insert(found.begin(), found.end());
}

std::optional<std::string> KnownResults::line_for(const PlannedInput& input) const
{
    const auto place = places_.find(key_of(input));
    if (place == places_.end()) {
        return std::nullopt;
    }
    std::ifstream part(parts_[place->second.part], std::ios::binary);
    std::string line;
    part.seekg(static_cast<std::streamoff>(place->second.offset));
    if (!std::getline(part, line)) {
        return std::nullopt;
    }
    try {
        RouterResult result = result_of(line);
        result.number = input.number;
        result.name = input.name;
        return line_of(result);
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

}  // namespace bgp_rehearse

#include "fleet/plan/make_plan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/child.h"
#include "base/output_file.h"
#include "base/sha256.h"
#include "base/standard_output.h"
#include "base/text_escape.h"
#include "fleet/plan/find_inputs.h"
#include "fleet/plan/lines.h"
#include "fleet/plan/shards.h"
#include "judge/judgement.h"
#include "report/model.h"
#include "run/facts.h"
#include "run/library.h"

namespace bgp_rehearse {

namespace {

void check_severities(const FleetOptions& options)
{
    try {
        chosen_severities(options.severities);
    } catch (const std::invalid_argument& wrong) {
        throw CommandError(ExitStatus::BadInput, fmt::format("--severity: {}", escaped(wrong.what())));
    }
}

PlannedLibrary library_of(const std::string& asked)
{
    PlannedLibrary library;
    library.path = find_library(asked);
    library.version = version_of(library.path).version;
    library.sha256 = sha256_of_file(library.path);
    if (library.sha256.empty()) {
        throw CommandError(
            ExitStatus::BadInput,
            fmt::format("the upgrade library {} cannot be read; name it with --library PATH", escaped(library.path)));
    }
    return library;
}

// The inputs of a plan, one at a time, from how they were found.
class PlannedInputs {
public:
    PlannedInputs(const Found& found, const PlanOptions& options) : found_(found), device_(options.options.device)
    {
        if (!options.facts.empty()) {
            facts_ = read_facts(options.facts);
        }
    }

    std::size_t unknown() const noexcept { return unknown_; }

    uint64_t bytes(std::size_t number) const { return found_.inputs[number].bytes; }

    PlannedInput operator[](std::size_t number)
    {
        const FoundInput& found = found_.inputs[number];
        PlannedInput input;
        input.number = number;
        input.name = found.name;
        input.source = found_.source_of(found);
        input.bytes = found.bytes;
        if (found.refused != 0) {
            input.refused = found_.refusals[found.refused - 1];
        } else {
            input.sha256 = hex_of(found.sha256);
        }
        input.facts = facts_of(found);
        return input;
    }

private:
    // What an option says of all devices counts.
    DeviceFacts facts_of(const FoundInput& input)
    {
        if (facts_.empty()) {
            return {};
        }
        const auto device = facts_.find(device_of(found_.rest_of_name(input)));
        if (device == facts_.end()) {
            ++unknown_;
            return {};
        }
        DeviceFacts facts = device->second;
        if (device_.interfaces_known) {
            facts.interfaces.reset();
        }
        if (device_.user_profile_known) {
            facts.user_profile.reset();
        }
        return facts;
    }

    const Found& found_;
    const DeviceOptions& device_;
    FactsByDevice facts_;
    std::size_t unknown_ = 0;
};

std::size_t number_of_shards(const Found& found, const PlanOptions& options)
{
    if (options.shards) {
        return *options.shards;
    }
    const double seconds = std::accumulate(found.inputs.begin(), found.inputs.end(), 0.0,
                                           [](double sum, const FoundInput& input) { return sum + seconds_of(input); });
    const auto wanted = static_cast<std::size_t>(std::ceil(seconds / options.shard_seconds));
    return std::clamp<std::size_t>(std::max(wanted, options.least_shards), 1, found.inputs.size());
}

// What is not in the plan is told: a router that is missing would be missed by nobody.
void tell_remarks(const Found& found, std::size_t unknown, const std::string& facts)
{
    for (const std::string& remark : found.remarks) {
        print_message(fmt::format("bgp-rehearse: {}\n", remark));
    }
    std::string reasons;
    for (const auto& [reason, count] : found.passed_over) {
        reasons += fmt::format("{}{} {}", reasons.empty() ? "" : ", ", reason, count);
    }
    if (!reasons.empty()) {
        const bool names = found.passed_over.count("another name") > 0;
        print_message(fmt::format("bgp-rehearse: passed over: {}{}\n", reasons,
                                  names ? "; --all-names takes files of any name" : ""));
    }
    const auto refused = std::count_if(found.inputs.begin(), found.inputs.end(),
                                       [](const FoundInput& input) { return input.refused != 0; });
    if (refused > 0) {
        print_message(fmt::format("bgp-rehearse: {} of the inputs cannot be read, and will be refused\n", refused));
    }
    if (unknown > 0) {
        print_message(fmt::format("bgp-rehearse: {} does not have {} of the devices: what is not given is assumed\n",
                                  escaped(facts), unknown));
    }
}

// Writes lines to a file in big pieces.
class LineFile {
public:
    explicit LineFile(OutputFile* file) : file_(file) {}

    void add(const std::string& line)
    {
        constexpr std::size_t kPiece = 1 << 18;
        text_ += line;
        text_ += '\n';
        if (text_.size() >= kPiece) {
            write();
        }
    }

    void finish()
    {
        write();
        file_->put_in_place();
    }

private:
    void write()
    {
        file_->write(text_);
        text_.clear();
    }

    OutputFile* file_;
    std::string text_;
};

// The first line stands before all others, and says where they are: they are made twice, and held by nobody.
class PlanWriter {
public:
    PlanWriter(Plan* plan, PlannedInputs* inputs, std::vector<std::vector<uint32_t>> shards)
        : plan_(plan), inputs_(inputs), shards_(std::move(shards)), sizes_(plan->inputs)
    {
        identify();
        place_shards();
    }

    void write(OutputFile* target)
    {
        LineFile file(target);
        file.add(line_of(*plan_));
        for (const std::vector<uint32_t>& shard : shards_) {
            for (const uint32_t number : shard) {
                file.add(line_of((*inputs_)[number]));
            }
        }
        file.finish();
    }

private:
    void identify()
    {
        Sha256 id;
        id.add(line_of(plan_->options) + "\n" + plan_->library.sha256 + "\n");
        for (std::size_t number = 0; number < plan_->inputs; ++number) {
            const std::string line = line_of((*inputs_)[number]) + "\n";
            id.add(line);
            sizes_[number] = static_cast<uint32_t>(line.size());
        }
        plan_->id = id.hex();
    }

    void place_shards()
    {
        uint64_t offset = 0;
        for (const std::vector<uint32_t>& inputs : shards_) {
            Shard shard{offset, inputs.size(), 0};
            for (const uint32_t number : inputs) {
                offset += sizes_[number];
                shard.bytes += (*inputs_).bytes(number);
            }
            plan_->bytes += shard.bytes;
            plan_->shards.push_back(shard);
        }
    }

    Plan* plan_;
    PlannedInputs* inputs_;
    std::vector<std::vector<uint32_t>> shards_;
    std::vector<uint32_t> sizes_;  // of the inputs' lines
};

}  // namespace

Plan make_plan(const PlanOptions& options)
{
    const std::string target = replaceable_file("-o", options.output);
    check_severities(options.options);
    Plan plan;
    plan.library = library_of(options.library);
    plan.options = options.options;
    const Found found = find_inputs({options.paths, options.all_names, options.options.max_bytes});
    PlannedInputs inputs(found, options);
    plan.inputs = found.inputs.size();
    plan.passed_over = found.passed_over;
    if (plan.inputs == 0) {
        tell_remarks(found, 0, options.facts);
        throw CommandError(ExitStatus::BadInput, "no configuration was found: no plan is made");
    }
    PlanWriter writer(&plan, &inputs, balanced_shards(found, number_of_shards(found, options)));
    tell_remarks(found, inputs.unknown(), options.facts);
    const InterruptGuard interrupts;
    OutputFile file("-o", target);
    writer.write(&file);
    return plan;
}

ExitStatus plan_fleet(const PlanOptions& options)
{
    const Plan plan = make_plan(options);
    constexpr double kMegabyte = 1e6;
    print_out(fmt::format("{} {}, {:.1f} MB, in {} {}: {}\n", plan.inputs, plan.inputs == 1 ? "input" : "inputs",
                          static_cast<double>(plan.bytes) / kMegabyte, plan.shards.size(),
                          plan.shards.size() == 1 ? "shard" : "shards", escaped(options.output)));
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse

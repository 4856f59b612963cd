#include "fleet/merge/merge.h"

#include <fmt/format.h>

#include <algorithm>
#include <future>
#include <memory>
#include <optional>
#include <utility>

#include "base/child.h"
#include "base/output_file.h"
#include "base/standard_output.h"
#include "base/text_escape.h"
#include "fleet/merge/database_writer.h"
#include "fleet/merge/indexed_part.h"
#include "fleet/plan/plan_reader.h"
#include "judge/words.h"

namespace bgp_rehearse {

namespace {

constexpr std::size_t kShownMistakes = 20;
constexpr std::size_t kAtOnce = 1024;  // results that are parsed at once

[[noreturn]] void refuse(const std::string& output, const std::vector<std::string>& mistakes)
{
    std::string text = fmt::format("{} is not written: the parts and the plan do not agree", escaped(output));
    for (std::size_t i = 0; i < mistakes.size() && i < kShownMistakes; ++i) {
        text += "\n  " + mistakes[i];
    }
    if (mistakes.size() > kShownMistakes) {
        text += fmt::format("\n  and {} more", grouped(mistakes.size() - kShownMistakes));
    }
    throw CommandError(ExitStatus::PartsDiffer, text);
}

// The parts of a plan, by their shards.
class Parts {
public:
    explicit Parts(const Plan& plan) : plan_(plan), of_shard_(plan.shards.size()) {}

    void add(const std::string& file)
    {
        try {
            auto part = std::make_unique<IndexedPart>(file);
            const std::string mistake = mistake_of(part->header());
            if (mistake.empty()) {
                const std::size_t shard = part->header().shard;
                of_shard_[shard] = std::move(part);
            } else {
                mistakes_.push_back(fmt::format("{}: {}", escaped(file), mistake));
            }
        } catch (const PartError& error) {
            mistakes_.push_back(fmt::format("{}: {}", escaped(file), escaped(error.what())));
        }
    }

    // What is wrong with those that were added, and which are missing.
    std::vector<std::string> mistakes() const
    {
        std::vector<std::string> all = mistakes_;
        for (std::size_t i = 0; i < of_shard_.size(); ++i) {
            if (!of_shard_[i]) {
                all.push_back(fmt::format("shard {} of {}: no part", i, of_shard_.size()));
            }
        }
        return all;
    }

    const IndexedPart& of_shard(std::size_t shard) const { return *of_shard_[shard]; }

private:
    std::string mistake_of(const PartHeader& part) const
    {
        if (part.plan != plan_.id) {
            return "a part of another plan";
        }
        if (part.shards != of_shard_.size() || part.shard >= of_shard_.size()) {
            return fmt::format("a part of {} shards, and the plan has {}", part.shards, of_shard_.size());
        }
        if (of_shard_[part.shard]) {
            return fmt::format("the part of shard {}, which {} is already", part.shard,
                               escaped(of_shard_[part.shard]->file()));
        }
        const std::size_t inputs = plan_.shards[part.shard].inputs;
        return part.inputs == inputs
                   ? std::string()
                   : fmt::format("{} results, and the plan has {} inputs for it", part.inputs, inputs);
    }

    const Plan& plan_;
    std::vector<std::unique_ptr<IndexedPart>> of_shard_;
    std::vector<std::string> mistakes_;
};

// An input of the plan, and where its result is.
struct Expected {
    std::optional<PlannedInput> input;
    std::size_t shard = 0;
    std::size_t place = 0;  // in it
};

// By their numbers.
std::vector<Expected> expected_of(const PlanReader& reader, const std::string& file)
{
    const Plan& plan = reader.plan();
    std::vector<Expected> all(plan.inputs);
    for (std::size_t shard = 0; shard < plan.shards.size(); ++shard) {
        std::size_t place = 0;
        reader.each_input(shard, [&](PlannedInput input) {
            const std::size_t number = input.number;
            if (number >= all.size() || all[number].input) {
                throw CommandError(ExitStatus::BadInput, fmt::format("{}: input {} of {}: this number is not its own",
                                                                     escaped(file), number, all.size()));
            }
            all[number] = {std::move(input), shard, place++};
        });
    }
    return all;
}

RouterResult result_for(const Expected& expected, const IndexedPart& part)
{
    try {
        RouterResult result = result_of(part.line(expected.place));
        if (result.number == expected.input->number && result.name == expected.input->name) {
            return result;
        }
        throw PartError(fmt::format("the result of {}, where that of {} should be", escaped(result.name),
                                    escaped(expected.input->name)));
    } catch (const std::exception& error) {
        throw PartError(
            fmt::format("{}: line {}: {}", escaped(part.file()), expected.place + 2, escaped(error.what())));
    }
}

// Lines are parsed while the results before them are written: both take about as long.
class ResultsInOrder {
public:
    ResultsInOrder(const std::vector<Expected>& all, const Parts& parts) : all_(all), parts_(parts) { begin_next(); }

    // Of the next inputs; none behind the last.
    std::vector<RouterResult> next()
    {
        std::vector<RouterResult> results = next_.get();
        begin_next();
        return results;
    }

private:
    void begin_next()
    {
        const std::size_t first = begun_;
        begun_ = std::min(begun_ + kAtOnce, all_.size());
        next_ = std::async(std::launch::async, [this, first, end = begun_] { return parsed(first, end); });
    }

    std::vector<RouterResult> parsed(std::size_t first, std::size_t end) const
    {
        std::vector<RouterResult> results;
        for (std::size_t i = first; i < end; ++i) {
            results.push_back(result_for(all_[i], parts_.of_shard(all_[i].shard)));
        }
        return results;
    }

    const std::vector<Expected>& all_;
    const Parts& parts_;
    std::size_t begun_ = 0;
    std::future<std::vector<RouterResult>> next_;
};

void write(const Plan& plan, const std::vector<Expected>& all, const Parts& parts, const InterruptGuard& interrupts,
           const std::string& file)
{
    DatabaseWriter writer(file, plan);
    ResultsInOrder results(all, parts);
    for (std::vector<RouterResult> batch = results.next(); !batch.empty(); batch = results.next()) {
        if (const int signal = interrupts.take(); signal != 0) {
            throw Interrupted{signal};
        }
        for (const RouterResult& result : batch) {
            writer.add(*all[result.number].input, result);
        }
    }
    writer.finish();
}

std::string target_of(const MergeOptions& options)
{
    std::string target = replaceable_file("-o", options.output);
    refuse_same_file("-o", target, "the plan", options.plan);
    for (const std::string& part : options.parts) {
        refuse_same_file("-o", target, "a part", part);
    }
    return target;
}

}  // namespace

std::size_t merge_parts(const MergeOptions& options)
{
    const std::string target = target_of(options);
    const PlanReader reader(options.plan);
    Parts parts(reader.plan());
    for (const std::string& part : options.parts) {
        parts.add(part);
    }
    if (const std::vector<std::string> mistakes = parts.mistakes(); !mistakes.empty()) {
        refuse(options.output, mistakes);
    }
    const std::vector<Expected> all = expected_of(reader, options.plan);
    const InterruptGuard interrupts;
    OutputFile file("-o", target, readers_of(options.plan));
    try {
        write(reader.plan(), all, parts, interrupts, file.temporary());
    } catch (const PartError& error) {
        refuse(options.output, {error.what()});
    } catch (const DatabaseError& error) {
        throw CommandError(ExitStatus::NotWritten,
                           fmt::format("{} could not be written: {}", escaped(target), error.what()));
    }
    file.put_in_place();
    return all.size();
}

ExitStatus merge_fleet(const MergeOptions& options)
{
    const std::size_t routers = merge_parts(options);
    print_out(fmt::format("{}: {} of {}\n", escaped(options.output), counted(routers, {"router", "routers"}),
                          counted(options.parts.size(), {"part", "parts"})));
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse

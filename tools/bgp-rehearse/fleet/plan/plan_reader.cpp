#include "fleet/plan/plan_reader.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "base/exit_status.h"
#include "base/refuse.h"
#include "base/text_escape.h"
#include "fleet/plan/lines.h"

namespace bgp_rehearse {

namespace {

[[noreturn]] void refuse_line(const std::string& file, std::size_t line, const std::string& why)
{
    throw CommandError(ExitStatus::BadInput, fmt::format("{}:{}: {}", escaped(file), line, escaped(why)));
}

std::ifstream opened(const std::string& file)
{
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    if (!in || in.peek() == std::ifstream::traits_type::eof()) {
        refuse(file, errno != 0 ? std::strerror(errno) : "it is empty; a plan was to be read");
    }
    return in;
}

PlannedInput input_in(const std::string& file, std::size_t number, const std::string& line)
{
    try {
        return input_of(line);
    } catch (const std::invalid_argument& wrong) {
        refuse_line(file, number, wrong.what());
    }
}

std::size_t first_line_of(const Plan& plan, std::size_t shard)
{
    const auto begin = plan.shards.begin();
    return std::accumulate(begin, begin + static_cast<std::ptrdiff_t>(shard), std::size_t{2},
                           [](std::size_t lines, const Shard& each) { return lines + each.inputs; });
}

}  // namespace

PlanReader::PlanReader(std::string file) : file_(std::move(file))
{
    std::ifstream in = opened(file_);
    std::string line;
    std::getline(in, line);
    start_ = line.size() + 1;
    try {
        plan_ = plan_of(line);
    } catch (const std::invalid_argument& wrong) {
        refuse_line(file_, 1, wrong.what());
    }
}

void PlanReader::each_input(std::size_t shard, const std::function<void(PlannedInput)>& take) const
{
    const Shard& wanted = plan_.shards.at(shard);
    std::ifstream in = opened(file_);
    in.seekg(static_cast<std::streamoff>(start_ + wanted.offset));
    std::size_t number = first_line_of(plan_, shard);
    uint64_t bytes = 0;
    for (std::size_t i = 0; i < wanted.inputs; ++i, ++number) {
        std::string line;
        if (!std::getline(in, line) || in.eof()) {
            refuse_line(file_, number, "the plan is cut off here; make it again");
        }
        PlannedInput input = input_in(file_, number, line);
        bytes += input.bytes;
        take(std::move(input));
    }
    const bool last = shard + 1 == plan_.shards.size();
    const bool ends = last ? in.peek() == std::ifstream::traits_type::eof()
                           : static_cast<uint64_t>(in.tellg()) == start_ + plan_.shards[shard + 1].offset;
    if (!ends || bytes != wanted.bytes) {
        refuse_line(file_, number - 1, "the plan has been changed: the shard does not end as its first line says");
    }
}

std::vector<PlannedInput> PlanReader::shard(std::size_t shard) const
{
    std::vector<PlannedInput> inputs;
    each_input(shard, [&](PlannedInput input) { inputs.push_back(std::move(input)); });
    return inputs;
}

}  // namespace bgp_rehearse

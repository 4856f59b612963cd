#include "fleet/shard/work.h"

#include <fmt/format.h>

#include "base/child.h"
#include "base/sha256.h"
#include "base/text_escape.h"
#include "fleet/shard/part.h"

namespace bgp_rehearse {

void write_part(const PlanReader& plan, std::size_t shard, const std::string& file,
                const std::function<std::string(const PlannedInput&)>& line_for)
{
    const Plan& whole = plan.plan();
    PartWriter part("-o", file, {whole.id, shard, whole.shards.size(), whole.shards[shard].inputs});
    plan.each_input(shard, [&](const PlannedInput& input) { part.add(line_for(input)); });
    part.finish();
}

UpgradeLibrary library_of(const Plan& plan, const std::string& path)
{
    const std::string file = path.empty() ? plan.library.path : find_library(path);
    if (const std::string sha256 = sha256_of_file(file); !sha256.empty() && sha256 != plan.library.sha256) {
        throw CommandError(ExitStatus::BadInput,
                           fmt::format("the library {} is not the one that the plan was made for\n"
                                       "name that with --library PATH, or make the plan anew",
                                       escaped(file)));
    }
    return UpgradeLibrary(file);
}

ExitStatus work_shard(const WorkOptions& options)
{
    const PlanReader plan(options.plan);
    const std::size_t shards = plan.plan().shards.size();
    if (options.shard >= shards) {
        throw CommandError(ExitStatus::BadInput,
                           fmt::format("--shard {}: the plan has {}, from 0 to {}", options.shard, shards, shards - 1));
    }
    const InterruptGuard interrupts;
    const UpgradeLibrary library = library_of(plan.plan(), options.library);
    Worker worker(plan.plan(), library, interrupts);
    write_part(plan, options.shard, options.output, [&](const PlannedInput& input) { return worker.rehearse(input); });
    return ExitStatus::Ok;
}

}  // namespace bgp_rehearse

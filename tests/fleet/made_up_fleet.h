// A fleet of made-up results: its plan, its parts and the database that they merge to.
#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "fleet/plan/lines.h"
#include "fleet/plan/plan.h"
#include "fleet/shard/part.h"
#include "fleet/shard/result.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {

using bgp_rehearse::FleetFinding;
using bgp_rehearse::RouterResult;

// A router that is safe; its input is 100 bytes.
inline RouterResult safe_router(const std::string& name)
{
    RouterResult router;
    router.name = name;
    router.sha256 = std::string(64, 'a');
    router.bytes = 100;
    router.input_class = "whole";
    router.verdict = "SAFE";
    router.sentence = "Nothing is lost.";
    router.steps = {{"update", "ran"}, {"update_vrf", "did not run"}};
    router.account = {10, 4, 1, 3, 2, 0, 5, 15};
    router.calls = {20, 9, 1, 2, 1};
    router.seconds_least = 0.03;
    router.seconds_most = 0.6;
    return router;
}

inline FleetFinding finding_of(const std::string& id, const std::string& severity, const std::string& reason,
                               std::size_t count = 1)
{
    return {id,           severity,     reason, fmt::format("{} of {}", count, reason),
            "look at it", "update_vrf", count,  {{"/router/bgp{1}", "AS 1"}}};
}

inline const FleetFinding kLeft = finding_of("row-left", "review", "rows stay behind", 2);
inline const FleetFinding kLeftUnused = finding_of("row-left", "note", "rows stay behind");
inline const FleetFinding kLost = finding_of("row-lost", "stop", "rows are lost", 3);

inline RouterResult router_with(const std::string& name, const std::string& verdict, std::vector<FleetFinding> findings)
{
    RouterResult router = safe_router(name);
    router.verdict = verdict;
    router.sentence = "Look at it.";
    router.findings = std::move(findings);
    return router;
}

inline RouterResult refused_router(const std::string& name)
{
    RouterResult router = safe_router(name);
    router.input_class = "refused";
    router.verdict = "REFUSED";
    router.sentence = "It cannot be read.";
    router.errors = {"line 3: an odd leaf", "line 9: another"};
    router.findings = {{"refused", "stop", "an odd leaf", "line 3: an odd leaf", "", "", 1, {}}};
    router.steps.clear();
    router.account = {};
    router.calls = {};
    return router;
}

class MadeUpFleet {
public:
    // Routers in the order of their names.
    explicit MadeUpFleet(std::vector<RouterResult> routers) : routers_(std::move(routers))
    {
        plan_.id = std::string(64, '7');
        plan_.library = {"/opt/lib/libbgp_update.so", "0.2.0", std::string(64, 'b')};
        plan_.inputs = routers_.size();
        for (std::size_t i = 0; i < routers_.size(); ++i) {
            routers_[i].number = i;
            inputs_.push_back({});
            inputs_[i].number = i;
            inputs_[i].name = routers_[i].name;
            inputs_[i].source = bgp_rehearse::StoredFile{"/backups/" + routers_[i].name};
            inputs_[i].bytes = routers_[i].bytes;
            inputs_[i].sha256 = routers_[i].sha256;
            plan_.bytes += routers_[i].bytes;
        }
    }

    bgp_rehearse::Plan& plan() { return plan_; }
    bgp_rehearse::PlannedInput& input(std::size_t router) { return inputs_[router]; }

    // Writes plan and parts into the folder, as "plan" and "part-0" to "part-N"; the routers are dealt to the shards like
    // cards, the last one first. Returns the parts.
    std::vector<std::string> write(const ScratchFolder& folder, std::size_t shards)
    {
        plan_.shards.clear();
        std::string lines;
        std::vector<std::string> parts;
        for (std::size_t shard = 0; shard < shards; ++shard) {
            const std::vector<std::size_t> numbers = numbers_of(shard, shards);
            plan_.shards.push_back({lines.size(), numbers.size(), 0});
            for (const std::size_t number : numbers) {
                plan_.shards.back().bytes += inputs_[number].bytes;
                lines += line_of(inputs_[number]) + "\n";
            }
            parts.push_back(folder / fmt::format("part-{}", shard));
            bgp_rehearse::PartWriter part("-o", parts.back(), {plan_.id, shard, shards, numbers.size()});
            for (const std::size_t number : numbers) {
                part.add(line_of(routers_[number]));
            }
            part.finish();
        }
        folder.file("plan", line_of(plan_) + "\n" + lines);
        return parts;
    }

    // Merges them by the command, and returns the database.
    std::string merged(const ScratchFolder& folder, std::size_t shards = 2, const std::string& name = "fleet.db")
    {
        const CommandResult result = merge(folder, write(folder, shards), name);
        EXPECT_EQ(result.status, 0) << result.err;
        return folder / name;
    }

    static CommandResult merge(const ScratchFolder& folder, const std::vector<std::string>& parts,
                               const std::string& name = "fleet.db")
    {
        std::vector<std::string> command = {"fleet", "merge", folder / "plan"};
        command.insert(command.end(), parts.begin(), parts.end());
        command.insert(command.end(), {"-o", folder / name});
        return rehearse(command);
    }

private:
    std::vector<std::size_t> numbers_of(std::size_t shard, std::size_t shards) const
    {
        std::vector<std::size_t> numbers;
        for (std::size_t i = routers_.size(); i-- > 0;) {
            if (i % shards == shard) {
                numbers.push_back(i);
            }
        }
        return numbers;
    }

    std::vector<RouterResult> routers_;
    std::vector<bgp_rehearse::PlannedInput> inputs_;
    bgp_rehearse::Plan plan_;
};

}  // namespace bgp_test

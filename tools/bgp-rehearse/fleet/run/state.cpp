#include "fleet/run/state.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/exit_status.h"
#include "base/refuse.h"
#include "fleet/plan/lines.h"
#include "fleet/shard/part.h"

namespace bgp_rehearse {

namespace {

namespace fs = std::filesystem;
constexpr char kPlan[] = "plan";
constexpr char kPartEnding[] = ".part";
constexpr std::size_t kFolderName = 16;  // digits of the plan's id

void make_folder(const std::string& folder)
{
    std::error_code failed;
    fs::create_directories(folder, failed);
    if (failed) {
        refuse(folder, failed.message());
    }
}

int lock(const std::string& file)
{
    const int descriptor = open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0) {
        refuse(file, std::strerror(errno));
    }
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
        close(descriptor);
        refuse(file, "another fleet run is at work on this database");
    }
    return descriptor;
}

bool is_whole(const std::string& file, const Plan& plan, std::size_t shard)
{
    try {
        const PartReader part(file);
        part.each([](std::string_view, uint64_t) {});
        const PartHeader& header = part.header();
        return header.plan == plan.id && header.shard == shard && header.shards == plan.shards.size() &&
               header.inputs == plan.shards[shard].inputs;
    } catch (const PartError&) {
        return false;
    }
}

bool is_same(const Plan& left, const Plan& right)
{
    return left.library.sha256 == right.library.sha256 && line_of(left.options) == line_of(right.options);
}

std::optional<Plan> plan_in(const std::string& file)
{
    try {
        return PlanReader(file).plan();
    } catch (const CommandError&) {
        return std::nullopt;
    }
}

}  // namespace

FleetState::FleetState(std::string folder) : folder_(std::move(folder))
{
    make_folder(folder_);
    lock_ = lock(folder_ + "/lock");
}

FleetState::~FleetState()
{
    close(lock_);
}

Plan FleetState::plan(PlanOptions options)
{
    const std::string made = folder_ + "/" + kPlan;
    options.output = made;
    Plan plan = make_plan(options);
    plan_folder_ = folder_ + "/" + plan.id.substr(0, kFolderName);
    plan_file_ = plan_folder_ + "/" + kPlan;
    make_folder(plan_folder_);
    remove_unfinished();
    const std::optional<Plan> before = plan_in(plan_file_);
    if (before && before->id == plan.id) {
        fs::remove(made);
    } else {
        fs::rename(made, plan_file_);
    }
    return plan;
}

std::string FleetState::part_file(std::size_t shard) const
{
    return fmt::format("{}/{}{}", plan_folder_, shard, kPartEnding);
}

std::vector<std::size_t> FleetState::missing(const PlanReader& plan) const
{
    std::vector<std::size_t> missing;
    for (std::size_t shard = 0; shard < plan.plan().shards.size(); ++shard) {
        if (!is_whole(part_file(shard), plan.plan(), shard)) {
            missing.push_back(shard);
        }
    }
    return missing;
}

std::vector<std::string> FleetState::others() const
{
    std::vector<std::string> others;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
        if (entry.is_directory() && !fs::equivalent(entry.path(), plan_folder_)) {
            others.push_back(entry.path());
        }
    }
    return others;
}

KnownResults FleetState::known(const PlanReader& plan) const
{
    KnownResults known;
    for (const std::string& other : others()) {
        const std::string file = other + "/" + kPlan;
        const std::optional<Plan> there = plan_in(file);
        if (!there || !is_same(*there, plan.plan())) {
            continue;
        }
        const PlanReader reader(file);
        for (std::size_t shard = 0; shard < there->shards.size(); ++shard) {
            known.add(reader, fmt::format("{}/{}{}", other, shard, kPartEnding));
        }
    }
    return known;
}

void FleetState::remove_unfinished() const
{
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(plan_folder_, ignored)) {
        if (entry.path().filename().string().front() == '.') {
            fs::remove(entry.path(), ignored);
        }
    }
}

void FleetState::remove_others() const
{
    std::error_code ignored;
    for (const std::string& other : others()) {
        fs::remove_all(other, ignored);
    }
}

}  // namespace bgp_rehearse

// Fills the database of a fleet, router by router in the order of the plan.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>

#include "fleet/merge/sqlite.h"
#include "fleet/plan/plan.h"
#include "fleet/shard/result.h"

namespace bgp_rehearse {

class DatabaseWriter {
public:
    // The file is empty. Nothing is kept safe while it is written: it is thrown away when that fails.
    DatabaseWriter(const std::string& file, const Plan& plan);

    void add(const PlannedInput& input, const RouterResult& result);

    // Makes what finds things in the tables. Nothing can be added afterwards.
    void finish();

private:
    void add_router(const PlannedInput& input, const RouterResult& result);
    void add_finding(const RouterResult& result, std::size_t number);
    int64_t reason_of(const FleetFinding& finding);
    std::optional<int64_t> course_of(const RouterResult& result);

    Database database_;
    Statement router_;
    Statement reason_;
    Statement finding_;
    Statement place_;
    Statement course_;
    Statement course_step_;
    Statement change_;
    Statement error_;
    std::unordered_set<int64_t> reasons_;  // that are in the database
    std::unordered_set<int64_t> courses_;  // likewise
};

}  // namespace bgp_rehearse

// How the results of a fleet differ from those of an earlier database, router by router. Routers are the same by their
// names.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "fleet/merge/sqlite.h"

namespace bgp_rehearse {

// What became of a router, the worst first. Worse: a worse verdict, or at the same one more to look at and nothing less.
enum class Difference { Worse, Different, Better, Gone, New, Same };

inline constexpr std::array kDifferences = {"worse", "different", "better", "gone", "new", "same"};

struct RouterDifference {
    std::string name;
    Difference difference = Difference::Same;
    std::string before;            // the verdict; empty for a new router
    std::string after;             // empty for one that is gone
    std::vector<std::string> why;  // in words that other routers may share; empty for one that is new or gone
};

// One way to differ, and who does.
struct SharedDifference {
    Difference difference = Difference::Same;
    std::string why;
    std::size_t routers = 0;
    std::vector<std::string> examples;  // the first of them
};

struct Comparison {
    std::string baseline;  // the file
    std::array<std::size_t, kDifferences.size()> routers{};
    std::vector<RouterDifference> differing;  // in the order of names; not those that are the same
    std::vector<SharedDifference> shared;     // the worst first, then those of most routers
};

// Throws DatabaseError.
Comparison compare(const Database& before, const Database& after, const std::string& baseline);

}  // namespace bgp_rehearse

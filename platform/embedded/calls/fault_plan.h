// Failures on order: which calls of the C API shall fail, and how. A planned failure happens instead of the call's
// work.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "calls/function.h"
#include "confd_lib.h"

namespace bgp_platform::capi {

// How a planned call fails: result CONFD_ERR with this code, or CONFD_EOF (code CONFD_ERR_EOF).
struct PlannedFailure {
    int code = CONFD_ERR_INTERNAL;
    int result = CONFD_ERR;

    static PlannedFailure end_of_file() { return {CONFD_ERR_EOF, CONFD_EOF}; }
};

class FaultPlan {
public:
    // The n-th call from now (1 is the next), whatever it is; with `from_there` every later one too. Each use plans one
    // more.
    void fail_call(std::size_t n, PlannedFailure failure = {}, bool from_there = false);

    // Calls of a function whose path begins with, or is, `path` (empty: any path), the first `times` of them after
    // `skip` (times 0: all).
    void fail(Function function, std::string path = {}, PlannedFailure failure = {}, std::size_t times = 0,
              std::size_t skip = 0);

    void clear() noexcept;
    bool active() const noexcept { return !by_count_.empty() || !by_match_.empty(); }
    std::size_t seen() const noexcept { return seen_; }  // calls since the last clear()

    // For the border of the C API: whether the path of a function's calls matters (making its text takes time), and
    // whether, and how, a call fails, which counts it.
    bool looks_at_path(Function function) const noexcept;
    std::optional<PlannedFailure> next(Function function, const std::string& path);

private:
    struct ByCount {
        std::size_t n;
        PlannedFailure failure;
        bool from_there;
    };
    struct ByMatch {
        Function function;
        std::string path;
        PlannedFailure failure;
        std::size_t times;
        std::size_t skip;
        std::size_t matched = 0;
    };
    std::size_t seen_ = 0;
    std::vector<ByCount> by_count_;
    std::vector<ByMatch> by_match_;
};

}  // namespace bgp_platform::capi

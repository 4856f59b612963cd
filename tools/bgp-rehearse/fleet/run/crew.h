// The worker processes of `bgp-rehearse fleet run`: each takes the next shard when it is done with one.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <memory>
#include <string>
#include <vector>

#include "base/child.h"
#include "base/shared_memory.h"

namespace bgp_rehearse {

// How far the crew is.
struct CrewCounts {
    std::size_t done = 0;  // routers
    std::size_t stops = 0;
};

class Crew {
public:
    // What a worker does with a shard, in its own process; it counts each router.
    class Member {
    public:
        virtual ~Member() = default;
        virtual void work(std::size_t shard) = 0;
    };
    using MakeMember = std::function<std::unique_ptr<Member>(const InterruptGuard& interrupts)>;

    // Called for each router by the process that has its result's line.
    void count(const std::string& line) const;

    CrewCounts counts() const;

    // Has `jobs` processes work the shards, and calls `on_tick` a few times a second. When a signal comes, or one of them
    // ends without having worked all it took, the others are ended, too: throws Interrupted, or the CommandError that it
    // threw.
    void work(const InterruptGuard& interrupts, const std::vector<std::size_t>& shards, std::size_t jobs,
              const MakeMember& make_member, const std::function<void()>& on_tick) const;

private:
    struct Shared {
        std::atomic<std::size_t> next{0};  // among the shards
        std::atomic<std::size_t> done{0};
        std::atomic<std::size_t> stops{0};
        std::atomic<bool> failed{false};
        int status = 0;  // of the error that came first, and its text
        char text[2048] = {};
    };
    void note(int status, const std::string& text) const;
    int be_member(const std::vector<std::size_t>& shards, const MakeMember& make_member) const;

    SharedMemory<Shared> shared_;
};

}  // namespace bgp_rehearse

// What the parent sees of an upgrade while it runs, and can still tell of it when its process is gone.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/shared_memory.h"
#include "device.h"
#include "keypath/last_calls.h"
#include "report/model.h"
#include "run/last_lines.h"

namespace bgp_rehearse {

// Made before the fork. The child notes its calls and log lines in memory that both share.
class Watch {
public:
    // The child's side.
    void start(bgp_platform::Device& device) const noexcept { device.watch(&shared_->calls); }
    void take_line(std::string_view line) const noexcept { shared_->lines.add(line); }
    void note_out_of_memory() const noexcept { shared_->out_of_memory = kTrue; }  // of MemoryLimit

    // The parent's side; the device is the one that the child had a copy of.
    std::size_t calls() const noexcept { return shared_->calls.calls(); }
    CallTotals totals() const noexcept;
    bool out_of_memory() const noexcept { return shared_->out_of_memory == kTrue; }
    LastSeen seen(const bgp_platform::Device& device) const;

private:
    static constexpr uint64_t kTrue = 0x6f75745f6d656d21;  // no value that stray writes make

    struct Shared {
        bgp_platform::capi::LastCalls calls;
        LastLines lines;
        std::atomic<uint64_t> out_of_memory{0};
    };
    SharedMemory<Shared> shared_;
};

}  // namespace bgp_rehearse

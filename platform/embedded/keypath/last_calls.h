// What a program called last, in memory that outlives its process: for a parent that asks where its child had come to.
//
// All of it is plain bytes, but for nodes of the schema, which a child shares with its parent when they were made before
// the fork. To note a call costs some hundred instructions and makes no text; that is left to the parent.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "calls/function.h"
#include "store/configuration.h"

namespace bgp_platform::capi {

// A node and the keys on the way to it, or, for a keypath that led nowhere, its text.
class LastPlace {
public:
    // `below`: the key of an entry of the list that the path names.
    void note(const store::Path& path, const std::vector<schema::Value>& below) noexcept;
    void note(std::string_view text) noexcept;

    // As a keypath. Keys that were too long end in "…"; an entry that was picked by its position shows with the key that
    // it has in the stored configuration. Empty when nothing was noted, or when the bytes are no place.
    std::string text(const store::Configuration& stored) const;

private:
    static constexpr std::size_t kMostKeys = 16;
    static constexpr std::size_t kMostText = 200;

    void add(const schema::Value& key) noexcept
    {
        if (key_count_ < kMostKeys) {
            key.flatten(&keys_[key_count_]);
        }
        ++key_count_;
    }
    store::Selector selector(const schema::Node& list, std::size_t first) const;
    void append_keys(const store::Selector& selector, std::size_t first, std::string* text) const;
    bool is_position(std::size_t key) const noexcept { return (positions_ >> key & 1U) != 0; }

    const schema::Node* node_ = nullptr;
    uint32_t positions_ = 0;  // which of the keys are positions, as bits
    uint8_t key_count_ = 0;   // beyond kMostKeys, too
    uint8_t text_size_ = 0;   // kMostText + 1 where it was longer
    std::array<schema::Value::Flat, kMostKeys> keys_{};
    std::array<char, kMostText> text_{};
};

class LastCalls {
public:
    // The program's side: a call begins, goes to a place, and ends.
    void begin(Function function) noexcept
    {
        function_ = static_cast<uint8_t>(function);
        under_way_ = 1;
    }
    void go_to(const store::Path& path, const std::vector<schema::Value>& below) noexcept
    {
        if (Place* const place = of_effect()) {
            place->next().note(path, below);
            place->publish();
        }
    }
    void go_to(std::string_view text) noexcept
    {
        if (Place* const place = of_effect()) {
            place->next().note(text);
            place->publish();
        }
    }
    void end(bool failed) noexcept
    {
        under_way_ = 0;
        ++calls_[function_];
        failures_[function_] += failed ? 1 : 0;
    }

    // The other side. Keypaths as LastPlace::text() makes them.
    std::string read(const store::Configuration& stored) const { return reading_.last().text(stored); }
    std::string written(const store::Configuration& stored) const { return writing_.last().text(stored); }
    const char* function() const noexcept;  // of the call made last; empty: none was
    bool under_way() const noexcept { return under_way_ != 0; }
    std::size_t calls(Effect effect) const noexcept { return sum_of(calls_, effect); }
    std::size_t failures(Effect effect) const noexcept { return sum_of(failures_, effect); }
    std::size_t calls() const noexcept { return calls(Effect::Read) + calls(Effect::Write) + calls(Effect::Session); }

private:
    using Counts = std::array<std::size_t, kFunctions>;
    static constexpr uint8_t kNone = kFunctions;

    // The place noted last stays whole while the next one is being noted.
    class Place {
    public:
        LastPlace& next() noexcept { return places_[noted_.load(std::memory_order_relaxed) & 1U]; }
        void publish() noexcept { noted_.store(noted_.load(std::memory_order_relaxed) + 1, std::memory_order_release); }
        const LastPlace& last() const noexcept { return places_[(noted_.load(std::memory_order_acquire) + 1) & 1U]; }

    private:
        std::array<LastPlace, 2> places_;
        std::atomic<unsigned int> noted_{0};
    };

    Place* of_effect() noexcept
    {
        const Effect effect = effect_of(static_cast<Function>(function_));
        return effect == Effect::Session ? nullptr : effect == Effect::Read ? &reading_ : &writing_;
    }
    static std::size_t sum_of(const Counts& counts, Effect effect) noexcept;

    // Numbers, not an enumeration and a bool: the process that wrote may have written anything anywhere.
    uint8_t function_ = kNone;
    uint8_t under_way_ = 0;
    Counts calls_{};
    Counts failures_{};
    Place reading_;
    Place writing_;
};

}  // namespace bgp_platform::capi

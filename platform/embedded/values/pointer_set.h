// A set of pointers for what comes and goes with nearly every read: an open table without memory of its own per pointer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace bgp_platform::values {

class PointerSet {
public:
    std::size_t size() const noexcept { return size_; }

    void insert(void* pointer)
    {
        if ((size_ + 1) * 2 > table_.size()) {
            grow();
        }
        void*& place = table_[place_of(pointer)];
        size_ += place == nullptr;
        place = pointer;
    }

    // A pointer that is not in the set may be given, null too.
    void erase(void* pointer) noexcept
    {
        if (size_ == 0 || pointer == nullptr) {
            return;
        }
        std::size_t hole = place_of(pointer);
        if (table_[hole] == nullptr) {
            return;
        }
        --size_;
        // Those behind move up unless the hole lies before where they are looked for first.
        for (std::size_t next = following(hole); table_[next] != nullptr; next = following(next)) {
            const std::size_t wanted = first_place(table_[next]);
            if (((next - wanted) & mask()) >= ((next - hole) & mask())) {
                table_[hole] = table_[next];
                hole = next;
            }
        }
        table_[hole] = nullptr;
    }

private:
    static constexpr std::size_t kFirstPlaces = 64;
    static constexpr unsigned kPageBits = 12;

    std::size_t mask() const noexcept { return table_.size() - 1; }
    std::size_t following(std::size_t place) const noexcept { return (place + 1) & mask(); }

    // What lies together in memory, mostly used one after the other, does so in the table; pages keep out of each
    // other's way, so that buffers at the same place of their pages do not all meet.
    std::size_t first_place(const void* pointer) const noexcept
    {
        const auto address = reinterpret_cast<uintptr_t>(pointer);
        return static_cast<std::size_t>(address / alignof(std::max_align_t) + (address >> kPageBits) * 17U) & mask();
    }

    // Where the pointer is, or the free place that it would take.
    std::size_t place_of(const void* pointer) const noexcept
    {
        std::size_t place = first_place(pointer);
        while (table_[place] != nullptr && table_[place] != pointer) {
            place = following(place);
        }
        return place;
    }

    void grow()
    {
        std::vector<void*> smaller(table_.empty() ? kFirstPlaces : table_.size() * 2);
        smaller.swap(table_);
        for (void* const pointer : smaller) {
            if (pointer != nullptr) {
                table_[place_of(pointer)] = pointer;
            }
        }
    }

    std::vector<void*> table_;  // a power of two of places, at most half of them taken
    std::size_t size_ = 0;
};

}  // namespace bgp_platform::values

// References that share what they point to until one of them writes: the base of copy on write in the store.
//
// Everything belongs to one thread, so the counts are plain integers.
#pragma once

#include <cstdint>
#include <utility>

namespace bgp_platform::store {

template <typename T>
class CountedRef;

// What a CountedRef can point to derives from this, and offers two static functions: `T* copy(const T&)`, a new object
// of its own with one reference, and `void destroy(T*)`.
class Counted {
public:
    Counted() noexcept = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    template <typename T>
    friend class CountedRef;
    uint32_t references_ = 1;
};

// A counted reference, or none. A copy shares the target.
template <typename T>
class CountedRef {
public:
    CountedRef() noexcept = default;
    explicit CountedRef(T* fresh) noexcept : target_(fresh) {}  // takes over the one reference of a new target
    CountedRef(const CountedRef& other) noexcept : target_(other.target_)
    {
        if (target_ != nullptr) {
            ++target_->references_;
        }
    }
    CountedRef(CountedRef&& other) noexcept : target_(std::exchange(other.target_, nullptr)) {}
    CountedRef& operator=(CountedRef other) noexcept
    {
        std::swap(target_, other.target_);
        return *this;
    }
    ~CountedRef()
    {
        if (target_ != nullptr && --target_->references_ == 0) {
            T::destroy(target_);
        }
    }

    explicit operator bool() const noexcept { return target_ != nullptr; }
    const T& operator*() const noexcept { return *target_; }
    const T* operator->() const noexcept { return target_; }
    const T* get() const noexcept { return target_; }

    // The target for writing: this reference's own, copied first when it is shared.
    T& edit()
    {
        if (target_->references_ > 1) {
            *this = CountedRef(T::copy(*target_));
        }
        return *target_;
    }

private:
    T* target_ = nullptr;
};

}  // namespace bgp_platform::store

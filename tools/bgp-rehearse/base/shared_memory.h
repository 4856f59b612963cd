// An object that a process and its later children have in common, and that is still there when a child is gone.
#pragma once

#include <sys/mman.h>

#include <cerrno>
#include <new>
#include <system_error>
#include <type_traits>

namespace bgp_rehearse {

template <typename Object>
class SharedMemory {
    static_assert(std::is_trivially_destructible_v<Object>, "a child may end anywhere");

public:
    SharedMemory() : memory_(mmap(nullptr, sizeof(Object), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))
    {
        if (memory_ == MAP_FAILED) {
            throw std::system_error(errno, std::generic_category(), "no memory to share with the upgrade's process");
        }
        object_ = new (memory_) Object;
    }
    ~SharedMemory() { munmap(memory_, sizeof(Object)); }
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    Object* get() const noexcept { return object_; }
    Object* operator->() const noexcept { return object_; }

private:
    void* memory_;
    Object* object_ = nullptr;
};

}  // namespace bgp_rehearse

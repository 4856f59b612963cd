// Counts what the program has on the heap, by replacing the global operators new and delete. To be included by the one
// source of a test that measures memory.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace heap_meter {

inline std::size_t bytes = 0;   // in use, as large as malloc made the blocks
inline std::size_t blocks = 0;  // in use

}  // namespace heap_meter

void* operator new(std::size_t size)
{
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    heap_meter::bytes += malloc_usable_size(block);
    ++heap_meter::blocks;
    return block;
}

void operator delete(void* block) noexcept
{
    if (block != nullptr) {
        heap_meter::bytes -= malloc_usable_size(block);
        --heap_meter::blocks;
        std::free(block);
    }
}

void operator delete(void* block, std::size_t /*size*/) noexcept
{
    operator delete(block);
}

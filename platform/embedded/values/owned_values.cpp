#include "values/owned_values.h"

#include <cstdlib>
#include <new>

#include "values/pointer_set.h"

namespace bgp_platform::values {

namespace {

PointerSet& live()
{
    static auto* const set = new PointerSet;  // outlives every static object that may still release a value
    return *set;
}

// Into the live set; what finds no place there is freed.
template <typename T>
T* tracked(void* memory)
{
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    try {
        track(memory);
    } catch (const std::bad_alloc&) {
        std::free(memory);
        throw;
    }
    return static_cast<T*>(memory);
}

}  // namespace

unsigned char* own_bytes(std::string_view bytes)
{
    auto* const copy = tracked<unsigned char>(std::malloc(bytes.size() + 1));
    bytes.copy(reinterpret_cast<char*>(copy), bytes.size());
    copy[bytes.size()] = 0;
    return copy;
}

void own_text(confd_value_t* value, std::string_view text)
{
    unsigned char* const copy = own_bytes(text);
    CONFD_SET_BUF(value, copy, text.size());
}

void own_octets(confd_value_t* value, std::string_view octets)
{
    unsigned char* const copy = own_bytes(octets);
    CONFD_SET_BINARY(value, copy, octets.size());
}

confd_value_t* own_array(std::size_t count)
{
    return tracked<confd_value_t>(std::calloc(count == 0 ? 1 : count, sizeof(confd_value_t)));
}

void track(void* memory)
{
    live().insert(memory);
}

void forget(void* memory) noexcept
{
    live().erase(memory);
}

std::size_t live_owned_values() noexcept
{
    return live().size();
}

}  // namespace bgp_platform::values

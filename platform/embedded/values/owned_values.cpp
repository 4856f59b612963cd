#include "values/owned_values.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "values/pointer_set.h"

namespace bgp_platform::values {

namespace {

PointerSet& live()
{
    static auto* const set = new PointerSet;  // outlives every static object that may still release a value
    return *set;
}

unsigned char* owned_copy(std::string_view bytes)
{
    auto* const copy = static_cast<unsigned char*>(std::malloc(bytes.size() + 1));
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::memcpy(copy, bytes.data(), bytes.size());
    copy[bytes.size()] = 0;
    track(copy);
    return copy;
}

}  // namespace

void own_text(confd_value_t* value, std::string_view text)
{
    CONFD_SET_BUF(value, owned_copy(text), static_cast<unsigned int>(text.size()));
}

void own_octets(confd_value_t* value, std::string_view octets)
{
    CONFD_SET_BINARY(value, owned_copy(octets), static_cast<unsigned int>(octets.size()));
}

confd_value_t* own_array(std::size_t count)
{
    auto* const array = static_cast<confd_value_t*>(std::calloc(count == 0 ? 1 : count, sizeof(confd_value_t)));
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    track(array);
    return array;
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

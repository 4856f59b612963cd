// The buffers that values handed to the program own, and the count of those it has not given back.
//
// A read, a duplicate and an address conversion fill a confd_value_t through these functions; confd_free_value and its
// kin release through release(). Buffers are malloc'ed and NUL-terminated beyond their size, so that a program may also
// pass them to free(). One live set for the process.
#pragma once

#include <cstddef>
#include <string_view>

#include "confd_lib.h"

namespace bgp_platform::values {

// What asks for memory here throws std::bad_alloc when there is none, and leaves *value alone then.

// An owned copy of the bytes.
unsigned char* own_bytes(std::string_view bytes);

// Fill *value with an owned copy of the bytes: C_BUF, and C_BINARY.
void own_text(confd_value_t* value, std::string_view text);
void own_octets(confd_value_t* value, std::string_view octets);

// A zeroed, owned array of `count` elements for C_LIST and cdb_get_list. At least one element is allocated.
confd_value_t* own_array(std::size_t count);

// malloc'ed memory enters and leaves the live set. forget() of a pointer that is not in the set is allowed: programs
// build values over memory of their own and release them by the same calls.
void track(void* memory);
void forget(void* memory) noexcept;

std::size_t live_owned_values() noexcept;

}  // namespace bgp_platform::values

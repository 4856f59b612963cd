// What the contract says of a recorded call: its call site, and what it means when a call fails there.
#pragma once

#include <string>
#include <string_view>

#include "contract/step.h"

namespace bgp_rehearse {

// A keypath with nothing left between its braces and brackets. A quoted key may hold braces.
std::string without_keys(std::string_view keypath);

// The call site of a step by the C API's function and the keypath without keys ("" where the call names none); null when
// the contract has no such site. The calls that update_rm_index makes for each re-keyed table alike have one site for
// all tables, whose path is what follows the table's.
const bgp_contract::CallSite* find_call_site(std::string_view step, std::string_view function,
                                             std::string_view path_without_keys);

struct FailureMeaning {
    bgp_contract::Class kind;
    const char* sentence;
};

// What a failure with this error (confd_errno) means. `second_try`: the call before it at this site has failed too, and
// was a first try; it matters only where the meaning is one of two tries (bgp_contract::When::SecondTry).
FailureMeaning meaning_of(const bgp_contract::Meaning& meaning, int error, bool second_try = false) noexcept;

}  // namespace bgp_rehearse

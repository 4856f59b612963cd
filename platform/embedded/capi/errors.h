// How a call of the C API fails: confd_errno, and the text of confd_lasterr().
#pragma once

#include <new>
#include <stdexcept>
#include <string_view>

namespace bgp_platform::capi {

// Sets confd_errno, and confd_lasterr() to function, code, path and detail, the last two where there are any; without
// memory for that, to function and code. Returns CONFD_ERR.
int fail_call(std::string_view function, int code, std::string_view path, std::string_view detail) noexcept;

// What `work` gives, or what `failed` gives when memory ran out in it: no exception leaves a function of the C API.
template <typename Work, typename Failed>
int unless_memory_ends(Work&& work, Failed&& failed) noexcept
{
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return failed();
    } catch (const std::length_error&) {  // more than a string or an array can hold
        return failed();
    }
}

}  // namespace bgp_platform::capi

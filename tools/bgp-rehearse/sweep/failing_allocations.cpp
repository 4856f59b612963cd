#include "sweep/failing_allocations.h"

#include <link.h>
#include <unwind.h>

#include <cstdint>
#include <cstdlib>
#include <new>

namespace bgp_rehearse::failing_allocations {

namespace {

// Where an object file is loaded.
struct Range {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;

    bool holds(std::uintptr_t address) const noexcept { return begin <= address && address < end; }
};

struct Search {
    const char* name;  // part of the file's path; "" for the executable, whose entry has no name
    Range range;
};

int take_object(dl_phdr_info* info, size_t /*size*/, void* data)
{
    auto* const search = static_cast<Search*>(data);
    const std::string name = info->dlpi_name;
    if (search->name[0] == '\0' ? !name.empty() : name.find(search->name) == std::string::npos) {
        return 0;
    }
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const ElfW(Phdr)& header = info->dlpi_phdr[i];
        if (header.p_type == PT_LOAD) {
            const std::uintptr_t begin = info->dlpi_addr + header.p_vaddr;
            search->range.begin = search->range.begin == 0 ? begin : search->range.begin;
            search->range.end = begin + header.p_memsz;
        }
    }
    return 1;
}

Range find_object(const char* name)
{
    Search search{name, {}};
    dl_iterate_phdr(take_object, &search);
    return search.range;
}

struct Watch {
    bool on = false;
    std::size_t seen = 0;
    std::size_t refused = 0;
    Range library;
    Range executable;
    Range cpp_library;
};

Watch& watched() noexcept
{
    static Watch watch;
    return watch;
}

// The first caller that is neither this file nor the C++ library.
_Unwind_Reason_Code take_caller(_Unwind_Context* context, void* caller)
{
    const std::uintptr_t at = _Unwind_GetIP(context);
    if (watched().executable.holds(at) || watched().cpp_library.holds(at)) {
        return _URC_NO_REASON;
    }
    *static_cast<std::uintptr_t*>(caller) = at;
    return _URC_NORMAL_STOP;
}

bool asked_by_library(const Watch& watch) noexcept
{
    std::uintptr_t caller = 0;
    _Unwind_Backtrace(take_caller, &caller);
    return watch.library.holds(caller);
}

bool refused() noexcept
{
    Watch& watch = watched();
    if (!watch.on) {
        return false;
    }
    watch.on = false;  // the search for the caller may allocate
    const bool counts = asked_by_library(watch);
    const bool now = counts && ++watch.seen == watch.refused;
    watch.on = !now;  // one is enough
    return now;
}

}  // namespace

void watch(const std::string& library, std::size_t n)
{
    Watch& watch = watched();
    watch.library = find_object(library.c_str());
    watch.executable = find_object("");
    watch.cpp_library = find_object("/libstdc++.so");
    watch.seen = 0;
    watch.refused = n;
    watch.on = true;
}

std::size_t stop() noexcept
{
    watched().on = false;
    return watched().seen;
}

}  // namespace bgp_rehearse::failing_allocations

// The replacements, for the whole process. All memory is malloc's, so that free() gives it back. AddressSanitizer keeps
// its own calloc and strndup.

void* operator new(std::size_t size)
{
    void* const memory = operator new(size, std::nothrow);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

// A handler for memory that ran out is asked once, and not where that is by order.
void* operator new(std::size_t size, const std::nothrow_t& /*kind*/) noexcept
{
    if (bgp_rehearse::failing_allocations::refused()) {
        return nullptr;
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (const std::new_handler handler = memory == nullptr ? std::get_new_handler() : nullptr) {
        handler();
    }
    return memory;
}

// As the C++ library has it; a sanitizer brings one of its own.
void* operator new[](std::size_t size)
{
    return operator new(size);
}

#if defined(__SANITIZE_ADDRESS__)  // GCC's word for it
#define BGP_REHEARSE_SANITIZED_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define BGP_REHEARSE_SANITIZED_MEMORY
#endif
#endif
#if !defined(BGP_REHEARSE_SANITIZED_MEMORY)
extern "C" void* __libc_calloc(size_t count, size_t size);

extern "C" void* calloc(size_t count, size_t size)
{
    return bgp_rehearse::failing_allocations::refused() ? nullptr : __libc_calloc(count, size);
}

extern "C" char* __strndup(const char* text, size_t size);

extern "C" char* strndup(const char* text, size_t size)
{
    return bgp_rehearse::failing_allocations::refused() ? nullptr : __strndup(text, size);
}
#endif

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}

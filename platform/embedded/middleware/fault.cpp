// Faults: reports of broken invariants, call stacks, and failed assertions. The device of the process keeps them, a
// call stack as a count alone.
//
// A failed assertion is caught in place of libc's own function, so that a rehearsal can tell of it; what it prints and
// how it ends the process stays libc's way.
#include <errno.h>

#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "middleware/format.h"
#include "nzmw_backtrace.h"
#include "nzmw_fault.h"
#include "registry.h"

namespace {

using bgp_platform::Fault;

std::string text_of(const char* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

void report(Fault::Kind kind, int severity, const char* function, const char* source, unsigned int line,
            const char* text) noexcept
{
    bgp_platform::DeviceState* const device = bgp_platform::Registry::instance().current();
    if (device != nullptr) {
        bgp_platform::report_or_lose([&] {
            device->reports.add_fault({kind, severity, text_of(function), text_of(source), line, text_of(text)});
        });
    }
}

}  // namespace

extern "C" {

void nzmw_gen_fault(int severity, const char* function, const char* source, int line, const char* text)
{
    report(Fault::Kind::Fault, severity, function, source, static_cast<unsigned int>(line), text);
}

void nzmw_print_backtrace(void)
{
    bgp_platform::DeviceState* const device = bgp_platform::Registry::instance().current();
    if (device != nullptr) {
        ++device->reports.backtraces;
    }
}

void __assert_fail(const char* assertion, const char* file, unsigned int line, const char* function) noexcept
{
    report(Fault::Kind::Assertion, 0, function, file, line, assertion);
    const char* const program = program_invocation_short_name;
    std::fprintf(stderr, "%s%s%s:%u: %s%sAssertion `%s' failed.\n", program, program[0] == '\0' ? "" : ": ", file, line,
                 function == nullptr ? "" : function, function == nullptr ? "" : ": ", assertion);
    std::fflush(stderr);
    std::abort();
}

}  // extern "C"

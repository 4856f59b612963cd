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

#include "nzmw_backtrace.h"
#include "nzmw_fault.h"
#include "registry.h"

namespace {

using bgp_platform::Fault;

std::string text_of(const char* text)
{
    return text == nullptr ? std::string() : std::string(text);
}

void report(const Fault& fault)
{
    bgp_platform::DeviceState* const device = bgp_platform::Registry::instance().current();
    if (device != nullptr) {
        device->reports.add_fault(fault);
    }
}

}  // namespace

extern "C" {

void nzmw_gen_fault(int severity, const char* function, const char* source, int line, const char* text)
{
    Fault fault;
    fault.severity = severity;
    fault.function = text_of(function);
    fault.source = text_of(source);
    fault.line = static_cast<unsigned int>(line);
    fault.text = text_of(text);
    report(fault);
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
    Fault fault;
    fault.kind = Fault::Kind::Assertion;
    fault.function = text_of(function);
    fault.source = text_of(file);
    fault.line = line;
    fault.text = text_of(assertion);
    report(fault);
    const char* const program = program_invocation_short_name;
    std::fprintf(stderr, "%s%s%s:%u: %s%sAssertion `%s' failed.\n", program, program[0] == '\0' ? "" : ": ", file, line,
                 function == nullptr ? "" : function, function == nullptr ? "" : ": ", assertion);
    std::fflush(stderr);
    std::abort();
}

}  // extern "C"

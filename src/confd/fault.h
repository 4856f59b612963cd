// The end of the process on a broken invariant or, in the code shared with the daemon, on a failed write: the call
// stack, a fault report, exit status 1.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "confd_lib.h"
#include "nzmw_backtrace.h"
#include "nzmw_fault.h"

namespace confd {

constexpr int kFaultSeverity = 1;
constexpr std::size_t kFaultTextSize = 350;

// Reports the text as it stands. `function` is the short name, `source` the source path without extension.
[[noreturn]] inline void fault(const char* function, const char* source, int line, const char* text)
{
    nzmw_print_backtrace();
    nzmw_gen_fault(kFaultSeverity, function, source, line, text);
    std::exit(1);
}

// Reports the last error of ConfD, cut to what the fault manager takes.
[[noreturn]] inline void fault_last_error(const char* function, const char* source, int line)
{
    nzmw_print_backtrace();
    char text[kFaultTextSize];
    std::snprintf(text, sizeof text, "error[%d]: %s \n", confd_errno, confd_lasterr());
    nzmw_gen_fault(kFaultSeverity, function, source, line, text);
    std::exit(1);
}

// For a C entry point, whose caller knows no exceptions: reports the one that is being handled, memory that ran out
// among them. Only for a catch block.
[[noreturn]] inline void fault_exception(const char* function, const char* source, int line)
{
    try {
        throw;
    } catch (const std::exception& error) {
        fault(function, source, line, error.what());
    } catch (...) {
        fault(function, source, line, "an exception of a type that is not known");
    }
}

}  // namespace confd

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

// Reports the exception that is being handled, memory that ran out among them. Only for a catch block.
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

// What an exported function that an exception could leave ends with, so that none crosses the library's border: its
// callers know none. An exception ends in the fault exit, reported with the source path (the kSource of the file), the
// guard's own line and `function`: __func__, or a name of its own where several functions of the source path share
// that. The function's body is a try block; in a constructor that includes the making of its members:
//
//     BaseEntry::BaseEntry(std::string table_path)
//     try : table_path_(std::move(table_path)) {
//     }
//     BGP_FAULT_ON_EXCEPTION(__func__)
//
// In a constant member function try block and guard stand inside the braces: the linters read them there alone.
#define BGP_FAULT_ON_EXCEPTION(function)                       \
    catch (...)                                                \
    {                                                          \
        ::confd::fault_exception(function, kSource, __LINE__); \
    }

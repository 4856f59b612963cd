// The type check: before a value read is used, its type tag must be the expected one. Another tag is a failed
// assertion, in release builds too, which names the expression, the source path without extension, a fixed line and the
// signature of the function in which the check stands.
//
// Reported positions, of checks as of faults and trace lines: a source path, a line and a function. The source path is
// the kSource of the file, one for all files that write one class or one step. A line is of one of two kinds:
// - Fixed, a number in the source, where readers of reports know it. It stays when the code moves, and stands once in
//   its source path.
// - The place's own, __LINE__, everywhere else. It tells the place in one release only; code that works for a function
//   of another file tells the line at which it was called.
// As several files may share a source path, it is the function that finds the file: each that reports is told under a
// name that no other of its source path has, and gives one of its own where __func__ would be shared. Overloads have one
// name and stand in one file.
#pragma once

#include <cstddef>
#include <cstdio>

#include "confd_lib.h"

// As libc has it; <cassert> declares it only in builds with assertions.
extern "C" void __assert_fail(const char* assertion, const char* file, unsigned int line, const char* function) noexcept
    __attribute__((__noreturn__));

namespace confd {

constexpr std::size_t kSignatureSize = 512;

// Makes a function's signature as Clang spells it that of GCC, in place: Clang sets a blank before `*` and `&`.
inline void make_plain(char* signature)
{
    std::size_t size = 0;
    for (std::size_t i = 0; signature[i] != '\0'; ++i) {
        if (signature[i] != ' ' || (signature[i + 1] != '*' && signature[i + 1] != '&')) {
            signature[size++] = signature[i];
        }
    }
    signature[size] = '\0';
}

// Takes no memory from the heap: a check that fails when there is none left is told all the same.
[[noreturn]] inline void type_check_failed(const char* expression, const char* source, unsigned int line,
                                           const char* signature)
{
    char plain[kSignatureSize];
    std::snprintf(plain, sizeof plain, "%s", signature);
    make_plain(plain);
    __assert_fail(expression, source, line, plain);
}

// Where a check stands: what its failure tells, for code that checks on behalf of a function of another file.
struct Place {
    const char* source;
    unsigned int line;
    const char* signature;
};

}  // namespace confd

// Checks that *pointer has the type tag `tag`. `line` is the line to report; the source path is the kSource of the
// file. To stand in the function whose signature is to be told, not in a lambda, and with the pointer spelled as it is
// to be told.
#define BGP_REQUIRE_TYPE(line, pointer, tag) \
    BGP_REQUIRE_TYPE_TOLD(__PRETTY_FUNCTION__, line, pointer, tag, "(" #pointer ")->type == " #tag)

// The same in code that works for several functions: tells the signature that it is given.
#define BGP_REQUIRE_TYPE_FOR(signature, line, pointer, tag) \
    BGP_REQUIRE_TYPE_TOLD(signature, line, pointer, tag, "(" #pointer ")->type == " #tag)

// The same on behalf of a function of another file, which gives its place, BGP_HERE.
#define BGP_REQUIRE_TYPE_AT(place, pointer, tag)                                                            \
    ((pointer)->type == (tag) ? static_cast<void>(0)                                                        \
                              : ::confd::type_check_failed("(" #pointer ")->type == " #tag, (place).source, \
                                                           (place).line, (place).signature))
#define BGP_HERE (::confd::Place{kSource, __LINE__, __PRETTY_FUNCTION__})

#define BGP_REQUIRE_TYPE_TOLD(signature, line, pointer, tag, expression) \
    ((pointer)->type == (tag) ? static_cast<void>(0) : ::confd::type_check_failed(expression, kSource, line, signature))

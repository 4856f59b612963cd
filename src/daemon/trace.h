// Trace lines of the code that the BGP daemon shares: category "bgp-app", with the source position of the line.
#pragma once

#include <zlog.h>

#include <cstring>

#include "nzmw_trace.h"

namespace trace_level {

constexpr int kLookup = 10;  // lookups and redistribution
constexpr int kAllocator = 11;
constexpr int kSoftFailure = 12;

}  // namespace trace_level

// BGP_TRACE(level, format, ...) speaks for the function in which it stands; BGP_TRACE_FOR for the one whose short name
// is given. The source path is the kSource of the file.
#define BGP_TRACE(level, ...) BGP_TRACE_FOR(__func__, level, __VA_ARGS__)
#define BGP_TRACE_FOR(function, level, ...)                                                                     \
    zlog(nzmw_trace_register_category("bgp-app"), kSource, sizeof kSource - 1, function, std::strlen(function), \
         __LINE__, level, __VA_ARGS__)

// The same to a category that the caller of an operation gave; null writes nothing. `function` as for BGP_TRACE_FOR.
#define BGP_TRACE_TO(category, function, level, ...) \
    ((category) == nullptr                           \
         ? static_cast<void>(0)                      \
         : zlog(category, kSource, sizeof kSource - 1, function, std::strlen(function), __LINE__, level, __VA_ARGS__))

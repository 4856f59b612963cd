/*
 * Trace lines of the device's middleware: categories of the zlog library, fetched by name, and a call that writes a
 * line without a source position. A line with a source position is written by zlog's own call on the same category.
 */
#pragma once

#include <stdarg.h>

#if defined(__GNUC__)
#define NZMW_TRACE_PRINTF_LIKE(format_, first_) __attribute__((format(printf, format_, first_)))
#else
#define NZMW_TRACE_PRINTF_LIKE(format_, first_)
#endif

#ifdef __cplusplus
extern "C" {
#endif

struct zlog_category_s;

/** A trace category; it is a category of zlog and can be given to zlog's calls. */
typedef struct zlog_category_s* nzmw_trace_category_t;

/**
 * Finds or makes the trace category of a name. The same name gives the same category.
 *
 * @param name the category's name, NUL-terminated, copied
 * @return the category, which the middleware owns and which stays valid for the life of the process; null on failure
 */
nzmw_trace_category_t nzmw_trace_register_category(const char* name);

/**
 * Writes one trace line.
 *
 * @param category where to; null writes nothing
 * @param level    how grave the line is; what a number means is the category's configuration
 * @param format   a printf format
 * @param args     its arguments; the list is used up
 */
void nzmw_vtrace(nzmw_trace_category_t category, int level, const char* format, va_list args)
    NZMW_TRACE_PRINTF_LIKE(3, 0);

#ifdef __cplusplus
}
#endif

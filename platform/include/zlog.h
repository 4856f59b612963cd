/*
 * The calls of the zlog logging library that the device's trace functions use, with their published signatures. A
 * system's own zlog.h takes the place of this file.
 */
#pragma once

#include <stdarg.h>
#include <stddef.h>

#if defined(__GNUC__)
#define ZLOG_PRINTF_LIKE(format_, first_) __attribute__((format(printf, format_, first_)))
#else
#define ZLOG_PRINTF_LIKE(format_, first_)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A named stream of lines; the logging library owns it. */
typedef struct zlog_category_s zlog_category_t;

/**
 * Starts the logging library.
 *
 * @param config the path of its configuration file; null means its built-in configuration
 * @return 0, or -1 when the configuration cannot be used
 */
int zlog_init(const char* config);

/** Stops the logging library and gives back all categories. */
void zlog_fini(void);

/**
 * Finds or makes the category of a name. The same name gives the same category.
 *
 * @param name the category's name, NUL-terminated, copied
 * @return the category, which stays valid until `zlog_fini`; null on failure
 */
zlog_category_t* zlog_get_category(const char* name);

/**
 * Writes one line.
 *
 * @param category where to; null writes nothing
 * @param file     the source file that speaks, not necessarily NUL-terminated
 * @param filelen  the length of file in octets
 * @param func     the function that speaks, not necessarily NUL-terminated
 * @param funclen  the length of func in octets
 * @param line     the line that speaks
 * @param level    how grave the line is; what a number means is the configuration's
 * @param format   a printf format, followed by its arguments
 */
void zlog(zlog_category_t* category, const char* file, size_t filelen, const char* func, size_t funclen, long line,
          int level, const char* format, ...) ZLOG_PRINTF_LIKE(8, 9);

/** Writes one line as `zlog` does, with the format's arguments as a list. */
void vzlog(zlog_category_t* category, const char* file, size_t filelen, const char* func, size_t funclen, long line,
           int level, const char* format, va_list args) ZLOG_PRINTF_LIKE(8, 0);

#ifdef __cplusplus
}
#endif

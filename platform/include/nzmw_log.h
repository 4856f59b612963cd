/*
 * Debug lines of the device's middleware. A log handle stands for one log; who owns it says where it comes from (the
 * upgrade's log: conf_updt_log.h).
 */
#pragma once

#include <stdarg.h>

#if defined(__GNUC__)
#define NZMW_LOG_PRINTF_LIKE(format_, first_) __attribute__((format(printf, format_, first_)))
#else
#define NZMW_LOG_PRINTF_LIKE(format_, first_)
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** A log of the device. */
typedef struct nzmw_log_s nzmw_log_t;

/**
 * Writes one debug line. The line is the formatted text as it is; nothing is added to it.
 *
 * @param log    the log to write to, borrowed
 * @param format a printf format, followed by its arguments
 */
void nzmw_log_debug(nzmw_log_t* log, const char* format, ...) NZMW_LOG_PRINTF_LIKE(2, 3);

/**
 * Writes one debug line as `nzmw_log_debug` does, with the format's arguments as a list.
 *
 * @param log    the log to write to, borrowed
 * @param format a printf format
 * @param args   its arguments; the list is used up
 */
void nzmw_vlog_debug(nzmw_log_t* log, const char* format, va_list args) NZMW_LOG_PRINTF_LIKE(2, 0);

#ifdef __cplusplus
}
#endif

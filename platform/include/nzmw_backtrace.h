/*
 * The call stack as the device's middleware records it ahead of a fault report.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/** Writes the call stack of the calling thread to the device's diagnostics. */
void nzmw_print_backtrace(void);

#ifdef __cplusplus
}
#endif

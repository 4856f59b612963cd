/*
 * Fault reports of the device's middleware. Whoever finds an invariant broken reports a fault and then ends the
 * process; the report itself returns.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Reports a fault to the device's fault manager and returns. Texts are copied.
 *
 * @param severity how grave it is; 1 is a fault that ends the process
 * @param function the name of the function that found it
 * @param source   the source path of that function
 * @param line     the line that reports it
 * @param text     what is broken
 */
void nzmw_gen_fault(int severity, const char* function, const char* source, int line, const char* text);

#ifdef __cplusplus
}
#endif

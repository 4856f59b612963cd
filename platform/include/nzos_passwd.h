/*
 * Decryption of the passwords that the device stores in its configuration.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The plain form of a stored password.
 *
 * @param text  the stored form, NUL-terminated, borrowed
 * @param flags 0; other values are reserved
 * @return the plain text, NUL-terminated and malloc'ed, which the caller gives back with free; null when text is not an
 *         encrypted password
 */
char* nzos_passwd_decrypt(const char* text, int flags);

#ifdef __cplusplus
}
#endif

/*
 * MAAPI: reads and writes in an open transaction. The transaction is named by the socket it was opened on and by its
 * handle; a write is seen by the later reads of the same transaction.
 *
 * Every call gives CONFD_OK or a number of 0 and above on success, and CONFD_ERR with `confd_errno` set on failure:
 * besides what each function says, CONFD_ERR_NOTRANS when the socket knows no such handle (the transaction has ended, too),
 * CONFD_ERR_BADPATH for a path that is none or picks an entry by its position, CONFD_ERR_BADTYPE for a key that its type
 * does not take, and CONFD_ERR_MALLOC when out of memory, after which a single write has changed nothing. Keypath formats
 * are described at `confd_format_keypath` in confd_lib.h. A path without a module prefix is looked up in the namespace set for the transaction.
 */
#pragma once

#include "confd_lib.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Chooses the namespace in which paths without a module prefix begin.
 *
 * @param sock      the MAAPI socket
 * @param thandle   the transaction's handle
 * @param hashed_ns the hash of the module's namespace
 * @return CONFD_OK, or CONFD_ERR with CONFD_ERR_NOEXISTS when no loaded module has that hash
 */
int maapi_set_namespace(int sock, int thandle, int hashed_ns);

/* Reads ------------------------------------------------------------------------------------------------------------ */

/**
 * Whether a node is there.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param fmt     the node's keypath
 * @return 1 when it is, 0 when it is not, CONFD_ERR on failure
 */
int maapi_exists(int sock, int thandle, const char* fmt, ...);

/**
 * Counts the entries of a list.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param fmt     the keypath of the list, without keys
 * @return the number of entries, 0 for an empty list, CONFD_ERR on failure
 */
int maapi_num_instances(int sock, int thandle, const char* fmt, ...);

/**
 * Reads a leaf, with its default where it has one and none is set, or a leaf-list as C_LIST.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param v       receives the value; the caller gives it back with `confd_free_value`
 * @param fmt     the leaf's keypath
 * @return CONFD_OK, or CONFD_ERR with CONFD_ERR_NOEXISTS when there is no value and CONFD_ERR_BADPATH when there is no
 *         such node; `v` is then left alone
 */
int maapi_get_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...);

/**
 * Reads a uint32 leaf.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param rval    receives the number, left alone on failure
 * @param fmt     the leaf's keypath
 * @return as `maapi_get_elem`, and CONFD_ERR with CONFD_ERR_BADTYPE when the leaf has another type
 */
int maapi_get_u_int32_elem(int sock, int thandle, uint32_t* rval, const char* fmt, ...);

/**
 * Reads a uint16 leaf.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param rval    receives the number, left alone on failure
 * @param fmt     the leaf's keypath
 * @return as `maapi_get_elem`, and CONFD_ERR with CONFD_ERR_BADTYPE when the leaf has another type
 */
int maapi_get_u_int16_elem(int sock, int thandle, uint16_t* rval, const char* fmt, ...);

/**
 * Reads an enumeration leaf.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param rval    receives the enumeration's integer, left alone on failure
 * @param fmt     the leaf's keypath
 * @return as `maapi_get_elem`, and CONFD_ERR with CONFD_ERR_BADTYPE when the leaf has another type
 */
int maapi_get_enum_value_elem(int sock, int thandle, int32_t* rval, const char* fmt, ...);

/* Writes ----------------------------------------------------------------------------------------------------------- */

/**
 * Creates a list entry, a leaf-list entry, a presence container or a leaf of type empty.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param fmt     the keypath of what to create, with its keys
 * @return CONFD_OK; CONFD_ERR with CONFD_ERR_ALREADY_EXISTS when it is there, CONFD_ERR_NOEXISTS when a parent entry is
 *         not
 */
int maapi_create(int sock, int thandle, const char* fmt, ...);

/**
 * Deletes a list entry with all below it, a leaf-list entry, a leaf, or all content of a container or list.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param fmt     the keypath of what to delete
 * @return CONFD_OK, or CONFD_ERR with CONFD_ERR_NOEXISTS when it is not there
 */
int maapi_delete(int sock, int thandle, const char* fmt, ...);

/**
 * Sets a leaf, or all of a leaf-list as a C_LIST. Never creates the entry that it belongs to.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param v       the value, copied
 * @param fmt     the leaf's keypath
 * @return CONFD_OK; CONFD_ERR with CONFD_ERR_NOEXISTS when the entry is not there, CONFD_ERR_BADTYPE when the leaf's
 *         type does not take the value (an enumeration number it does not have included)
 */
int maapi_set_elem(int sock, int thandle, confd_value_t* v, const char* fmt, ...);

/**
 * Sets a leaf from text, parsed by the leaf's type.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param strval  the text, NUL-terminated, copied
 * @param fmt     the leaf's keypath
 * @return as `maapi_set_elem`
 */
int maapi_set_elem2(int sock, int thandle, const char* strval, const char* fmt, ...);

/**
 * Sets many leaves below a container, list entry or list from tagged values, taken in order. C_XMLBEGIN with the name
 * of a list opens an entry, whose keys follow first and which is created if it is not there; C_XMLEND closes it.
 * C_XMLBEGINDEL with the keys and C_XMLEND deletes an entry. C_XMLBEGIN of a container opens it, and creates one with
 * presence, as the path does whose container it names. When the path is a list, the array begins with the keys. What
 * the array leaves out stays as it is; C_NOEXISTS deletes a leaf, or a presence container with its content. A leaf-list
 * is one C_LIST, a leaf of type empty a C_XMLTAG of its own name.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param values  the array, copied
 * @param n       the number of tagged values
 * @param fmt     the keypath below which to write
 * @return CONFD_OK; CONFD_ERR with CONFD_ERR_BADTYPE when a type does not fit or a key is C_NOEXISTS, CONFD_ERR_BADPATH
 *         when a tag does not belong where it stands, CONFD_ERR_NOEXISTS when an entry to delete is not there,
 *         CONFD_ERR_PROTOUSAGE when a value does not fit its node. The rows before the failing one stay written. An
 *         array with a missing or stray C_XMLEND is CONFD_ERR_PROTOUSAGE and writes nothing
 */
int maapi_set_values(int sock, int thandle, const confd_tag_value_t* values, int n, const char* fmt, ...);

/**
 * Gives a list entry other keys, keeping all below it. Onto its own keys it succeeds and changes nothing.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param tokey   the new keys in the schema's order, copied
 * @param n       their number
 * @param fmt     the keypath of the entry with its present keys
 * @return CONFD_OK; CONFD_ERR with CONFD_ERR_ALREADY_EXISTS when another entry has the new keys, CONFD_ERR_NOEXISTS
 *         when the entry is not there
 */
int maapi_move(int sock, int thandle, confd_value_t* tokey, int n, const char* fmt, ...);

/* Cursors ---------------------------------------------------------------------------------------------------------- */

/**
 * A walk over the entries of a list in the list's order. `keys` and `n` are for the program to read; `n` is 0 at the
 * end. The cursor owns its keys; they change with each step.
 */
struct maapi_cursor {
    confd_value_t keys[MAXKEYLEN];
    int n;
    /* The implementation's own. */
    int sock;
    int thandle;
    void* position;
};

/** Where `maapi_find_next` stops. */
enum confd_find_next_type {
    CONFD_FIND_NEXT = 0,        /* the first entry after the keys given */
    CONFD_FIND_SAME_OR_NEXT = 1 /* the entry with the keys given, else the first after them */
};

/**
 * Places a cursor before the first entry of a list. The cursor must be given back with `maapi_destroy_cursor`.
 *
 * @param sock    the MAAPI socket
 * @param thandle the transaction's handle
 * @param mc      the cursor, whose former content is overwritten
 * @param fmt     the keypath of the list, without keys
 * @return CONFD_OK or CONFD_ERR; a list below an entry that is not there has no entries
 */
int maapi_init_cursor(int sock, int thandle, struct maapi_cursor* mc, const char* fmt, ...);

/**
 * Steps to the entry after the present keys in the transaction as it is now, so that entries written behind the
 * cursor's place are met.
 *
 * @param mc the cursor; at the end its `n` is 0
 * @return CONFD_OK, at the end too, or CONFD_ERR, after which the cursor stands where it stood
 */
int maapi_get_next(struct maapi_cursor* mc);

/**
 * Places a cursor on an entry by keys. Fewer keys than the list has count as lying before every entry that begins with
 * them.
 *
 * @param mc       the cursor; its `n` is 0 when no entry is left
 * @param type     whether an entry with exactly these keys is wanted too
 * @param inkeys   the keys in the schema's order, copied
 * @param n_inkeys their number
 * @return CONFD_OK, at the end too, or CONFD_ERR
 */
int maapi_find_next(struct maapi_cursor* mc, enum confd_find_next_type type, confd_value_t* inkeys, int n_inkeys);

/**
 * Gives back what a cursor owns, its keys included.
 *
 * @param mc a cursor that `maapi_init_cursor` placed
 */
void maapi_destroy_cursor(struct maapi_cursor* mc);

#ifdef __cplusplus
}
#endif

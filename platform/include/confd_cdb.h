/*
 * CDB: reads of the stored configuration. A client connects a socket, starts a read session on it, and reads by keypath
 * until it ends the session.
 *
 * Every call gives CONFD_OK or a number of 0 and above on success, and CONFD_ERR with `confd_errno` set on failure:
 * besides what each function says, CONFD_ERR_BADPATH for a path that is none, CONFD_ERR_BADTYPE for a key that its type
 * does not take, CONFD_ERR_NOSESSION for a read without a session, and CONFD_ERR_MALLOC when out of memory. Keypath formats are described at `confd_format_keypath` in confd_lib.h. A path without a module prefix is looked up
 * in the namespace set for the session.
 */
#pragma once

#include "confd_lib.h"

#include <sys/socket.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What a connection to CDB is for. */
enum cdb_sock_type { CDB_DATA_SOCKET = 0 };

/** An older name of CDB_DATA_SOCKET. */
#define CDB_READ_SOCKET CDB_DATA_SOCKET

/** The datastore that a session reads. */
enum cdb_db_type { CDB_RUNNING = 1 };

/**
 * Connects a fresh stream socket to the daemon. A number that was closed and came back as another socket is fresh.
 *
 * @param sock   a socket of socket(..., SOCK_STREAM, 0), not connected yet
 * @param type   what the connection is for
 * @param srv    the daemon's address, borrowed for the call
 * @param srv_sz the size of that address in octets
 * @return CONFD_OK or CONFD_ERR; after a failure the caller must close the socket
 */
int cdb_connect(int sock, enum cdb_sock_type type, const struct sockaddr* srv, int srv_sz);

/**
 * Starts a read session on a connected socket; a socket has at most one.
 *
 * @param sock a socket that `cdb_connect` connected
 * @param db   the datastore to read
 * @return CONFD_OK or CONFD_ERR
 */
int cdb_start_session(int sock, enum cdb_db_type db);

/**
 * Ends the session of a socket, which stays connected.
 *
 * @param sock the session's socket
 * @return CONFD_OK, or CONFD_ERR with CONFD_ERR_NOEXISTS when there is none
 */
int cdb_end_session(int sock);

/**
 * Ends the session, if there is one, and closes the descriptor. The descriptor is closed also when the call reports an
 * error.
 *
 * @param sock a socket that was given to `cdb_connect`
 * @return CONFD_OK or CONFD_ERR
 */
int cdb_close(int sock);

/**
 * Chooses the namespace in which paths without a module prefix begin.
 *
 * @param sock      the session's socket
 * @param hashed_ns the hash of the module's namespace
 * @return CONFD_OK, or CONFD_ERR with CONFD_ERR_NOEXISTS when no loaded module has that hash
 */
int cdb_set_namespace(int sock, int hashed_ns);

/**
 * Reads a leaf, with its default where it has one and none is set, or a leaf-list as C_LIST. A leaf of type empty is a
 * C_XMLTAG of its own name.
 *
 * @param sock the session's socket
 * @param v    receives the value; the caller gives it back with `confd_free_value`
 * @param fmt  the leaf's keypath
 * @return CONFD_OK, or CONFD_ERR with CONFD_ERR_NOEXISTS when there is no value and CONFD_ERR_BADPATH when there is no
 *         such node; `v` is then left alone
 */
int cdb_get(int sock, confd_value_t* v, const char* fmt, ...);

/**
 * Reads an enumeration leaf.
 *
 * @param sock the session's socket
 * @param rval receives the enumeration's integer, left alone on failure
 * @param fmt  the leaf's keypath
 * @return as `cdb_get`, and CONFD_ERR with CONFD_ERR_BADTYPE when the leaf has another type
 */
int cdb_get_enum_value(int sock, int32_t* rval, const char* fmt, ...);

/**
 * Reads a uint16 leaf.
 *
 * @param sock the session's socket
 * @param rval receives the number, left alone on failure
 * @param fmt  the leaf's keypath
 * @return as `cdb_get`, and CONFD_ERR with CONFD_ERR_BADTYPE when the leaf has another type
 */
int cdb_get_u_int16(int sock, uint16_t* rval, const char* fmt, ...);

/**
 * Reads a leaf-list.
 *
 * @param sock   the session's socket
 * @param values receives a malloc'ed array; the caller gives back each value with `confd_free_value` and the array with
 *               free
 * @param n      receives the number of values
 * @param fmt    the leaf-list's keypath
 * @return CONFD_OK, or CONFD_ERR with CONFD_ERR_NOEXISTS when the leaf-list is empty
 */
int cdb_get_list(int sock, confd_value_t** values, int* n, const char* fmt, ...);

/**
 * Whether a node is there.
 *
 * @param sock the session's socket
 * @param fmt  the node's keypath
 * @return 1 when it is, 0 when it is not, CONFD_ERR on failure
 */
int cdb_exists(int sock, const char* fmt, ...);

/**
 * Counts the entries of a list or leaf-list.
 *
 * @param sock the session's socket
 * @param fmt  the keypath of the list, without keys
 * @return the number of entries, 0 for an empty list, CONFD_ERR on failure
 */
int cdb_num_instances(int sock, const char* fmt, ...);

/**
 * Reads consecutive list entries. Entry i is stored from `values[i * n]` on: the entry's nodes in the schema's order,
 * each as its value (its default where it has one and none is set), C_NOEXISTS for an absent leaf or for a list, C_LIST
 * for a leaf-list, C_XMLTAG for a container followed by the container's nodes, one single C_NOEXISTS for a presence
 * container that is not there. Of an entry with more than n values the first n are stored. When the call fails there is
 * nothing to give back.
 *
 * @param sock   the session's socket
 * @param values an array of at least n * nobj values; the caller gives back each value with `confd_free_value`
 * @param n      how many values each entry has room for
 * @param ix     the position of the first entry, from 0
 * @param nobj   how many entries to read
 * @param fmt    the keypath of the list, without keys
 * @return the highest number of values that any entry has, which can exceed n; CONFD_ERR with CONFD_ERR_NOEXISTS when
 *         the range passes the end of the list
 */
int cdb_get_objects(int sock, confd_value_t* values, int n, int ix, int nobj, const char* fmt, ...);

/**
 * Fills an array of tagged values below a container or list entry. C_NOEXISTS asks for the leaf of that tag and stays
 * when the leaf is absent; C_CDBBEGIN descends into the entry at its position of the list of that tag, C_XMLBEGIN into
 * the container of that tag, or into the list's entry whose keys with their values stand next, until the matching
 * C_XMLEND. Values keep their positions in the array. When the call fails, what it has filled so far
 * stays.
 *
 * @param sock   the session's socket
 * @param values the array, whose values the caller gives back with `confd_free_value`, after a failure too
 * @param n      the number of tagged values
 * @param fmt    the keypath of the container or entry
 * @return CONFD_OK; CONFD_ERR when an entry is not there or a tag does not belong where it stands
 */
int cdb_get_values(int sock, confd_tag_value_t* values, int n, const char* fmt, ...);

#ifdef __cplusplus
}
#endif

/*
 * The part of the ConfD C API that every other part needs: result and error codes, value types, the value itself with
 * its accessor macros, tagged values, hashed keypaths, and the text functions.
 *
 * The names, numbers and signatures are those of the published interface, so that code compiled against this file also
 * compiles against the header of the same name in a device SDK. Only what this project uses is declared.
 */
#pragma once

#include <netinet/in.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The port on which a ConfD daemon takes the connections of its clients. */
#define CONFD_PORT 4565

/* Results ---------------------------------------------------------------------------------------------------------- */

/** The call did what it was asked. */
#define CONFD_OK 0
/** The call failed; `confd_errno` and `confd_lasterr()` tell why. */
#define CONFD_ERR (-1)
/** The other end closed the socket. */
#define CONFD_EOF (-2)

/* The codes that `confd_errno` takes. */

/** What was asked for is not there. */
#define CONFD_ERR_NOEXISTS 1
/** What should be created is there already. */
#define CONFD_ERR_ALREADY_EXISTS 2
/** The access rules forbid the operation. */
#define CONFD_ERR_ACCESS_DENIED 3
/** The node cannot be written. */
#define CONFD_ERR_NOT_WRITABLE 4
/** The value has another type than the node. */
#define CONFD_ERR_BADTYPE 5
/** The node cannot be created. */
#define CONFD_ERR_NOTCREATABLE 6
/** The node cannot be deleted. */
#define CONFD_ERR_NOTDELETABLE 7
/** The keypath is malformed, or names a node that the schema does not have. */
#define CONFD_ERR_BADPATH 8
/** Somebody else holds the lock. */
#define CONFD_ERR_LOCKED 10
/** The resource is in use. */
#define CONFD_ERR_INUSE 11
/** A mandatory node has no value. */
#define CONFD_ERR_NOTSET 12
/** The call does not fit the state of the session or transaction. */
#define CONFD_ERR_BADSTATE 17
/** An error inside the daemon. */
#define CONFD_ERR_INTERNAL 18
/** An error reported by a part outside the daemon. */
#define CONFD_ERR_EXTERNAL 19
/** The client library found no memory; a call that fails so has done nothing that would have to be undone. */
#define CONFD_ERR_MALLOC 20
/** The protocol does not allow the call here. */
#define CONFD_ERR_PROTOUSAGE 21
/** There is no session on the socket. */
#define CONFD_ERR_NOSESSION 22
/** A system call failed; `errno` tells which way. */
#define CONFD_ERR_OS 24
/** The operation is not available. */
#define CONFD_ERR_UNAVAILABLE 44
/** The other end closed the socket. */
#define CONFD_ERR_EOF 45
/** The node cannot be moved. */
#define CONFD_ERR_NOTMOVABLE 46
/** The operation took too long. */
#define CONFD_ERR_TIMEOUT 48
/** The transaction handle is not known on this socket. */
#define CONFD_ERR_NOTRANS 61

/** The code of the last error of this process, one of `CONFD_ERR_*`. Only meaningful after a call gave CONFD_ERR. */
extern int confd_errno;

/**
 * The text of the last error of this process.
 *
 * @return NUL-terminated text that the library owns; it stays valid until the next call fails. Empty when no call has
 *         failed yet, never null.
 */
char* confd_lasterr(void);

/**
 * The name of an error code, for messages.
 *
 * @param code one of `CONFD_ERR_*`
 * @return NUL-terminated text that the library owns; an unknown code is named as such, never null.
 */
char* confd_strerror(int code);

/* Types ------------------------------------------------------------------------------------------------------------ */

/** Type tags of values. The numbers are part of the interface. */
enum confd_vtype {
    C_NOEXISTS = 1,
    C_XMLTAG = 2,
    C_SYMBOL = 3,
    C_STR = 4,
    C_BUF = 5,
    C_INT8 = 6,
    C_INT16 = 7,
    C_INT32 = 8,
    C_INT64 = 9,
    C_UINT8 = 10,
    C_UINT16 = 11,
    C_UINT32 = 12,
    C_UINT64 = 13,
    C_DOUBLE = 14,
    C_IPV4 = 15,
    C_IPV6 = 16,
    C_BOOL = 17,
    C_QNAME = 18,
    C_DATETIME = 19,
    C_DATE = 20,
    C_TIME = 23,
    C_DURATION = 27,
    C_ENUM_VALUE = 28,
    C_BIT32 = 29,
    C_BIT64 = 30,
    C_LIST = 31,
    C_XMLBEGIN = 32,
    C_XMLEND = 33,
    C_OBJECTREF = 34,
    C_UNION = 35,
    C_PTR = 36,
    C_CDBBEGIN = 37,
    C_OID = 38,
    C_BINARY = 39,
    C_IPV4PREFIX = 40,
    C_IPV6PREFIX = 41,
    C_DEFAULT = 42,
    C_DECIMAL64 = 43,
    C_IDENTITYREF = 44,
    C_XMLBEGINDEL = 45,
    C_DQUAD = 46,
    C_HEXSTR = 47,
    C_IPV4_AND_PLEN = 48,
    C_IPV6_AND_PLEN = 49,
    C_BITBIG = 50,
    C_XMLMOVEFIRST = 51,
    C_XMLMOVEAFTER = 52,
    C_EMPTY = 53,
    C_MAXTYPE /* end marker, no type of its own */
};

/** A node's name: the hash of the name and the hash of its namespace. In a tagged value `ns` 0 is the current one. */
struct xml_tag {
    uint32_t tag;
    uint32_t ns;
};

/** Octets: text of C_BUF, octets of C_BINARY and C_HEXSTR. What a read gives is NUL-terminated beyond `size`. */
typedef struct confd_buf {
    unsigned int size;
    unsigned char* ptr;
} confd_buf_t;

struct confd_value;

/** The entries of a leaf-list. */
struct confd_list {
    unsigned int size;
    struct confd_value* ptr;
};

/** An IPv4 network: address and prefix length in bits. */
struct confd_ipv4_prefix {
    struct in_addr ip;
    uint8_t len;
};

/** An IPv6 network: address and prefix length in bits. */
struct confd_ipv6_prefix {
    struct in6_addr ip6;
    uint8_t len;
};

/** Where a read shall store what it finds, and as which type. */
struct confd_vptr {
    enum confd_vtype type;
    void* ptr;
};

/** Which entry of which list a read by tags descends into: the list's name and the entry's position, from 0. */
struct confd_cdb_begin {
    struct xml_tag xmltag;
    int32_t instance;
};

/**
 * A value and its type tag. The type tells which member of `val` holds it; the macros below choose the member.
 *
 * Values of type C_BUF, C_BINARY, C_HEXSTR, C_LIST, C_QNAME, C_OBJECTREF, C_OID and C_BITBIG that come from a read own
 * malloc'ed memory, which `confd_free_value` gives back. A value that the program filled in by a setter borrows what
 * it points to.
 */
typedef struct confd_value {
    enum confd_vtype type;
    union {
        struct xml_tag xmltag; /* C_XMLTAG, C_XMLBEGIN, C_XMLBEGINDEL, C_XMLEND */
        confd_buf_t buf;       /* C_BUF, C_BINARY, C_HEXSTR */
        char* s;               /* C_STR */
        int8_t i8;
        int16_t i16;
        int32_t i32;
        int64_t i64;
        uint8_t u8;
        uint16_t u16;
        uint32_t u32;
        uint64_t u64;
        double d;
        struct in_addr ip;
        struct in6_addr ip6;
        int boolean;
        int32_t enumvalue;
        uint32_t b32;
        uint64_t b64;
        struct confd_list list;
        struct confd_ipv4_prefix ipv4prefix;
        struct confd_ipv6_prefix ipv6prefix;
        struct confd_vptr ptr;
        struct confd_cdb_begin cdbbegin;
    } val;
} confd_value_t;

/** A value under a node's name, the element of arrays that are read and written by tags. */
typedef struct confd_tag_value {
    struct xml_tag tag;
    confd_value_t v;
} confd_tag_value_t;

/** The most elements of a hashed keypath. */
#define MAXDEPTH 20
/**
 * The most keys of a list entry, its end marker included. The published number is 9; the data model has a list of ten
 * keys. A list of more keys is refused when its module is loaded.
 */
#define MAXKEYLEN 32

/**
 * A hashed keypath. Element 0 is the node itself, element `len` - 1 the top node. Each element is a row of values that
 * ends with C_NOEXISTS: a single C_XMLTAG for a name, or the keys of a list entry.
 */
typedef struct confd_hkeypath {
    int len;
    confd_value_t v[MAXDEPTH][MAXKEYLEN];
} confd_hkeypath_t;

/* Getters ---------------------------------------------------------------------------------------------------------- */

/**
 * What a getter does to insist on the type. A program may define another before it includes this file; the expression
 * is `(v)->type == C_UINT32` with the getter's argument in place of `v`.
 */
#ifndef CONFD_ASSERT
#include <assert.h>
#define CONFD_ASSERT(E) assert(E)
#endif

/*
 * Each getter takes a pointer to a value, asserts its type and gives the member. Pointers that a getter gives belong to
 * the value.
 */
#define CONFD_GET_INT8(v_) (CONFD_ASSERT((v_)->type == C_INT8), (v_)->val.i8)
#define CONFD_GET_INT16(v_) (CONFD_ASSERT((v_)->type == C_INT16), (v_)->val.i16)
#define CONFD_GET_INT32(v_) (CONFD_ASSERT((v_)->type == C_INT32), (v_)->val.i32)
#define CONFD_GET_INT64(v_) (CONFD_ASSERT((v_)->type == C_INT64), (v_)->val.i64)
#define CONFD_GET_UINT8(v_) (CONFD_ASSERT((v_)->type == C_UINT8), (v_)->val.u8)
#define CONFD_GET_UINT16(v_) (CONFD_ASSERT((v_)->type == C_UINT16), (v_)->val.u16)
#define CONFD_GET_UINT32(v_) (CONFD_ASSERT((v_)->type == C_UINT32), (v_)->val.u32)
#define CONFD_GET_UINT64(v_) (CONFD_ASSERT((v_)->type == C_UINT64), (v_)->val.u64)
#define CONFD_GET_DOUBLE(v_) (CONFD_ASSERT((v_)->type == C_DOUBLE), (v_)->val.d)
/** 0 or not 0. */
#define CONFD_GET_BOOL(v_) (CONFD_ASSERT((v_)->type == C_BOOL), (v_)->val.boolean)
/** The enumeration's integer in the schema. */
#define CONFD_GET_ENUM_VALUE(v_) (CONFD_ASSERT((v_)->type == C_ENUM_VALUE), (v_)->val.enumvalue)
#define CONFD_GET_BIT32(v_) (CONFD_ASSERT((v_)->type == C_BIT32), (v_)->val.b32)
#define CONFD_GET_BIT64(v_) (CONFD_ASSERT((v_)->type == C_BIT64), (v_)->val.b64)
/** A struct in_addr. */
#define CONFD_GET_IPV4(v_) (CONFD_ASSERT((v_)->type == C_IPV4), (v_)->val.ip)
/** A struct in6_addr. */
#define CONFD_GET_IPV6(v_) (CONFD_ASSERT((v_)->type == C_IPV6), (v_)->val.ip6)
/** A struct confd_ipv4_prefix. */
#define CONFD_GET_IPV4PREFIX(v_) (CONFD_ASSERT((v_)->type == C_IPV4PREFIX), (v_)->val.ipv4prefix)
/** A struct confd_ipv6_prefix. */
#define CONFD_GET_IPV6PREFIX(v_) (CONFD_ASSERT((v_)->type == C_IPV6PREFIX), (v_)->val.ipv6prefix)
/** The text of a C_STR, as char *. */
#define CONFD_GET_STR(v_) (CONFD_ASSERT((v_)->type == C_STR), (v_)->val.s)
/** The text of a C_BUF, as unsigned char *. */
#define CONFD_GET_BUFPTR(v_) (CONFD_ASSERT((v_)->type == C_BUF), (v_)->val.buf.ptr)
/** The text of a C_BUF, as const char *. */
#define CONFD_GET_CBUFPTR(v_) (CONFD_ASSERT((v_)->type == C_BUF), (const char*)(v_)->val.buf.ptr)
#define CONFD_GET_BUFSIZE(v_) (CONFD_ASSERT((v_)->type == C_BUF), (v_)->val.buf.size)
/** The octets of a C_BINARY, as unsigned char *. */
#define CONFD_GET_BINARY_PTR(v_) (CONFD_ASSERT((v_)->type == C_BINARY), (v_)->val.buf.ptr)
#define CONFD_GET_BINARY_SIZE(v_) (CONFD_ASSERT((v_)->type == C_BINARY), (v_)->val.buf.size)
/** The octets of a C_HEXSTR, as unsigned char *. */
#define CONFD_GET_HEXSTR_PTR(v_) (CONFD_ASSERT((v_)->type == C_HEXSTR), (v_)->val.buf.ptr)
#define CONFD_GET_HEXSTR_SIZE(v_) (CONFD_ASSERT((v_)->type == C_HEXSTR), (v_)->val.buf.size)
/** The first entry of a leaf-list, as confd_value_t *. */
#define CONFD_GET_LIST(v_) (CONFD_ASSERT((v_)->type == C_LIST), (v_)->val.list.ptr)
#define CONFD_GET_LISTSIZE(v_) (CONFD_ASSERT((v_)->type == C_LIST), (v_)->val.list.size)
/** The hash of the name of a C_XMLTAG. */
#define CONFD_GET_XMLTAG(v_) (CONFD_ASSERT((v_)->type == C_XMLTAG), (v_)->val.xmltag.tag)
/** The hash of the namespace of a C_XMLTAG. */
#define CONFD_GET_XMLTAG_NS(v_) (CONFD_ASSERT((v_)->type == C_XMLTAG), (v_)->val.xmltag.ns)
/** The position of the entry that a C_CDBBEGIN picks, from 0. */
#define CONFD_GET_CDBBEGIN(v_) (CONFD_ASSERT((v_)->type == C_CDBBEGIN), (v_)->val.cdbbegin.instance)
/** The type wanted by a C_PTR. */
#define CONFD_GET_PTR_TYPE(v_) (CONFD_ASSERT((v_)->type == C_PTR), (v_)->val.ptr.type)
/** Where a C_PTR wants its value, as void *. */
#define CONFD_GET_PTR(v_) (CONFD_ASSERT((v_)->type == C_PTR), (v_)->val.ptr.ptr)

/* Setters ---------------------------------------------------------------------------------------------------------- */

/*
 * Each setter takes a pointer to a value and gives it type and content, without releasing what it held. Texts, octets
 * and lists are borrowed: they must live as long as the value is used, and such a value must not be released by
 * confd_free_value unless the memory came from malloc.
 */
#define CONFD_SET_MEMBER_(v_, type_, member_, n_) ((v_)->type = (type_), (v_)->val.member_ = (n_))
#define CONFD_SET_OCTETS_(v_, type_, ptr_, n_) \
    ((v_)->type = (type_), (v_)->val.buf.ptr = (unsigned char*)(ptr_), (v_)->val.buf.size = (unsigned int)(n_))
#define CONFD_SET_NAME_(v_, type_, tag_, ns_) \
    ((v_)->type = (type_), (v_)->val.xmltag.tag = (tag_), (v_)->val.xmltag.ns = (ns_))

#define CONFD_SET_NOEXISTS(v_) ((v_)->type = C_NOEXISTS)
#define CONFD_SET_DEFAULT(v_) ((v_)->type = C_DEFAULT)
#define CONFD_SET_EMPTY(v_) ((v_)->type = C_EMPTY)
#define CONFD_SET_INT8(v_, n_) CONFD_SET_MEMBER_(v_, C_INT8, i8, n_)
#define CONFD_SET_INT16(v_, n_) CONFD_SET_MEMBER_(v_, C_INT16, i16, n_)
#define CONFD_SET_INT32(v_, n_) CONFD_SET_MEMBER_(v_, C_INT32, i32, n_)
#define CONFD_SET_INT64(v_, n_) CONFD_SET_MEMBER_(v_, C_INT64, i64, n_)
#define CONFD_SET_UINT8(v_, n_) CONFD_SET_MEMBER_(v_, C_UINT8, u8, n_)
#define CONFD_SET_UINT16(v_, n_) CONFD_SET_MEMBER_(v_, C_UINT16, u16, n_)
#define CONFD_SET_UINT32(v_, n_) CONFD_SET_MEMBER_(v_, C_UINT32, u32, n_)
#define CONFD_SET_UINT64(v_, n_) CONFD_SET_MEMBER_(v_, C_UINT64, u64, n_)
#define CONFD_SET_DOUBLE(v_, n_) CONFD_SET_MEMBER_(v_, C_DOUBLE, d, n_)
#define CONFD_SET_BOOL(v_, n_) CONFD_SET_MEMBER_(v_, C_BOOL, boolean, n_)
#define CONFD_SET_ENUM_VALUE(v_, n_) CONFD_SET_MEMBER_(v_, C_ENUM_VALUE, enumvalue, n_)
#define CONFD_SET_BIT32(v_, n_) CONFD_SET_MEMBER_(v_, C_BIT32, b32, n_)
#define CONFD_SET_BIT64(v_, n_) CONFD_SET_MEMBER_(v_, C_BIT64, b64, n_)
/** addr_ is a struct in_addr. */
#define CONFD_SET_IPV4(v_, addr_) CONFD_SET_MEMBER_(v_, C_IPV4, ip, addr_)
/** addr_ is a struct in6_addr. */
#define CONFD_SET_IPV6(v_, addr_) CONFD_SET_MEMBER_(v_, C_IPV6, ip6, addr_)
/** prefix_ is a struct confd_ipv4_prefix. */
#define CONFD_SET_IPV4PREFIX(v_, prefix_) CONFD_SET_MEMBER_(v_, C_IPV4PREFIX, ipv4prefix, prefix_)
/** prefix_ is a struct confd_ipv6_prefix. */
#define CONFD_SET_IPV6PREFIX(v_, prefix_) CONFD_SET_MEMBER_(v_, C_IPV6PREFIX, ipv6prefix, prefix_)
/** A NUL-terminated text, borrowed. */
#define CONFD_SET_STR(v_, text_) CONFD_SET_MEMBER_(v_, C_STR, s, (char*)(text_))
/** A text of n_ octets, borrowed. */
#define CONFD_SET_BUF(v_, ptr_, n_) CONFD_SET_OCTETS_(v_, C_BUF, ptr_, n_)
/** The same as CONFD_SET_BUF, for a const char *. */
#define CONFD_SET_CBUF(v_, ptr_, n_) CONFD_SET_OCTETS_(v_, C_BUF, ptr_, n_)
/** n_ octets, borrowed. */
#define CONFD_SET_BINARY(v_, ptr_, n_) CONFD_SET_OCTETS_(v_, C_BINARY, ptr_, n_)
/** n_ octets, borrowed. */
#define CONFD_SET_HEXSTR(v_, ptr_, n_) CONFD_SET_OCTETS_(v_, C_HEXSTR, ptr_, n_)
/** n_ values from ptr_ on, borrowed. */
#define CONFD_SET_LIST(v_, ptr_, n_) \
    ((v_)->type = C_LIST, (v_)->val.list.ptr = (ptr_), (v_)->val.list.size = (unsigned int)(n_))
#define CONFD_SET_XMLTAG(v_, tag_, ns_) CONFD_SET_NAME_(v_, C_XMLTAG, tag_, ns_)
/** Opens a list entry or container in an array of tagged values. */
#define CONFD_SET_XMLBEGIN(v_, tag_, ns_) CONFD_SET_NAME_(v_, C_XMLBEGIN, tag_, ns_)
/** Opens a list entry that is to be deleted. */
#define CONFD_SET_XMLBEGINDEL(v_, tag_, ns_) CONFD_SET_NAME_(v_, C_XMLBEGINDEL, tag_, ns_)
/** Closes what one of the openers here opened. */
#define CONFD_SET_XMLEND(v_, tag_, ns_) CONFD_SET_NAME_(v_, C_XMLEND, tag_, ns_)
/** Opens the i_-th entry, from 0, of the list that the tag names. */
#define CONFD_SET_CDBBEGIN(v_, tag_, ns_, i_)                                                               \
    ((v_)->type = C_CDBBEGIN, (v_)->val.cdbbegin.xmltag.tag = (tag_), (v_)->val.cdbbegin.xmltag.ns = (ns_), \
     (v_)->val.cdbbegin.instance = (i_))
/** Asks a read to store the value at ptr_ as a value of type_; ptr_ must fit that type. */
#define CONFD_SET_PTR(v_, type_, ptr_) ((v_)->type = C_PTR, (v_)->val.ptr.type = (type_), (v_)->val.ptr.ptr = (ptr_))

/* Tagged values ---------------------------------------------------------------------------------------------------- */

/** The hash of the node's name. */
#define CONFD_GET_TAG_TAG(tv_) ((tv_)->tag.tag)
/** The hash of the node's namespace; 0 is the current one. */
#define CONFD_GET_TAG_NS(tv_) ((tv_)->tag.ns)
/** A pointer to the value, for the getters and setters above. */
#define CONFD_GET_TAG_VALUE(tv_) (&(tv_)->v)

/** Changes the namespace alone; the setters below set it to 0 where they take none. */
#define CONFD_SET_TAG_NS(tv_, ns_) ((tv_)->tag.ns = (ns_))
#define CONFD_SET_TAG_NAME_(tv_, tag_, ns_) ((tv_)->tag.tag = (tag_), (tv_)->tag.ns = (ns_))

/*
 * Each of these gives a tagged value its tag, the current namespace, and the content that the setter of the same name
 * gives a value.
 */
#define CONFD_SET_TAG_NOEXISTS(tv_, tag_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_NOEXISTS(&(tv_)->v))
#define CONFD_SET_TAG_DEFAULT(tv_, tag_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_DEFAULT(&(tv_)->v))
#define CONFD_SET_TAG_EMPTY(tv_, tag_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_EMPTY(&(tv_)->v))
#define CONFD_SET_TAG_INT8(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_INT8(&(tv_)->v, n_))
#define CONFD_SET_TAG_INT16(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_INT16(&(tv_)->v, n_))
#define CONFD_SET_TAG_INT32(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_INT32(&(tv_)->v, n_))
#define CONFD_SET_TAG_INT64(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_INT64(&(tv_)->v, n_))
#define CONFD_SET_TAG_UINT8(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_UINT8(&(tv_)->v, n_))
#define CONFD_SET_TAG_UINT16(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_UINT16(&(tv_)->v, n_))
#define CONFD_SET_TAG_UINT32(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_UINT32(&(tv_)->v, n_))
#define CONFD_SET_TAG_UINT64(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_UINT64(&(tv_)->v, n_))
#define CONFD_SET_TAG_DOUBLE(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_DOUBLE(&(tv_)->v, n_))
#define CONFD_SET_TAG_BOOL(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_BOOL(&(tv_)->v, n_))
#define CONFD_SET_TAG_ENUM_VALUE(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_ENUM_VALUE(&(tv_)->v, n_))
#define CONFD_SET_TAG_BIT32(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_BIT32(&(tv_)->v, n_))
#define CONFD_SET_TAG_BIT64(tv_, tag_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_BIT64(&(tv_)->v, n_))
#define CONFD_SET_TAG_IPV4(tv_, tag_, addr_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_IPV4(&(tv_)->v, addr_))
#define CONFD_SET_TAG_IPV6(tv_, tag_, addr_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_IPV6(&(tv_)->v, addr_))
#define CONFD_SET_TAG_IPV4PREFIX(tv_, tag_, prefix_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_IPV4PREFIX(&(tv_)->v, prefix_))
#define CONFD_SET_TAG_IPV6PREFIX(tv_, tag_, prefix_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_IPV6PREFIX(&(tv_)->v, prefix_))
#define CONFD_SET_TAG_STR(tv_, tag_, text_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_STR(&(tv_)->v, text_))
#define CONFD_SET_TAG_BUF(tv_, tag_, ptr_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_BUF(&(tv_)->v, ptr_, n_))
#define CONFD_SET_TAG_CBUF(tv_, tag_, ptr_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_CBUF(&(tv_)->v, ptr_, n_))
#define CONFD_SET_TAG_BINARY(tv_, tag_, ptr_, n_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_BINARY(&(tv_)->v, ptr_, n_))
#define CONFD_SET_TAG_HEXSTR(tv_, tag_, ptr_, n_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_HEXSTR(&(tv_)->v, ptr_, n_))
#define CONFD_SET_TAG_LIST(tv_, tag_, ptr_, n_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_LIST(&(tv_)->v, ptr_, n_))
#define CONFD_SET_TAG_PTR(tv_, tag_, type_, ptr_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, 0), CONFD_SET_PTR(&(tv_)->v, type_, ptr_))
/** Copies *value_ as it stands: what it points to is then shared by both. */
#define CONFD_SET_TAG_VALUE(tv_, tag_, value_) (CONFD_SET_TAG_NAME_(tv_, tag_, 0), (tv_)->v = *(value_))

/* These open and close entries and containers; the tag is their own name. */
#define CONFD_SET_TAG_XMLTAG(tv_, tag_, ns_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, ns_), CONFD_SET_XMLTAG(&(tv_)->v, tag_, ns_))
#define CONFD_SET_TAG_XMLBEGIN(tv_, tag_, ns_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, ns_), CONFD_SET_XMLBEGIN(&(tv_)->v, tag_, ns_))
#define CONFD_SET_TAG_XMLBEGINDEL(tv_, tag_, ns_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, ns_), CONFD_SET_XMLBEGINDEL(&(tv_)->v, tag_, ns_))
#define CONFD_SET_TAG_XMLEND(tv_, tag_, ns_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, ns_), CONFD_SET_XMLEND(&(tv_)->v, tag_, ns_))
#define CONFD_SET_TAG_CDBBEGIN(tv_, tag_, ns_, i_) \
    (CONFD_SET_TAG_NAME_(tv_, tag_, ns_), CONFD_SET_CDBBEGIN(&(tv_)->v, tag_, ns_, i_))

/* Memory ----------------------------------------------------------------------------------------------------------- */

/**
 * Gives back what a value owns that came from a read. The value itself is the caller's; values of types that own
 * nothing are left alone, a C_STR among them.
 *
 * @param v the value; null does nothing
 */
void confd_free_value(confd_value_t* v);

/**
 * Makes a deep copy of a value, a C_STR included.
 *
 * @param v    the value to copy
 * @param newv receives the copy, whose memory the caller gives back with `confd_free_dup_to_value`
 * @return `newv`, or null when out of memory, with C_NOEXISTS in `newv`
 */
confd_value_t* confd_value_dup_to(const confd_value_t* v, confd_value_t* newv);

/**
 * Gives back what a copy made by `confd_value_dup_to` owns, the text of a C_STR included.
 *
 * @param v the value; null does nothing
 */
void confd_free_dup_to_value(confd_value_t* v);

/* Text ------------------------------------------------------------------------------------------------------------- */

/**
 * Prints a value without knowledge of its type in the schema: numbers in decimal, an enumeration as `enum<N>`, bits as
 * `bits<X>` with a hex number, a C_XMLTAG as its node's name or `tag<N>` where no loaded module has that tag, binary as
 * a run of lower-case hex digits without separators, addresses in their usual form, text as it is. Needs no memory.
 *
 * @param buf    receives the text, cut to fit and NUL-terminated when bufsiz is above 0
 * @param bufsiz the size of buf in octets
 * @param v      the value
 * @return the length the whole text has, as snprintf counts; never negative
 */
int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v);

/**
 * Prints a keypath from its format and arguments. On an absolute path whose nodes the schema knows, a `%x` key is
 * printed as the key's type prints it (an enumeration by its name, a hex-list with colons); elsewhere as
 * `confd_pp_value` prints it. A text key that holds blanks or braces is quoted.
 *
 * Formats here and in every call that takes a keypath: `%d` (int), `%u` (unsigned int), `%hu` (unsigned short), `%s`
 * (text), `%x` (a `confd_value_t *`), `%*x` (an int n and a `confd_value_t *` to n values). `{key key}` picks a list
 * entry by its keys in the schema's order, `[%d]` the n-th entry from 0, which CDB alone takes. `prefix:name` is the
 * node of that name in that module; it tells apart two nodes of one name from two modules. A null or empty path is
 * CONFD_ERR_BADPATH.
 *
 * @param buf    receives the text, cut to fit and NUL-terminated when bufsiz is above 0
 * @param bufsiz the size of buf in octets
 * @param fmt    the keypath's format
 * @return the length the whole path has, as snprintf counts; CONFD_ERR with CONFD_ERR_MALLOC, and an empty text, when
 *         out of memory
 */
int confd_format_keypath(char* buf, int bufsiz, const char* fmt, ...);

/**
 * The tag of a node's name, or the number of a module's namespace.
 *
 * @param str the name, NUL-terminated
 * @return its hash; 0 when no loaded module has such a name
 */
uint32_t confd_str2hash(const char* str);

/**
 * The name behind a tag.
 *
 * @param hash a tag that the loaded schema knows
 * @return NUL-terminated text that the library owns, null when no loaded module has such a name
 */
char* confd_hash2str(uint32_t hash);

#ifdef __cplusplus
}
#endif

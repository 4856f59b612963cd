/*
 * Address conversions of the device's middleware. The routing stack's tables hold addresses as hex lists: the address's
 * octets in network order, four for IPv4 and sixteen for IPv6, as a value of type C_BINARY. The text form of a hex list
 * is its octets as pairs of lower-case hex digits joined by colons, "0a:00:00:01".
 *
 * Names tell the two sides: `Ipv4` and `Ipv6` are address values (C_IPV4, C_IPV6), `InAddr` and `In6Addr` the socket
 * library's addresses, `Ipv4str` and `Ipv6str` address texts, `hexlist` the octets, `hexliststr` their text form.
 *
 * Every function gives 0, or a negative number for input it cannot convert. What a conversion to a hex list or to text
 * stores in `out` owns malloc'ed memory that the caller gives back with `confd_free_value`; such a conversion that
 * fails stores C_NOEXISTS. `in` is never changed or released.
 */
#pragma once

#include "confd_lib.h"

#include <netinet/in.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * An IPv4 address value as a hex list of four octets.
 *
 * @param out           receives the C_BINARY
 * @param in            a C_IPV4; another type is an error
 * @param prefix_length how many leading bits to keep, 0 to 32; the others become zero. 32 keeps the whole address
 */
int Ipv4TOhexlist(confd_value_t* out, confd_value_t* in, int prefix_length);

/**
 * An IPv6 address value as a hex list of sixteen octets.
 *
 * @param out receives the C_BINARY
 * @param in  a C_IPV6; another type is an error
 */
int Ipv6TOhexlist(confd_value_t* out, confd_value_t* in);

/**
 * An IPv4 address text as a hex list of four octets.
 *
 * @param out  receives the C_BINARY
 * @param text the dotted form, "10.0.0.1"; another text is an error
 */
int Ipv4strTOhexlist(confd_value_t* out, const char* text);

/**
 * An IPv6 address text as a hex list of sixteen octets.
 *
 * @param out  receives the C_BINARY
 * @param text any text form of an IPv6 address, "2001:db8::1"; another text is an error
 */
int Ipv6strTOhexlist(confd_value_t* out, const char* text);

/**
 * An IPv4 address as a hex list of four octets.
 *
 * @param out receives the C_BINARY
 * @param in  the address, in network order
 */
int Ipv4InAddrTOhexlist(confd_value_t* out, struct in_addr in);

/**
 * An IPv4 address value as the text form of a hex list.
 *
 * @param out receives a C_BUF such as "0a:00:00:01", NUL-terminated beyond its size
 * @param in  a C_IPV4; another type is an error
 */
int Ipv4TOhexliststr(confd_value_t* out, confd_value_t* in);

/**
 * An IPv6 address value as the text form of a hex list.
 *
 * @param out receives a C_BUF of sixteen pairs, NUL-terminated beyond its size
 * @param in  a C_IPV6; another type is an error
 */
int Ipv6TOhexliststr(confd_value_t* out, confd_value_t* in);

/**
 * The dotted text of the IPv4 address that a hex list holds. Always gives a value: octets past the fourth are left out,
 * missing ones are zero, and a value that is no hex list reads as 0.0.0.0 and is reported as an error.
 *
 * @param in  a C_BINARY
 * @param out receives a C_BUF such as "10.0.0.1", NUL-terminated beyond its size
 */
int HexlistTOipv4str(confd_value_t* in, confd_value_t* out);

/**
 * The IPv4 address that a hex list holds. Always gives an address: octets past the fourth are left out, missing ones
 * are zero, and a value that is no hex list reads as 0.0.0.0 and is reported as an error.
 *
 * @param in  a C_BINARY
 * @param out receives the address, in network order
 */
int HexlistTOipv4InAddr(confd_value_t* in, struct in_addr* out);

/**
 * The IPv6 address that a hex list holds. Always gives an address: octets past the sixteenth are left out, missing ones
 * are zero, and a value that is no hex list reads as :: and is reported as an error.
 *
 * @param in  a C_BINARY
 * @param out receives the address, in network order
 */
int HexlistTOipv6In6Addr(confd_value_t* in, struct in6_addr* out);

#ifdef __cplusplus
}
#endif

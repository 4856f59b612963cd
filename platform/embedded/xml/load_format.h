// What a configuration stands in: ConfD's load format, and the replies and requests of NETCONF.
#pragma once

namespace bgp_platform::xml {

inline constexpr char kConfigElement[] = "config";
inline constexpr char kConfigNamespace[] = "http://tail-f.com/ns/config/1.0";

inline constexpr char kDataElement[] = "data";
inline constexpr char kReplyElement[] = "rpc-reply";
inline constexpr char kReplyErrorElement[] = "rpc-error";
inline constexpr char kNetconfNamespace[] = "urn:ietf:params:xml:ns:netconf:base:1.0";

// For messages about what is none.
inline constexpr char kWhereItStands[] =
    "a configuration stands in <config xmlns=\"http://tail-f.com/ns/config/1.0\">, or in NETCONF's <config>, <data> or "
    "<rpc-reply>";

}  // namespace bgp_platform::xml

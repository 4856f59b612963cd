// What the reader and the writer of ConfD's load format share.
#pragma once

namespace bgp_platform::xml {

inline constexpr char kConfigElement[] = "config";
inline constexpr char kConfigNamespace[] = "http://tail-f.com/ns/config/1.0";

}  // namespace bgp_platform::xml

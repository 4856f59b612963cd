// Addresses by their text.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>

namespace bgp_test {

inline in_addr ipv4(const char* dotted)
{
    in_addr address{};
    EXPECT_EQ(inet_pton(AF_INET, dotted, &address), 1) << dotted;
    return address;
}

inline in6_addr ipv6(const char* coloned)
{
    in6_addr address{};
    EXPECT_EQ(inet_pton(AF_INET6, coloned, &address), 1) << coloned;
    return address;
}

}  // namespace bgp_test

// Names that are bytes, as text that shows and tells them.
#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include "base/text_escape.h"

namespace bgp_test {
namespace {

using bgp_rehearse::escaped;
using bgp_rehearse::escaped_name;
using bgp_rehearse::unescaped_name;

TEST(EscapedName, PrintableTextOfAnyScript_StaysAsItIs)
{
    for (const char* const name : {"edge-1.xml", "a \"quoted\" name", "маршрутизатор.xml", "路由器", ""}) {
        EXPECT_EQ(escaped_name(name), name);
    }
}

TEST(EscapedName, WhatDoesNotShow_IsToldByteByByte)
{
    EXPECT_EQ(escaped_name("a\nb\x7f"), "a\\x0ab\\x7f");
    EXPECT_EQ(escaped_name("\xff.xml"), "\\xff.xml");
    EXPECT_EQ(escaped_name("\u0085\u202e"), "\\xc2\\x85\\xe2\\x80\\xae");
    EXPECT_EQ(escaped_name("back\\slash"), "back\\\\slash");
}

TEST(UnescapedName, BackslashThatBeginsNoByte_Stays)
{
    EXPECT_EQ(unescaped_name("a\\b"), "a\\b");
    EXPECT_EQ(unescaped_name("\\x0"), "\\x0");
    EXPECT_EQ(unescaped_name("\\xg0"), "\\xg0");
    EXPECT_EQ(unescaped_name("\\"), "\\");
}

RC_GTEST_PROP(EscapedName, AnyBytes_ComeBackAndShowAsTheyAre, (const std::string& bytes))
{
    const std::string name = escaped_name(bytes);
    RC_ASSERT(unescaped_name(name) == bytes);
    RC_ASSERT(escaped(name) == name);
}

// Backslashes and what looks like an escape meet each other here far more often.
RC_GTEST_PROP(EscapedName, BytesThatLookLikeEscapes_ComeBack, ())
{
    const auto bytes =
        *rc::gen::container<std::string>(rc::gen::element('\\', 'x', '0', 'a', 'f', '\n', '\xc3', '\xa9'));
    RC_ASSERT(unescaped_name(escaped_name(bytes)) == bytes);
}

}  // namespace
}  // namespace bgp_test

// Lines broken between words.
#include "base/wrap.h"

#include <gtest/gtest.h>

namespace bgp_test {
namespace {

using bgp_rehearse::wrapped;

TEST(Wrap, Lines_AreAsLongAsTheyMayBe)
{
    EXPECT_EQ(wrapped("two words fit", 9, 0), "two words\nfit");
    EXPECT_EQ(wrapped("two words fit", 8, 0), "two\nwords\nfit");
    EXPECT_EQ(wrapped("two words fit", 13, 0), "two words fit");
    EXPECT_EQ(wrapped("two words fit", std::nullopt, 0), "two words fit");
}

TEST(Wrap, LinesAfterTheFirst_HangBehindBlanks)
{
    EXPECT_EQ(wrapped("  row-left  a row stays", 17, 12), "  row-left  a row\n            stays");
    EXPECT_EQ(wrapped("- one two three", 9, 2), "- one two\n  three");
}

TEST(Wrap, BlanksOfALineThatFits_Stay)
{
    EXPECT_EQ(wrapped("", 10, 2), "");
    EXPECT_EQ(wrapped("  a   b ", 20, 2), "  a   b ");
}

TEST(Wrap, WordThatIsTooWide_StaysWhole)
{
    EXPECT_EQ(wrapped("    /DC-BGP-MIB/bgpPeerTable", 10, 2), "    /DC-BGP-MIB/bgpPeerTable");
    EXPECT_EQ(wrapped("a /DC-BGP-MIB/bgpPeerTable b", 10, 2), "a\n  /DC-BGP-MIB/bgpPeerTable\n  b");
}

TEST(Wrap, CharactersCount_AndColoursDoNot)
{
    EXPECT_EQ(wrapped("ä ö ü ß", 7, 0), "ä ö ü ß");
    EXPECT_EQ(wrapped("\033[31mred\033[0m and", 7, 0), "\033[31mred\033[0m and");
}

}  // namespace
}  // namespace bgp_test

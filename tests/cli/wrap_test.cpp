// Text broken into lines at words.
#include "base/wrap.h"

#include <gmock/gmock.h>

namespace bgp_test {
namespace {

using bgp_rehearse::columns_of;
using bgp_rehearse::wrapped;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(Wrap, Lines_AreAsLongAsTheyMayBe)
{
    EXPECT_THAT(wrapped("two words fit", 9), ElementsAre("two words", "fit"));
    EXPECT_THAT(wrapped("two words fit", 8), ElementsAre("two", "words", "fit"));
    EXPECT_THAT(wrapped("two words fit", 13), ElementsAre("two words fit"));
}

TEST(Wrap, WordThatIsTooWide_HasALineOfItsOwn)
{
    EXPECT_THAT(wrapped("a /DC-BGP-MIB/bgpPeerTable b", 10), ElementsAre("a", "/DC-BGP-MIB/bgpPeerTable", "b"));
    EXPECT_THAT(wrapped("a b", 0), ElementsAre("a", "b"));
}

TEST(Wrap, BlanksAndLineEnds_AreOneBlank)
{
    EXPECT_THAT(wrapped("  a\nb   c ", 20), ElementsAre("a b c"));
    EXPECT_THAT(wrapped(" \n ", 20), IsEmpty());
}

TEST(Wrap, Characters_CountAndNotBytes)
{
    EXPECT_EQ(columns_of("Zürich …"), 8U);
    EXPECT_THAT(wrapped("ä ö ü ß", 7), ElementsAre("ä ö ü ß"));
}

}  // namespace
}  // namespace bgp_test

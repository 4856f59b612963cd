// The last lines of a log, in memory that outlives the process that writes them.
#include "run/last_lines.h"

#include <gmock/gmock.h>

namespace bgp_test {
namespace {

using bgp_rehearse::LastLines;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(LastLines, FewLines_AreAllThere)
{
    LastLines lines;
    EXPECT_THAT(lines.all(), IsEmpty());
    lines.add("one\n");
    lines.add("");
    EXPECT_THAT(lines.all(), ElementsAre("one\n", ""));
}

TEST(LastLines, ManyLines_LeaveTheLastTen)
{
    LastLines lines;
    for (int i = 1; i <= 25; ++i) {
        lines.add(std::to_string(i));
    }
    EXPECT_THAT(lines.all(), ElementsAre("16", "17", "18", "19", "20", "21", "22", "23", "24", "25"));
}

TEST(LastLines, LongLine_IsCutBetweenCharacters)
{
    LastLines lines;
    lines.add(std::string(300, 'a'));
    lines.add(std::string(301, 'b'));
    lines.add(std::string(299, 'c') + "\u00e9");
    lines.add(std::string(297, 'd') + "\u20ac\u20ac");
    EXPECT_THAT(lines.all(), ElementsAre(std::string(300, 'a'), std::string(300, 'b') + "\u2026",
                                         std::string(299, 'c') + "\u2026", std::string(297, 'd') + "\u20ac\u2026"));
}

}  // namespace
}  // namespace bgp_test

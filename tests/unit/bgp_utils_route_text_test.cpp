// Texts of routes: route distinguishers and targets to octets, AS paths to numbers.
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bgp_update/bgp_utils.h"

namespace {

constexpr int kTwoOctets = 1;
constexpr int kFourOctets = 2;

std::string rd(const std::string& text)
{
    return BgpUtils::Rd2str(text, false);
}

TEST(Rd2str, TwoOctetAs_TakesTypeZero)
{
    EXPECT_EQ(rd("100:1"), "00:00:00:64:00:00:00:01");
    EXPECT_EQ(rd("100:4294967295"), "00:00:00:64:ff:ff:ff:ff");
}

TEST(Rd2str, FourOctetAs_TakesTypeTwo)
{
    EXPECT_EQ(rd("70000:5"), "00:02:00:01:11:70:00:05");
}

TEST(Rd2str, Ipv4Address_TakesTypeOne)
{
    EXPECT_EQ(rd("1.2.3.4:5"), "00:01:01:02:03:04:00:05");
}

TEST(Rd2str, AdminAtTheBorder_TakesTwoOctetsUpTo65535)
{
    EXPECT_EQ(rd("65535:1"), "00:00:ff:ff:00:00:00:01");
    EXPECT_EQ(rd("65536:1"), "00:02:00:01:00:00:00:01");
}

TEST(Rd2str, NumberOfTwoOctets_IsCutToItsLow16Bits)
{
    EXPECT_EQ(rd("70000:65541"), "00:02:00:01:11:70:00:05");
    EXPECT_EQ(rd("1.2.3.4:65541"), "00:01:01:02:03:04:00:05");
}

TEST(Rd2str, NumbersAbove32Bits_AreCutToTheirLow32)
{
    EXPECT_EQ(rd("100:4294967297"), "00:00:00:64:00:00:00:01");
    EXPECT_EQ(rd("4294967396:1"), "00:00:00:64:00:00:00:01");
}

TEST(Rd2str, NumberAboveAll_IsTakenAsStrtoulTakesIt)
{
    EXPECT_EQ(rd("100:99999999999999999999999"), "00:00:00:64:ff:ff:ff:ff");
}

TEST(Rd2str, WhatFollowsTheDigits_IsLeftOut)
{
    EXPECT_EQ(rd("100x:1y"), "00:00:00:64:00:00:00:01");
    EXPECT_EQ(rd("100:1:2"), "00:00:00:64:00:00:00:01");
}

TEST(Rd2str, PartsWithoutDigits_ReadAsZero)
{
    EXPECT_EQ(rd(":"), "00:00:00:00:00:00:00:00");
    EXPECT_EQ(rd(":7"), "00:00:00:00:00:00:00:07");
    EXPECT_EQ(rd("100:"), "00:00:00:64:00:00:00:00");
}

TEST(Rd2str, DotInTheNumber_AsksForAnAddressAsAdmin)
{
    EXPECT_EQ(rd("100:1.5"), "00:00:00:00:00:00:00:00");
    EXPECT_EQ(rd("1.2.3.4:5.6"), "00:01:01:02:03:04:00:05");
}

TEST(Rd2str, TextThatIsNone_GivesZeroOctets)
{
    for (const char* text : {"", "100", "no colon", "1.2.3:5", "1.2.3.256:5", "a.b.c.d:5", ".:1"}) {
        EXPECT_EQ(rd(text), "00:00:00:00:00:00:00:00") << text;
        EXPECT_EQ(BgpUtils::Rt2str(text), "00:00:00:00:00:00:00:00") << text;
    }
}

TEST(Rt2str, EachForm_TakesTheCommunityTypeAndTheTargetsSubtype)
{
    EXPECT_EQ(BgpUtils::Rt2str("100:1"), "00:02:00:64:00:00:00:01");
    EXPECT_EQ(BgpUtils::Rt2str("70000:5"), "02:02:00:01:11:70:00:05");
    EXPECT_EQ(BgpUtils::Rt2str("1.2.3.4:5"), "01:02:01:02:03:04:00:05");
    EXPECT_EQ(BgpUtils::Rt2str("65535:1"), BgpUtils::Rd2str("65535:1", true));
}

// The shown text of an attribute, whose octets lie at the very end of their memory.
std::string as_path(const std::vector<unsigned char>& octets, int width)
{
    const std::unique_ptr<unsigned char[]> exact(new unsigned char[octets.size()]);
    std::copy(octets.begin(), octets.end(), exact.get());
    confd_value_t attribute;
    CONFD_SET_BINARY(&attribute, exact.get(), octets.size());
    confd_value_t out{};
    EXPECT_EQ(BgpUtils::GetRoutesAsPath(&attribute, width, &out), 0);
    EXPECT_EQ(out.type, C_BUF);
    std::string text(CONFD_GET_CBUFPTR(&out), CONFD_GET_BUFSIZE(&out));
    EXPECT_EQ(CONFD_GET_CBUFPTR(&out)[text.size()], '\0');
    std::free(CONFD_GET_BUFPTR(&out));
    return text;
}

TEST(GetRoutesAsPath, ExtendedLength_StartsAtTheSixthOctet)
{
    EXPECT_EQ(as_path({0x50, 2, 0, 10, 2, 2, 0, 0, 0xFD, 0xE9, 0, 0, 0xFD, 0xEA}, kFourOctets), "65001 65002");
}

TEST(GetRoutesAsPath, TwoOctetNumbers_ComeOneBlankApart)
{
    EXPECT_EQ(as_path({0x40, 2, 8, 2, 3, 0, 100, 0, 200, 1, 44}, kTwoOctets), "100 200 300");
}

TEST(GetRoutesAsPath, OneNumber_HasNoBlank)
{
    EXPECT_EQ(as_path({0x40, 2, 6, 2, 1, 0xFF, 0xFF, 0xFF, 0xFF}, kFourOctets), "4294967295");
    EXPECT_EQ(as_path({0x40, 2, 4, 2, 1, 0xFF, 0xFF}, kTwoOctets), "65535");
}

TEST(GetRoutesAsPath, WidthFlagOtherThanOne_MeansFourOctets)
{
    for (const int width : {0, 2, 4, -1}) {
        EXPECT_EQ(as_path({0x40, 2, 6, 2, 1, 0, 1, 0, 2}, width), "65538") << width;
    }
}

TEST(GetRoutesAsPath, OtherTypeCode_GivesAnEmptyText)
{
    EXPECT_EQ(as_path({0x40, 3, 4, 10, 0, 0, 1, 0, 2}, kFourOctets), "");
}

TEST(GetRoutesAsPath, NoNumbers_GivesAnEmptyText)
{
    EXPECT_EQ(as_path({0x40, 2, 2, 2, 0}, kFourOctets), "");
    EXPECT_EQ(as_path({0x50, 2, 0, 2, 2, 0}, kFourOctets), "");
}

TEST(GetRoutesAsPath, StatedLengths_AreNotLookedAt)
{
    EXPECT_EQ(as_path({0x40, 2, 0, 9, 77, 0, 1, 0, 2}, kTwoOctets), "1 2");
}

TEST(GetRoutesAsPath, SecondSegment_IsReadAsNumbers)
{
    EXPECT_EQ(as_path({0x40, 2, 8, 2, 1, 0, 100, 1, 1, 0, 200}, kTwoOctets), "100 257 200");
}

TEST(GetRoutesAsPath, HeaderCutShort_GivesAnEmptyText)
{
    const std::vector<unsigned char> whole = {0x50, 2, 0, 6, 2, 1};
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const auto end = whole.begin() + static_cast<std::ptrdiff_t>(size);
        EXPECT_EQ(as_path({whole.begin(), end}, kFourOctets), "") << size;
    }
}

TEST(GetRoutesAsPath, NumberCutShort_ReadsZerosAndHasABlankBehindIt)
{
    EXPECT_EQ(as_path({0x40, 2, 7, 2, 1, 0, 0, 0, 100, 1}, kFourOctets), "100 16777216 ");
    EXPECT_EQ(as_path({0x40, 2, 8, 2, 1, 0, 0, 0, 100, 1, 2}, kFourOctets), "100 16908288 ");
    EXPECT_EQ(as_path({0x40, 2, 9, 2, 1, 0, 0, 0, 100, 1, 2, 3}, kFourOctets), "100 16909056 ");
    EXPECT_EQ(as_path({0x40, 2, 5, 2, 1, 0, 100, 1}, kTwoOctets), "100 256 ");
    EXPECT_EQ(as_path({0x50, 2, 0, 3, 2, 1, 9}, kTwoOctets), "2304 ");
}

TEST(GetRoutesAsPathDeath, OtherType_FailsAnAssertion)
{
    confd_value_t text;
    CONFD_SET_CBUF(&text, "2", 1);
    confd_value_t out{};
    EXPECT_DEATH(BgpUtils::GetRoutesAsPath(&text, kTwoOctets, &out),
                 "src/daemon/bgp_utils:[0-9]+: static int BgpUtils::GetRoutesAsPath\\(confd_value_t\\*, int, "
                 "confd_value_t\\*\\): Assertion `\\(in_vl_as_path\\)->type == C_BINARY' failed\\.");
}

}  // namespace

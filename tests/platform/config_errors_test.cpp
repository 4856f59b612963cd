// All errors of a file at once: each with its line and path, none that only follows from another.
#include <gmock/gmock.h>

#include "platform/refused_text.h"

namespace bgp_test {
namespace {

using bgp_platform::schema::Schema;
using bgp_platform::store::Configuration;
using bgp_platform::xml::Limits;
using bgp_platform::xml::LoadError;
using testing::ElementsAre;
using testing::SizeIs;

LoadError refused(const std::string& text, std::size_t most)
{
    Limits limits;
    limits.errors = most;
    Configuration configuration(Schema::builtin());
    try {
        bgp_platform::xml::read_config_text(text, "edge.xml", &configuration, limits);
    } catch (const LoadError& error) {
        return error;
    }
    ADD_FAILURE() << "not refused";
    return LoadError("not refused");
}

TEST(ConfigErrors, All_AreToldInOrderWithLineAndPath)
{
    EXPECT_THAT(refused(document(router("<bgp><as-number>1</as-number>\n"
                                        "<as-size>threeOctet</as-size>\n"
                                        "<colour>red<as-size>none</as-size></colour>\n"
                                        "<router-id a=\"1\">none</router-id>\n"
                                        "stray <vrf><name>red</name></vrf> and more\n"
                                        "<vrf><name>red</name></vrf></bgp>\n"
                                        "<bgp/>\n") +
                                 "<odd/>\n<router xmlns=\"urn:x\"/>"),
                        20)
                    .errors(),
                ElementsAre("edge.xml:2: /router/bgp{1}/as-size: \"threeOctet\" is not one of twoOctet, fourOctet",
                            "edge.xml:3: /router/bgp{1}: element <colour> is not in the data model",
                            "edge.xml:4: /router/bgp{1}/router-id: the attribute a is not supported; only xmlns is",
                            "edge.xml:5: /router/bgp{1}: text \"stray\" stands where elements belong",
                            "edge.xml:6: /router/bgp{1}/vrf{red}: the entry stands here twice",
                            "edge.xml:7: /router/bgp: an entry without its key as-number",
                            "edge.xml:8: /: element <odd> is not in the data model",
                            "edge.xml:9: /: element <router> has the namespace \"urn:x\" instead of "
                            "\"urn:bgp-update:yang:router\""));
}

TEST(ConfigErrors, WhatOnlyFollowsFromOne_IsNotTold)
{
    EXPECT_EQ(refusal("<bgp><as-number>x</as-number></bgp>"),
              "edge.xml:1: /router/bgp/as-number: \"x\" is not a number from 0 to 4294967295");
    EXPECT_EQ(refusal("<bgp><as-nummer>1</as-nummer></bgp>"),
              "edge.xml:1: /router/bgp: element <as-nummer> is not in the data model");
    EXPECT_EQ(refusal("<bgp><as-number><b>1</b></as-number></bgp>"),
              "edge.xml:1: /router/bgp/as-number: element <b> stands in a leaf");
    EXPECT_EQ(refusal("<bgp><as-number a=\"\">1</as-number></bgp>"),
              "edge.xml:1: /router/bgp/as-number: the attribute a is not supported; only xmlns is");
    EXPECT_EQ(refusal("<bgp><as-number>1</as-number><vrf><name>" + std::string((1 << 20) + 1, 'x') + "&amp;" +
                      std::string(1 << 20, 'y') + "</name></vrf></bgp>"),
              "edge.xml:1: /router/bgp{1}/vrf/name: a value of more than 1048576 bytes");
}

TEST(ConfigErrors, BeyondTheNumberAskedFor_AreCounted)
{
    std::string many;
    for (int i = 0; i < 25; ++i) {
        many += "<odd/>";
    }
    const LoadError some = refused(document(many), 3);
    EXPECT_THAT(some.errors(), SizeIs(3));
    EXPECT_EQ(some.more(), 22U);
    EXPECT_STREQ(some.what(),
                 "edge.xml:1: /: element <odd> is not in the data model\n"
                 "edge.xml:1: /: element <odd> is not in the data model\n"
                 "edge.xml:1: /: element <odd> is not in the data model\n"
                 "and 22 more");
    EXPECT_EQ(refused(document(many), 25).more(), 0U);
    EXPECT_EQ(refused(document("<odd/>"), 0).more(), 1U);
    EXPECT_THAT(refused(document(many), Limits().errors).errors(), SizeIs(20));
}

TEST(ConfigErrors, WhatMakesTheRestUnreadable_ComesLast)
{
    EXPECT_EQ(refusal("<odd/></bgp>\n<even/>"),
              "edge.xml:1: /router: element <odd> is not in the data model\n"
              "edge.xml:1: /router: not well-formed: Opening and ending tag mismatch: router line 1 and bgp");
    Limits limits;
    limits.entries = 1;
    EXPECT_EQ(refusal_of_text(document(router("<odd/><bgp><as-number>1</as-number></bgp><bgp/><even/>")),
                              Schema::builtin(), limits),
              "edge.xml:1: /router: element <odd> is not in the data model\n"
              "edge.xml:1: /router: an entry beyond the 1 that are allowed");
}

TEST(ConfigErrors, FileCutWithinATag_SaysNothingOfTheNameThatIsCut)
{
    const std::string text = document(router("<odd/><bgp><as-number>1</as-number></bgp>"));
    EXPECT_EQ(refusal_of_text(text.substr(0, text.find("gp><as"))),
              "edge.xml:1: /router: element <odd> is not in the data model\n"
              "edge.xml:1: /router: not well-formed: Couldn't find end of Start Tag b line 1");
    EXPECT_EQ(refusal_of_text(text.substr(0, text.find("-number"))),
              "edge.xml:1: /router: element <odd> is not in the data model\n"
              "edge.xml:1: /router/bgp: not well-formed: Couldn't find end of Start Tag as line 1");
    EXPECT_EQ(refusal_of_text(text.substr(0, text.find("odd/>") + 3)),
              "edge.xml:1: /router: not well-formed: Couldn't find end of Start Tag odd line 1");
}

TEST(ConfigErrors, PasswordInWhatIsPassedOver_IsNotShown)
{
    EXPECT_EQ(
        refusal_of_text(document("<DC-BGP-MIB xmlns=\"http://tail-f.com/ns/mibs/DC-BGP-MIB\"><bgpPeerTable>"
                                 "<bgpPeerEntry><bgpPeerConfigPassword a=\"\">x&hush;")),
        "edge.xml:1: /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry/bgpPeerConfigPassword: the attribute a is not supported; "
        "only xmlns is\n"
        "edge.xml:1: /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry: not well-formed; what stands here is not shown");
}

}  // namespace
}  // namespace bgp_test

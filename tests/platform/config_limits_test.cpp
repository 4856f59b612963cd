// What a configuration may hold at most, and what is shown of one that is refused: a bounded part of long texts, and
// nothing of passwords.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/refused_text.h"

namespace bgp_test {
namespace {

using bgp_platform::schema::Schema;
using bgp_platform::xml::Limits;
using testing::EndsWith;
using testing::HasSubstr;

// What is said about a neighbour's password.
std::string refusal_of_password(const std::string& content)
{
    return refusal_of_text(
        document("<DC-BGP-MIB xmlns=\"http://tail-f.com/ns/mibs/DC-BGP-MIB\"><bgpPeerTable><bgpPeerEntry>"
                 "<bgpPeerConfigPassword>" +
                 content + "</bgpPeerConfigPassword></bgpPeerEntry></bgpPeerTable></DC-BGP-MIB>"));
}

TEST(ConfigLimits, LongNameOrKey_IsQuotedWithinBounds)
{
    const std::string name(5000, 'n');
    const std::string shown = std::string(200, 'n') + "...";
    EXPECT_EQ(refusal("<" + name + "/>"), "edge.xml:1: /router: element <" + shown + "> is not in the data model");
    EXPECT_EQ(refusal("<bgp><as-number><" + name + "/></as-number></bgp>"),
              "edge.xml:1: /router/bgp/as-number: element <" + shown + "> stands in a leaf");
    EXPECT_EQ(refusal("<bgp " + name + "=\"\"/>"),
              "edge.xml:1: /router/bgp: the attribute " + shown + " is not supported; only xmlns is");
    EXPECT_THAT(refusal("<bgp xmlns=\"" + name + "\"/>"),
                HasSubstr("the namespace \"" + std::string(200, 'n') + "\"..."));
    EXPECT_THAT(refusal_of_text("<" + name + "/>"), HasSubstr("the outermost element is <" + shown + ">"));
    for (const std::string& markup : {"<" + name + ":bgp/>", "&" + name + ";", "<bgp></" + name + ">"}) {
        const std::string message = refusal(markup);
        EXPECT_THAT(message, HasSubstr("not well-formed: "));
        EXPECT_LT(message.size(), 300U) << message;
    }
    EXPECT_EQ(refusal("<bgp><as-number>1</as-number><vrf><name>" + name + "</name><odd/></vrf></bgp>"),
              "edge.xml:1: /router/bgp{1}/vrf{" + shown + "}: element <odd> is not in the data model");
}

TEST(ConfigLimits, PasswordThatIsRefused_IsNotShown)
{
    const std::string place = "edge.xml:1: /DC-BGP-MIB/bgpPeerTable/bgpPeerEntry/bgpPeerConfigPassword: ";
    EXPECT_EQ(refusal_of_password("a&hush;b"), place + "not well-formed; what stands here is not shown");
    EXPECT_EQ(refusal_of_password("a<hush b"), place + "not well-formed; what stands here is not shown");
    EXPECT_EQ(refusal_of_password("a\xFFhush"), place + "not well-formed; what stands here is not shown");
    EXPECT_THAT(refusal_of_text(document("<!-- <bgpPeerConfigPassword>hush")), EndsWith(": Comment not terminated"));
    EXPECT_EQ(refusal_of_password("a<hush>b</hush>"), place + "an element stands in a leaf");
    EXPECT_EQ(refusal_of_password("hush</bgpPeerConfigPassword><bgpPeerConfigPassword>hush"),
              place + "the leaf stands here twice");
    const auto schema = Schema::from_modules(
        {{"small",
          "module small { namespace \"urn:small\"; prefix s; leaf password { type string { length 1..3; } } }"}});
    EXPECT_EQ(refusal_of_text(document("<password xmlns=\"urn:small\">hush</password>"), schema),
              "edge.xml:1: /password: not a value of the leaf's type");
}

TEST(ConfigLimits, ValueBeyondTheLimit_IsToldAndNotQuoted)
{
    Limits limits;
    limits.value_bytes = 10;
    const auto list = [](const std::string& name) {
        return document("<prefix-list xmlns=\"urn:bgp-update:yang:prefix-list\">\n<name>" + name +
                        "</name></prefix-list>");
    };
    EXPECT_EQ(refusal_of_text(list("0123456789"), Schema::builtin(), limits), "not refused");
    const std::string told = "edge.xml:2: /prefix-list/name: a value of more than 10 bytes";
    EXPECT_EQ(refusal_of_text(list("01234567890"), Schema::builtin(), limits), told);
    EXPECT_EQ(refusal_of_text(list("01234<!-- in pieces -->56789&lt;"), Schema::builtin(), limits), told);
    EXPECT_EQ(refusal_of_text(list(std::string(1 << 20, 'x'))), "not refused");
    EXPECT_EQ(refusal_of_text(list(std::string((1 << 20) + 1, 'x'))),
              "edge.xml:2: /prefix-list/name: a value of more than 1048576 bytes");
}

TEST(ConfigLimits, EntryBeyondTheLimit_IsToldWithItsLine)
{
    Limits limits;
    limits.entries = 3;
    const std::string two =
        "<bgp-internal xmlns=\"urn:bgp-update:yang:bgp-internal\"><bgp-vrf><vrf-idx>0</vrf-idx>"
        "<bgp-free-index>7</bgp-free-index>";
    const std::string third = "<bgp-free-index>3</bgp-free-index>";
    const std::string end = "</bgp-vrf></bgp-internal>";
    EXPECT_EQ(refusal_of_text(document(two + third + end), Schema::builtin(), limits), "not refused");
    EXPECT_EQ(refusal_of_text(document(two + third + end + "\n" + router("<bgp/>")), Schema::builtin(), limits),
              "edge.xml:2: /router: an entry beyond the 3 that are allowed");
    EXPECT_EQ(refusal_of_text(document(two + third + "\n<bgp-free-index>5</bgp-free-index>" + end), Schema::builtin(),
                              limits),
              "edge.xml:2: /bgp-internal/bgp-vrf{0}/bgp-free-index: an entry beyond the 3 that are allowed");
}

TEST(ConfigLimits, DeepElements_AreTakenToTheLimit)
{
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "<bgp>";
    }
    EXPECT_EQ(refusal(deep),
              "edge.xml:1: /router/bgp/bgp: element <bgp> is not in the data model\n"
              "edge.xml:1: /router/bgp/bgp: elements are nested more than 1000 deep");
}

}  // namespace
}  // namespace bgp_test

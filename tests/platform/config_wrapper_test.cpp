// What a configuration may stand in: ConfD's <config>, and the requests and replies of NETCONF.
#include <gmock/gmock.h>

#include "platform/refused_text.h"
#include "xml/config_writer.h"

namespace bgp_test {
namespace {

using bgp_platform::schema::Schema;
using bgp_platform::store::Configuration;
using bgp_platform::xml::config_text;
using testing::HasSubstr;

const std::string kRouter = router("<bgp><as-number>1</as-number></bgp>");
const std::string kNetconf = " xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"";

std::string reply(const std::string& content)
{
    return "<rpc-reply" + kNetconf + " message-id=\"101\">" + content + "</rpc-reply>";
}

TEST(ConfigWrapper, WrappersOfNetconf_AreReadAndWrittenAsConfds)
{
    Configuration expected(Schema::builtin());
    bgp_platform::xml::read_config_text(document(kRouter), "edge.xml", &expected);
    for (const std::string& text :
         {"<config" + kNetconf + ">" + kRouter + "</config>", "<data" + kNetconf + ">" + kRouter + "</data>",
          reply("<data>" + kRouter + "</data>"),
          "<nc:rpc-reply xmlns:nc=\"urn:ietf:params:xml:ns:netconf:base:1.0\" xmlns:x=\"urn:x\" x:odd=\"&amp;\">"
          "\n<nc:data>" +
              kRouter + "</nc:data></nc:rpc-reply>"}) {
        Configuration configuration(Schema::builtin());
        bgp_platform::xml::read_config_text(text, "edge.xml", &configuration);
        EXPECT_EQ(config_text(configuration), config_text(expected)) << text;
    }
}

TEST(ConfigWrapper, ErrorInAReply_IsToldWithItsMessage)
{
    EXPECT_EQ(refusal_of_text(reply("\n<rpc-error><error-type>protocol</error-type><error-tag>access-denied</error-tag>"
                                    "<error-message xml:lang=\"en\">access &lt;denied&gt;</error-message>"
                                    "<error-info><error-message xmlns=\"urn:x\">no</error-message></error-info>"
                                    "</rpc-error>")),
              "edge.xml:2: the device answered with an error, not with its configuration: \"access <denied>\"");
    EXPECT_EQ(refusal_of_text(reply("<rpc-error/>")),
              "edge.xml:1: the device answered with an error, not with its configuration");
}

TEST(ConfigWrapper, ReplyWithoutData_IsRefused)
{
    EXPECT_EQ(refusal_of_text(reply("")), "edge.xml:1: the reply holds no <data>");
    EXPECT_EQ(refusal_of_text(reply("<ok/>")),
              "edge.xml:1: element <ok> stands in the reply, where one <data> belongs");
    EXPECT_EQ(refusal_of_text(reply("<data/>\n<data/>")),
              "edge.xml:2: element <data> stands in the reply, where one <data> belongs");
    EXPECT_EQ(refusal_of_text(reply("stray<data/>")), "edge.xml:1: /: text \"stray\" stands where elements belong");
}

TEST(ConfigWrapper, OtherWrapper_IsToldWithItsNamespace)
{
    const std::string belongs =
        "; a configuration stands in <config xmlns=\"http://tail-f.com/ns/config/1.0\">, or in NETCONF's <config>, "
        "<data> or <rpc-reply>";
    EXPECT_EQ(refusal_of_text(kRouter), "edge.xml:1: the outermost element is <router>" + belongs);
    EXPECT_EQ(refusal_of_text("<config/>"), "edge.xml:1: the outermost element is <config> in no namespace" + belongs);
    EXPECT_EQ(refusal_of_text("<rpc-reply xmlns=\"urn:x\"/>"),
              "edge.xml:1: the outermost element is <rpc-reply> in the namespace \"urn:x\"" + belongs);
    EXPECT_EQ(
        refusal_of_text("<data xmlns=\"http://tail-f.com/ns/config/1.0\"/>"),
        "edge.xml:1: the outermost element is <data> in the namespace \"http://tail-f.com/ns/config/1.0\"" + belongs);
    EXPECT_THAT(refusal_of_text("<rpc" + kNetconf + "/>"), HasSubstr("the outermost element is <rpc>; "));
}

TEST(ConfigWrapper, AttributesOfAConfiguration_AreRefused)
{
    EXPECT_EQ(refusal_of_text("<data" + kNetconf + " x=\"1\">\n<odd/></data>"),
              "edge.xml:1: /: the attribute x is not supported; only xmlns is\n"
              "edge.xml:2: /: element <odd> is not in the data model");
}

}  // namespace
}  // namespace bgp_test

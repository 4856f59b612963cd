// Whole-router backups: what stands in them of modules that the data model does not know comes out again as it was, by
// canonical XML, and is counted.
#include <gmock/gmock.h>

#include <random>

#include "device.h"
#include "platform/refused_text.h"
#include "support/canonical_xml.h"

namespace bgp_test {
namespace {

using bgp_platform::Datastore;
using bgp_platform::Device;
using bgp_platform::schema::Schema;
using bgp_platform::store::Configuration;
using bgp_platform::store::ForeignPart;
using bgp_platform::xml::config_text;
using bgp_platform::xml::Limits;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

bool is_foreign(const char* name_space)
{
    return Schema::builtin()->module_by_uri(name_space) == nullptr;
}

std::vector<std::optional<std::string>> foreign_in(const std::string& document)
{
    return canonical_top_elements(document, is_foreign);
}

Configuration load(const std::string& document, const Limits& limits = {})
{
    Configuration configuration(Schema::builtin());
    bgp_platform::xml::read_config_text(document, "router.xml", &configuration, limits);
    return configuration;
}

// What a document's foreign modules come to when it is loaded and written.
void expect_carried(const std::string& input)
{
    SCOPED_TRACE(input.substr(0, 2000));
    const std::string written = config_text(load(input));
    const auto expected = foreign_in(input);
    ASSERT_THAT(expected, Not(IsEmpty()));
    ASSERT_THAT(expected, testing::Each(testing::Ne(std::nullopt)));
    EXPECT_EQ(foreign_in(written), expected) << written;
    EXPECT_EQ(config_text(load(written)), written) << "written again it is the same";
}

constexpr char kSystem[] =
    "<system xmlns=\"urn:vendor:system\"><hostname>pe1</hostname><clock><zone>UTC</zone></clock></system>";

TEST(ForeignModules, TopElements_ComeLastInTheirOrder)
{
    const std::string aaa = "<a:aaa xmlns=\"http://tail-f.com/ns/config/1.0\" xmlns:a=\"urn:vendor:aaa\"/>";
    const Configuration configuration =
        load(document(kSystem + router("<bgp><as-number>1</as-number></bgp>") + "<!-- between -->\n" + aaa));
    EXPECT_EQ(config_text(configuration),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n"
              "  <router xmlns=\"urn:bgp-update:yang:router\">\n    <bgp>\n      <as-number>1</as-number>\n    </bgp>\n"
              "  </router>\n  " +
                  std::string(kSystem) + "\n  " + aaa + "\n</config>\n");
}

TEST(ForeignModules, Device_TellsWhatItCarries)
{
    Device device;
    device.load_text(document(std::string(kSystem) + "\n\n<a:aaa xmlns:a=\"urn:a?b&amp;c\"/>\n" + kSystem));
    ASSERT_THAT(device.foreign(), SizeIs(3));
    const ForeignPart& system = device.foreign()[0];
    EXPECT_EQ(system.name, "system");
    EXPECT_EQ(system.name_space, "urn:vendor:system");
    EXPECT_EQ(system.line, 1);
    EXPECT_EQ(system.elements, 4U);
    EXPECT_EQ(system.bytes, std::string(kSystem).size());
    EXPECT_EQ(device.foreign()[1].name_space, "urn:a?b&c");
    EXPECT_EQ(device.foreign()[1].line, 3);
    EXPECT_EQ(device.foreign()[2].line, 4);
    device.clear();
    EXPECT_THAT(device.foreign(), IsEmpty());
}

TEST(ForeignModules, BothDatastores_AreWrittenWithThem)
{
    Device device;
    device.load_text(document(kSystem));
    device.load_text(document("<more xmlns=\"urn:vendor:more\"/>"));
    device.open_upgrade();
    EXPECT_THAT(device.text(Datastore::Transaction), HasSubstr(kSystem));
    EXPECT_THAT(device.text(Datastore::Transaction), HasSubstr("<more xmlns=\"urn:vendor:more\"/>"));
    EXPECT_EQ(device.validate(Datastore::Transaction), "") << "libyang knows them as little";
    device.commit();
    EXPECT_THAT(device.foreign(), SizeIs(2));
}

TEST(ForeignModules, UnknownElementsOfKnownModules_StayRefused)
{
    EXPECT_EQ(refusal_of_text(document("<nothing xmlns=\"urn:bgp-update:yang:router\"/>")),
              "edge.xml:1: /: element <nothing> is not in the data model");
    EXPECT_EQ(refusal("<other xmlns=\"urn:vendor:system\"/>"),
              "edge.xml:1: /router: element <other> is not in the data model");
    EXPECT_EQ(refusal_of_text(document("<nothing/>")), "edge.xml:1: /: element <nothing> is not in the data model");
    EXPECT_EQ(refusal_of_text(document("<nothing xmlns=\"\"/>")),
              "edge.xml:1: /: element <nothing> is not in the data model");
    EXPECT_EQ(refusal_of_text(document("<router xmlns=\"urn:vendor:system\"/>")),
              "edge.xml:1: /: element <router> has the namespace \"urn:vendor:system\" instead of "
              "\"urn:bgp-update:yang:router\"");
}

TEST(ForeignModules, ModuleOfTheModelInThem_IsCarriedAlong)
{
    const Configuration configuration =
        load(document("<mount xmlns=\"urn:vendor:mount\">" + router("<bgp><odd/></bgp>") + "</mount>"));
    EXPECT_THAT(config_text(configuration), HasSubstr("<bgp><odd/></bgp></router></mount>"));
    EXPECT_EQ(config_text(configuration, false), "");
}

TEST(ForeignModules, Namespaces_MeanTheSame)
{
    const std::string tail = "http://tail-f.com/ns/config/1.0";
    for (const char* content : {
             "<a xmlns=\"urn:a\"><b xmlns=\"\"><c xmlns=\"urn:a\"/></b></a>",
             "<p:a xmlns:p=\"urn:a\"><p:a xmlns:p=\"urn:b\"><p:a/></p:a><p:a p:x=\"1\" y=\"2\"/></p:a>",
             "<p:a xmlns:p=\"urn:a\"><b/><b xmlns=\"\"/></p:a>",
             "<o:a><o:b xmlns:o=\"urn:inner\" o:c=\"1\"/><type>o:thing</type></o:a>",
             "<a xmlns=\"urn:a\"><type>o:only-in-a-value</type></a>",
             "<a xmlns=\"urn:a\" xmlns:o=\"urn:redeclared\" o:x=\"\" xml:lang=\"en\" xml:space=\"preserve\"/>",
             "<a xmlns=\"urn:a?x&amp;y=z\" xmlns:q='urn:it&apos;s'><q:b/></a>",
         }) {
        expect_carried("<config xmlns=\"" + tail + "\" xmlns:o=\"urn:outer\">" + content + "</config>");
        expect_carried("<w:config xmlns:w=\"" + tail + "\" xmlns:o=\"urn:outer\">" + content + "</w:config>");
        expect_carried(
            "<rpc-reply xmlns:o=\"urn:outer\" xmlns:unused=\"urn:unused\" message-id=\"1\" "
            "xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"><data xmlns:o=\"urn:nearer\">" +
            std::string(content) + "</data></rpc-reply>");
    }
}

TEST(ForeignModules, ValuesAndMarkup_StayAsTheyWere)
{
    for (const char* content : {
             "a&lt;b&amp;c&gt;d\"e'f&quot;&apos;&#13;&#10;\t",
             "<x y=\"&#9;&#10;&#13;&lt;&amp;&quot;&apos;&gt;&#38;#38;amp;\" z='\"'  w=\" two \n lines \"/>",
             "<![CDATA[<not> & an element]]]]><![CDATA[>]]>",
             "<!-- a & b < c --><x/><!----><?go on <now> & here?><?end?>tail",
             " mixed <b> content </b>  <i/> \n\n",
             "<x></x><y> </y>",
             "\xC3\xA9&#xE9;\xE2\x80\xA8\xF0\x9F\x98\x80&#x1F600;",
             "]]&gt;",
         }) {
        expect_carried(document("<a xmlns=\"urn:a\">" + std::string(content) + "</a>"));
    }
}

TEST(ForeignModules, OtherEncodings_ComeOutInUtf8)
{
    const std::string content = "<a xmlns=\"urn:a\" b=\"\xE9\">\xE9</a>";
    expect_carried("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + document(content));
    EXPECT_THAT(config_text(load("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + document(content))),
                HasSubstr("<a xmlns=\"urn:a\" b=\"\xC3\xA9\">\xC3\xA9</a>"));
}

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

TEST(ForeignModules, DeepAndLongOnes_AreWhole)
{
    expect_carried(document("<a xmlns=\"urn:a\">" + repeated("<b>", 990) + repeated("</b>", 990) + "</a>"));
    const std::string text = repeated("many words & more, ", 200000);
    expect_carried(document("<a xmlns=\"urn:a\"><![CDATA[" + text + "]]></a>"));
    expect_carried(document("<a xmlns=\"urn:a\"><!--" + text + "--><b c=\"" + repeated("&amp;x", 100000) + "\"/></a>"));
    expect_carried(document("<a xmlns=\"urn:a\">" + repeated("text ", 4000000) + "</a>"));
}

TEST(ForeignModules, NestedTooDeeply_AreRefused)
{
    const std::string deep = document("<a xmlns=\"urn:a\">\n" + repeated("<b>", 1000000));
    EXPECT_EQ(refusal_of_text(deep), "edge.xml:2: /a: elements are nested more than 1000 deep");
    EXPECT_EQ(refusal_of_text(document("<a xmlns=\"urn:a\">" + repeated("<b>", 998) + repeated("</b>", 998) + "</a>")),
              "not refused");
    Limits limits;
    limits.levels = 5;
    EXPECT_EQ(refusal_of_text(document("<a xmlns=\"urn:a\"><b><c><d/></c></b></a>"), Schema::builtin(), limits),
              "not refused");
    EXPECT_EQ(refusal_of_text(document("<a xmlns=\"urn:a\"><b><c><d><e/></d></c></b></a>"), Schema::builtin(), limits),
              "edge.xml:1: /a: elements are nested more than 5 deep");
}

TEST(ForeignModules, TooMuchOfThem_IsRefused)
{
    Limits limits;
    limits.foreign_bytes = 100000;
    const std::string part = "<a xmlns=\"urn:a\">" + std::string(40000, 'x') + "</a>\n";
    EXPECT_EQ(refusal_of_text(document(part + part), Schema::builtin(), limits), "not refused");
    EXPECT_EQ(refusal_of_text(document(part + part + part), Schema::builtin(), limits),
              "edge.xml:3: /a: with it, modules that are not in the data model take more than 100000 bytes");
    EXPECT_THAT(refusal_of_text(document(repeated("<a xmlns=\"u\"/>", 7000)), Schema::builtin(), limits),
                HasSubstr("take more than 100000 bytes"))
        << "what is kept about each counts too";
}

TEST(ForeignModules, WhatIsNotWellFormedInThem_IsNotShown)
{
    for (const char* content : {"<psk>a&hush;b</psk>", "<psk>a<hush b</psk>", "<psk>hush</hush>", "<hush:psk/>"}) {
        EXPECT_EQ(refusal_of_text(document("<keys xmlns=\"urn:keys\">\n" + std::string(content) + "</keys>")),
                  "edge.xml:2: /keys: not well-formed; what stands here is not shown");
    }
    EXPECT_THAT(refusal_of_text("<!DOCTYPE a [<!ENTITY b \"c\">]>" + document("<a xmlns=\"urn:a\">&b;</a>")),
                HasSubstr("a DOCTYPE is not allowed"));
}

// Random trees of elements whose prefixes and default namespaces come and go.
class RandomDocument {
public:
    explicit RandomDocument(unsigned int seed) : random_(seed) {}

    std::string draw()
    {
        static const char* const kWrappers[] = {
            "config xmlns=\"http://tail-f.com/ns/config/1.0\"", "w:config xmlns:w=\"http://tail-f.com/ns/config/1.0\"",
            "data xmlns=\"urn:ietf:params:xml:ns:netconf:base:1.0\"",
            "q:data xmlns=\"urn:default\" xmlns:q=\"urn:ietf:params:xml:ns:netconf:base:1.0\""};
        const std::string wrapper = kWrappers[below(4)];
        Scope scope{false, {}};
        text_ = "<" + wrapper + (below(2) == 0 ? " xmlns:p=\"urn:p-outside\"" : "") + ">";
        for (std::size_t i = 0, count = 1 + below(3); i < count; ++i) {
            element(scope, 0, true);
        }
        return text_ + "</" + wrapper.substr(0, wrapper.find(' ')) + ">";
    }

private:
    struct Scope {
        bool default_declared;
        std::vector<std::string> prefixes;
    };

    std::size_t below(std::size_t bound) { return random_() % bound; }
    std::string uri() { return "urn:" + std::string(1, static_cast<char>('a' + below(3))); }

    void element(Scope scope, int depth, bool top)
    {
        std::string declared;
        if (top || below(4) == 0) {
            declared += " xmlns=\"" + (!top && below(3) == 0 ? std::string() : uri()) + "\"";
        }
        for (const char* prefix : {"p", "q"}) {
            if (below(3) == 0) {
                declared += std::string(" xmlns:") + prefix + "=\"" + uri() + "-" + prefix + "\"";
                scope.prefixes.emplace_back(prefix);
            }
        }
        const std::string prefix =
            scope.prefixes.empty() || below(2) == 0 ? "" : scope.prefixes[below(scope.prefixes.size())] + ":";
        const std::string name = prefix + std::string(1, static_cast<char>('a' + below(26)));
        text_ += "<" + name + declared + attributes(scope);
        if (below(6) == 0) {
            text_ += "/>";
            return;
        }
        text_ += ">";
        for (std::size_t i = 0, count = below(5); i < count; ++i) {
            below(2) == 0 && depth < 6 ? element(scope, depth + 1, false) : content();
        }
        text_ += "</" + name + ">";
    }

    std::string attributes(const Scope& scope)
    {
        std::string all = below(2) == 0 ? " one=\"" + value() + "\"" : "";
        all += below(4) == 0 ? " two='" + value() + "'" : "";
        if (!scope.prefixes.empty() && below(2) == 0) {
            all += " " + scope.prefixes.back() + ":three=\"" + value() + "\"";
        }
        return all;
    }

    std::string value()
    {
        static const char* const kPieces[] = {"&#10;", "&lt;", "&quot;", "&amp;", "&#9;", "&#13;",    "&#38;#38;",
                                              " ",     "\n",   "x",      ">",     "p:y",  "\xC3\xA9", "&apos;"};
        std::string all;
        for (std::size_t i = 0, count = below(5); i < count; ++i) {
            all += kPieces[below(std::size(kPieces))];
        }
        return all;
    }

    void content()
    {
        static const char* const kContents[] = {"<![CDATA[<&]]>", "<!-- c&d -->", "<?pi some data?>", "<?pi?>",
                                                "&#13;\n",        "q:thing",      "]]&gt;",           "\"'"};
        text_ += below(2) == 0 ? value() : kContents[below(std::size(kContents))];
    }

    std::mt19937 random_;
    std::string text_;
};

TEST(ForeignModules, RandomTrees_AreCarriedAsTheyAre)
{
    for (unsigned int seed = 0; seed < 500 && !HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        expect_carried(RandomDocument(seed).draw());
    }
}

}  // namespace
}  // namespace bgp_test

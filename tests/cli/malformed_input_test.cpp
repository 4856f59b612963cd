// Malformed configurations, some thousands: each is refused with file, line and path, or accepted where a rule says that
// it may be.
#include <gmock/gmock.h>

#include <algorithm>
#include <map>

#include "cli/fake_library.h"
#include "cli/malformed_corpus.h"
#include "device.h"

namespace bgp_test {
namespace {

using bgp_platform::Datastore;
using bgp_platform::Device;
using bgp_platform::xml::LoadError;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const Corpus& corpus()
{
    static const Corpus all;
    return all;
}

// What loading comes to: a message, or the configuration as it is written out.
struct Loaded {
    std::string refusal;
    std::vector<std::string> lines;
};

Loaded load(const std::string& text)
{
    Device device;
    try {
        device.load_text(text, "small.xml");
    } catch (const LoadError& error) {
        EXPECT_EQ(device.text(Datastore::Stored), Device().text(Datastore::Stored)) << "a refused file leaves nothing";
        return {error.what(), {}};
    }
    const std::string written = device.text(Datastore::Stored);
    Device again;
    again.load_text(written);
    EXPECT_EQ(again.text(Datastore::Stored), written) << "what is accepted can be written and loaded again";
    Loaded loaded{{}, lines_of(written)};
    std::sort(loaded.lines.begin(), loaded.lines.end());
    return loaded;
}

// "small.xml:7: /prefix-list{a}/name: ..."; the line is one of the document's.
void expect_told(const std::string& message, const Malformed& input)
{
    ASSERT_THAT(message, StartsWith("small.xml:"));
    std::size_t digits = 0;
    const std::string behind_name = message.substr(std::string("small.xml:").size());
    const long line = std::stol(behind_name, &digits);
    EXPECT_GE(line, 1);
    EXPECT_LE(line, std::count(input.text.begin(), input.text.end(), '\n') + 1) << message;
    const std::string what = behind_name.substr(digits);
    EXPECT_THAT(what, StartsWith(input.inside ? ": /" : ": ")) << message;
    for (const std::string& each : lines_of(message)) {
        EXPECT_LT(each.size(), 400U);
    }
}

std::vector<std::string> difference(const std::vector<std::string>& from, const std::vector<std::string>& to)
{
    std::vector<std::string> missing;
    std::set_difference(from.begin(), from.end(), to.begin(), to.end(), std::back_inserter(missing));
    return missing;
}

// Whether the two lines are one leaf with two values.
bool is_one_leaf(const std::string& before, const std::string& after)
{
    const auto name = [](const std::string& line) { return line.substr(0, line.find_first_of("/>")); };
    return name(before) == name(after) && before.find("</") != std::string::npos;
}

void expect_allowed(const Loaded& loaded, Allowed allowed)
{
    static const std::vector<std::string> small = load(kSmall).lines;
    const std::vector<std::string> gone = difference(small, loaded.lines);
    const std::vector<std::string> come = difference(loaded.lines, small);
    switch (allowed) {
        case Allowed::Nothing:
            ADD_FAILURE() << "accepted";
            break;
        case Allowed::Same:
            EXPECT_EQ(loaded.lines, small);
            break;
        case Allowed::Value:
            EXPECT_EQ(gone.size(), come.size());
            EXPECT_LE(gone.size(), 1U);
            EXPECT_TRUE(gone.empty() || come.empty() || is_one_leaf(gone[0], come[0]));
            break;
        case Allowed::NoLeaf:
            EXPECT_EQ(gone.size(), 1U);
            EXPECT_THAT(come, ElementsAre());
            break;
    }
}

void expect_handled(const std::vector<Malformed>& inputs)
{
    ASSERT_FALSE(inputs.empty());
    for (const Malformed& input : inputs) {
        SCOPED_TRACE(input.kind + ":\n" + input.text);
        const Loaded loaded = load(input.text);
        if (loaded.refusal.empty()) {
            expect_allowed(loaded, input.allowed);
        } else {
            expect_told(loaded.refusal, input);
        }
        if (testing::Test::HasFailure()) {
            return;  // one is enough to read
        }
    }
}

// How many inputs there are of each kind.
std::map<std::string, std::size_t> kinds()
{
    std::map<std::string, std::size_t> counts;
    for (const Malformed& each : corpus().all()) {
        ++counts[each.kind];
    }
    return counts;
}

TEST(MalformedInput, Corpus_HasThousandsOfInputsOfEveryKind)
{
    EXPECT_GE(corpus().all().size(), 10000U);
    for (const Malformed& each : corpus().all()) {
        EXPECT_NE(each.text, kSmall);
    }
    EXPECT_EQ(kinds().at("truncation"), std::string(kSmall).size());
    EXPECT_EQ(kinds().size(), 11U);
}

TEST(MalformedInput, FileCutOffAnywhere_IsToldWithLineAndPath)
{
    expect_handled(corpus().of("truncation"));
}

TEST(MalformedInput, ByteWithTurnedBits_IsToldOrIsAnotherValue)
{
    expect_handled(corpus().of("flip"));
}

TEST(MalformedInput, MissingByte_IsToldOrIsAnotherValue)
{
    expect_handled(corpus().of("missing byte"));
}

TEST(MalformedInput, LeafMissingDoubledOrOfAnotherType_IsTold)
{
    for (const char* kind :
         {"missing key", "missing leaf", "doubled leaf", "wrong type", "element in a leaf", "attribute"}) {
        expect_handled(corpus().of(kind));
    }
}

TEST(MalformedInput, UnknownNameOrNamespace_IsTold)
{
    for (const char* kind : {"unknown name", "wrong namespace"}) {
        expect_handled(corpus().of(kind));
    }
}

std::string in_config(const std::string& content)
{
    return "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n" + content + "\n</config>";
}

// A document and what its refusal begins with.
struct Odd {
    std::string text;
    std::string told;
};

std::vector<Odd> odd_documents()
{
    const std::string router = "<router xmlns=\"urn:bgp-update:yang:router\">";
    std::string attributes;
    for (int i = 0; i < 10000; ++i) {
        attributes += " a" + std::to_string(i) + "=\"\"";
    }
    return {
        {"", "small.xml:1: the file is empty"},
        {std::string(1000, '\0'), "small.xml:1: this is a binary file"},
        {"\x7F"
         "ELF\x02\x01\x01",
         "small.xml:1: this is a binary file"},
        {"{\"config\": {}}", "small.xml:1: this begins like JSON"},
        {"\xEF\xBB\xBF" + in_config("<odd/>"), "small.xml:2: /: element <odd> is not in the data model"},
        {"<?xml version=\"1.0\" encoding=\"no-such\"?>" + in_config(""), "small.xml:1: not well-formed: "},
        {"<!DOCTYPE config>" + in_config(""), "small.xml:1: a DOCTYPE is not allowed"},
        {"<!DOCTYPE a [<!ENTITY b \"c\"><!ENTITY d \"&b;&b;\">]>" + in_config("&d;"),
         "small.xml:1: a DOCTYPE is not allowed"},
        {"<!DOCTYPE a SYSTEM \"/etc/passwd\">" + in_config(""), "small.xml:1: a DOCTYPE is not allowed"},
        {in_config("<!DOCTYPE a>"), "small.xml:2: /: not well-formed: "},
        {in_config(router + "<bgp><as-number>&b;"), "small.xml:2: /router/bgp/as-number: not well-formed: Entity 'b'"},
        {in_config(router + "<include xmlns=\"http://www.w3.org/2001/XInclude\" href=\"/etc/passwd\"/>"),
         "small.xml:2: /router: element <include>"},
        {in_config(router + "<bgp" + attributes), "small.xml:3: /router: not well-formed: "},
        {in_config(router + "<bgp a=\"1\" a=\"2\"/>"), "small.xml:2: /router: not well-formed: Attribute a redefined"},
        {in_config(router + "<bgp><as-number>1]]></as-number></bgp></router>"),
         "small.xml:2: /router/bgp/as-number: not well-formed"},
        {in_config(router + "<bgp><as-number>&#0;"), "small.xml:2: /router/bgp/as-number: not well-formed"},
        {in_config(router + "<bgp><as-number>&#xFFFFFFFF;"), "small.xml:2: /router/bgp/as-number: not well-formed"},
        {in_config("") + in_config(""), "small.xml:3: not well-formed: Extra content"},
        {in_config(router + "\n\n<bgp>\n<as-size>\ntwoOctet</as-size>\n</bgp></router>"),
         "small.xml:4: /router/bgp: an entry without its key as-number"},
    };
}

TEST(MalformedInput, OddDocuments_AreToldWithLineAndPath)
{
    for (const Odd& odd : odd_documents()) {
        SCOPED_TRACE(odd.text.substr(0, 200));
        EXPECT_THAT(load(odd.text).refusal, StartsWith(odd.told));
    }
}

// The command says the same of a few of every kind, and runs nothing.
TEST(MalformedInput, Command_TellsTheSameAndExitsWithTwo)
{
    const ScratchFolder folder;
    std::vector<std::string> texts;
    for (const auto& [kind, count] : kinds()) {
        const std::vector<Malformed> inputs = corpus().of(kind);
        for (std::size_t i = count / 4; i < count; i += count / 3) {
            if (!load(inputs[i].text).refusal.empty()) {
                texts.push_back(inputs[i].text);
            }
        }
    }
    for (const Odd& odd : odd_documents()) {
        texts.push_back(odd.text);
    }
    ASSERT_GE(texts.size(), 40U);
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 2000));
        const std::string config = folder.file("small.xml", text);
        const CommandResult result = rehearse({"run", config, "-o", folder / "out.xml"});
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        const std::string refusal = load(text).refusal;
        EXPECT_THAT(result.err,
                    StartsWith("bgp-rehearse: " + config + refusal.substr(9, refusal.find(": ") - 9) + ": "));
        EXPECT_THAT(folder.names(), ElementsAre("small.xml"));
    }
}

}  // namespace
}  // namespace bgp_test

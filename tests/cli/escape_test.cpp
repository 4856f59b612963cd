// What a terminal would act on, in every place where text from outside is shown: each byte, the control characters beyond
// ASCII and the marks that turn the direction of writing come out visible and harmless.
#include <gmock/gmock.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>

#include "cli/fake_library.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using testing::HasSubstr;

// The characters beyond ASCII that are dangerous, as code points: C1, line and paragraph separator, bidirectional marks.
std::vector<uint32_t> dangerous_characters()
{
    std::vector<uint32_t> codes = {0x061C, 0x200E, 0x200F, 0x2028, 0x2029};
    const auto add = [&](uint32_t first, uint32_t last) {
        for (uint32_t code = first; code <= last; ++code) {
            codes.push_back(code);
        }
    };
    add(0x80, 0x9F);
    add(0x202A, 0x202E);
    add(0x2066, 0x2069);
    return codes;
}

std::string utf8(uint32_t code)
{
    const auto tail = [](uint32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (code < 0x800) {
        return {static_cast<char>(0xC0 | code >> 6), tail(code)};
    }
    return {static_cast<char>(0xE0 | code >> 12), tail(code >> 6), tail(code)};
}

std::string printed(const char* format, uint32_t number)
{
    char text[16];
    snprintf(text, sizeof text, format, number);
    return text;
}

// How a single byte has to be shown.
std::string shown_byte(unsigned char byte)
{
    switch (byte) {
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            return byte < 0x20 || byte >= 0x7F ? printed("\\x%02x", byte) : std::string(1, static_cast<char>(byte));
    }
}

// All that is to be shown, and how: every byte but NUL, and every dangerous character.
struct Sample {
    std::string text;
    std::string shown;
};

std::vector<Sample> samples()
{
    std::vector<Sample> all;
    for (unsigned byte = 1; byte < 256; ++byte) {
        all.push_back({std::string(1, static_cast<char>(byte)), shown_byte(static_cast<unsigned char>(byte))});
    }
    for (const uint32_t code : dangerous_characters()) {
        all.push_back({utf8(code), printed("\\u{%04x}", code)});
    }
    return all;
}

// A C string literal.
std::string literal(const std::string& text)
{
    std::string quoted = "\"";
    for (const char byte : text) {
        quoted += printed("\\%03o", static_cast<unsigned char>(byte));
    }
    return quoted + "\"";
}

// "one", "two", ... for the samples; each stands between square brackets.
std::string literals()
{
    std::string list;
    for (const Sample& sample : samples()) {
        list += (list.empty() ? "" : ", ") + literal("[" + sample.text + "]");
    }
    return list;
}

void expect_harmless(std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        ASSERT_TRUE((byte >= 0x20 && byte != 0x7F) || byte == '\n') << "byte " << int{byte} << " at " << i;
    }
    for (const uint32_t code : dangerous_characters()) {
        EXPECT_EQ(text.find(utf8(code)), std::string_view::npos) << "character " << code;
    }
}

// One of each sort, and how it is shown.
constexpr char kDangerous[] = "a\033[2J\xC2\x9B\xE2\x80\xAE\x7F\nb";
constexpr char kDangerousShown[] = "a\\x1b[2J\\u{009b}\\u{202e}\\x7f\\nb";

class Escape : public RehearseTest {
protected:
    // A library that does `each` with each sample, as `text`, and then returns.
    std::string library(const std::string& each) const
    {
        return fake_library(folder, "for (const char* text : {" + literals() + "}) {" + each + "} return 0;");
    }
};

TEST_F(Escape, LogLines_ShowEachByteInTheFile)
{
    const std::string log = folder / "upgrade.log";
    ASSERT_EQ(rehearse({"run", config, "--library", library("log(\"%s\\n\", text);"), "--log", log}).status, 0);
    std::vector<std::string> expected;
    for (const Sample& sample : samples()) {
        expected.push_back("[" + sample.shown + "]");
    }
    EXPECT_EQ(lines_of(content_of(log)), expected);
}

TEST_F(Escape, LogLinesAndFaults_ShowEachByteInTheReport)
{
    const CommandResult result =
        rehearse({"run", config, "--library", library("log(\"%s\\n\", text); nzmw_gen_fault(1, text, text, 1, text);"),
                  "--log", "-", "--fail-on", "never"});
    ASSERT_EQ(result.status, 0);
    expect_harmless(result.out);
    for (const Sample& sample : samples()) {
        const std::string shown = "[" + sample.shown + "]";
        EXPECT_THAT(result.out, HasSubstr("\n  " + shown + "\n"));
        EXPECT_THAT(result.out, HasSubstr(shown + " (" + shown + ":1): " + shown + "\n"));
    }
}

TEST_F(Escape, KeysAndValues_ShowEachByteInTheReport)
{
    const CommandResult result = rehearse({"run", config, "--library", library(R"(
        maapi_create(maapi, th, "/prefix-list-internal/name-to-idx{%s}", text);
        maapi_create(maapi, th, "/router/bgp{1}/vrf{%s}", text);
        static int index = 0;
        maapi_create(maapi, th, "/prefix-list-internal/idx-to-name{%d}", ++index);
        maapi_set_elem2(maapi, th, text, "/prefix-list-internal/idx-to-name{%d}/val", index);)"),
                                           "--changes"});
    ASSERT_EQ(result.status, 0);
    expect_harmless(result.out);
    for (const Sample& sample : samples()) {
        const std::string shown = "[" + sample.shown + "]";
        EXPECT_THAT(result.out, HasSubstr("  " + shown + "\n")) << "as a value";
        const bool quoted = sample.text == "\"" || sample.text == "\\";  // a keypath's own way to write these
        EXPECT_THAT(result.out, HasSubstr(quoted ? "[\\" + sample.text + "]" : shown)) << "as a key";
    }
}

TEST_F(Escape, FailedWrites_ShowEachByteInTheReport)
{
    const CommandResult result = rehearse(
        {"run", config, "--library", library("maapi_delete(maapi, th, \"/prefix-list{%s}\", text);"), "--json"});
    ASSERT_EQ(result.status, 0);
    expect_harmless(result.out);
    const std::string body = "maapi_delete(maapi, th, \"/prefix-list{%s}\", " + literal(kDangerous) + "); return 0;";
    const CommandResult one = rehearse({"run", config, "--library", fake_library(folder, body)});
    expect_harmless(one.out);
    EXPECT_THAT(one.out, HasSubstr(kDangerousShown));
}

TEST_F(Escape, JsonReport_IsAsciiAndHoldsTheTexts)
{
    const CommandResult result =
        rehearse({"run", config, "--library",
                  library("log(\"%s\", text); maapi_create(maapi, th, \"/prefix-list{%s}\", text);"), "--json",
                  "--json-log"});
    ASSERT_EQ(result.status, 0);
    expect_harmless(result.out);
    for (const char byte : result.out) {
        ASSERT_LT(static_cast<unsigned char>(byte), 0x7F);
    }
    const auto log = nlohmann::json::parse(result.out)["log"];
    const std::vector<Sample> all = samples();
    ASSERT_EQ(log.size(), all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        const bool utf8_text = all[i].text.size() > 1 || static_cast<unsigned char>(all[i].text[0]) < 0x80;
        EXPECT_EQ(log[i], "[" + (utf8_text ? all[i].text : "\xEF\xBF\xBD") + "]");
    }
}

TEST_F(Escape, UpgradeThatEnds_IsToldHarmlessly)
{
    std::string all;
    for (const Sample& sample : samples()) {
        all += sample.text;
    }
    for (const std::string& body :
         {"throw std::runtime_error(" + literal(all) + ");",
          "nzmw_gen_fault(1, " + literal(all) + ", " + literal(all) + ", 1, " + literal(all) + "); exit(1);"}) {
        const CommandResult result =
            rehearse({"run", config, "--library", fake_library(folder, body), "-o", folder / "out\033.xml"});
        EXPECT_EQ(result.status, 1);
        expect_harmless(result.out);
        expect_harmless(result.err);
        EXPECT_THAT(result.out, HasSubstr("\\x1b"));
        EXPECT_THAT(result.err, HasSubstr("\\u{061c}"));
    }
}

TEST_F(Escape, Sweep_IsToldHarmlessly)
{
    const std::string text = literal(kDangerous);
    const std::string odd_library =
        fake_library(folder,
                     "confd_value_t as; if (cdb_get(cdb, &as, \"/router/bgp{65010}/as-size\") == CONFD_EOF) {"
                     "nzmw_gen_fault(1, " +
                         text + ", " + text + ", 1, " + text + "); exit(1);} return 0;");
    const std::string odd_config = folder.file(kDangerous, content_of(config));
    const CommandResult report = rehearse({"sweep", odd_config, "--library", odd_library});
    EXPECT_EQ(report.status, 6) << report.err;
    EXPECT_THAT(report.out, HasSubstr(std::string("ended in ") + kDangerousShown));
    EXPECT_THAT(report.out, HasSubstr(std::string("first in ") + (folder / kDangerousShown)));
    expect_harmless(report.out);
    const CommandResult document = rehearse({"sweep", odd_config, "--library", odd_library, "--json"});
    expect_harmless(document.out);
    EXPECT_THAT(nlohmann::json::parse(document.out)["configurations"], testing::ElementsAre(odd_config));
}

TEST_F(Escape, NamesOfTheCommandLine_AreToldHarmlessly)
{
    std::string name;
    for (const Sample& sample : samples()) {
        const bool printable = sample.text == sample.shown;
        const bool broken = sample.text.size() == 1 && static_cast<unsigned char>(sample.text[0]) >= 0x80;
        name += printable || broken ? "" : sample.text;
    }
    const std::string missing = folder / ("no\xFF" + name + "/no");
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"run", missing},
                                               {"run", config, "--library", missing},
                                               {"run", config, "-o", missing},
                                               {"run", config, "--log", missing},
                                               {"run", config, "--" + name},
                                               {"run", config, "--interfaces", name},
                                               {"generate", "-o", missing},
                                               {"sweep", missing},
                                               {"run", config, "--library", folder / std::string(300, 'x') + name},
                                               {"run", config, "-o", folder / std::string(300, 'x') + name}}) {
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.status, 2);
        expect_harmless(result.err);
        EXPECT_THAT(result.err, HasSubstr("\\x1b"));
        EXPECT_THAT(result.err, HasSubstr("\\u{202e}"));
    }
}

TEST_F(Escape, TextsOfARefusedConfiguration_AreToldHarmlessly)
{
    std::string text;
    std::string shown;
    for (const uint32_t code : dangerous_characters()) {
        text += utf8(code);
        shown += printed("\\u{%04x}", code);
    }
    const std::string head =
        "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n<router xmlns=\"urn:bgp-update:yang:router\"><bgp>";
    const std::string end = "</bgp></router></config>";
    const std::string part = text.substr(0, 60);  // more is cut
    const std::string shown_part = shown.substr(0, shown.find("\\u{0090}"));
    for (const std::string& content : {"<as-size>\x7F&#10;" + part + "</as-size>",
                                       "<as-number>1</as-number><vrf><name>\x7F&#10;" + part + "</name><odd/></vrf>",
                                       "<as-number>1</as-number>" + part}) {
        const CommandResult result = rehearse({"run", folder.file("odd.xml", head + content + end)});
        EXPECT_EQ(result.status, 2);
        ASSERT_FALSE(result.err.empty());
        expect_harmless(result.err);
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << "one line";
        EXPECT_THAT(result.err,
                    HasSubstr(content.find('\x7F') == std::string::npos ? shown_part : "\\x7f\\n" + shown_part));
    }
}

}  // namespace
}  // namespace bgp_test

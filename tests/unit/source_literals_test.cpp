// What readers of logs, traces and fault reports know by heart stands in the lists of contract/, as C spells it, in quotes:
// every text and keypath of the library's sources, every type that a failed type check names and every signature that it
// shows. A text that is listed and not in the sources, or in the sources and not listed, fails. The keypaths and texts
// stand whole in the sources, so that whoever meets one finds the place by searching for it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "support/plain_signature.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;

// The string literals of a source as they are spelled, without quotes. Literals that follow one another are one; what
// stands in comments, the names of included files, of linkages and of attributes, and what a static assertion says to
// whoever compiles, are none.
class LiteralReader {
public:
    explicit LiteralReader(const std::string& source) : source_(source) {}

    std::vector<std::string> read()
    {
        while (at_ < source_.size()) {
            if (starts("//") || starts("#include")) {
                skip_to("\n", 0);
            } else if (starts("/*")) {
                skip_to("*/", 2);
            } else if (starts("extern \"C\"")) {
                skip_to("C\"", 2);
            } else if (starts("__attribute__((visibility(")) {
                skip_to(")))", 3);
            } else if (starts("static_assert(")) {
                skip_to(";", 1);
            } else if (source_[at_] == '"') {
                literal();
            } else {
                other();
            }
        }
        return std::move(literals_);
    }

private:
    bool starts(const char* text) const { return source_.compare(at_, std::string(text).size(), text) == 0; }

    void skip_to(const char* end, std::size_t past)
    {
        const std::size_t found = source_.find(end, at_);
        at_ = found == std::string::npos ? source_.size() : found + past;
    }

    // What stands between the quote here and the next one; the position is behind it then.
    std::string quoted()
    {
        const char quote = source_[at_];
        const std::size_t start = ++at_;
        while (at_ < source_.size() && source_[at_] != quote) {
            at_ += source_[at_] == '\\' ? 2 : 1;
        }
        return source_.substr(start, at_++ - start);
    }

    void literal()
    {
        const std::string text = quoted();
        if (joins_) {
            literals_.back() += text;
        } else {
            literals_.push_back(text);
        }
        joins_ = true;
    }

    void other()
    {
        const char here = source_[at_];
        const bool in_number = at_ > 0 && std::isalnum(static_cast<unsigned char>(source_[at_ - 1])) != 0;
        joins_ = joins_ && std::isspace(static_cast<unsigned char>(here)) != 0;
        if (here == '\'' && !in_number) {
            quoted();
        } else {
            ++at_;
        }
    }

    const std::string& source_;
    std::size_t at_ = 0;
    bool joins_ = false;
    std::vector<std::string> literals_;
};

std::vector<std::string> literals_of(const std::string& source)
{
    return LiteralReader(source).read();
}

// A keypath is rooted, in itself or in a path that it is given, and has blanks only between the keys in braces. All other
// literals are texts.
bool is_keypath(const std::string& literal)
{
    static const std::regex keypath(R"((%s(?=[/{\[])|/)([^ {}]|\{[^{}]*\}(?=$|[/{\[]))*)");
    return std::regex_match(literal, keypath);
}

std::vector<std::string> keypaths_of(const std::string& source)
{
    std::vector<std::string> literals = literals_of(source);
    literals.erase(std::remove_if(literals.begin(), literals.end(), [](const auto& text) { return !is_keypath(text); }),
                   literals.end());
    return literals;
}

std::vector<std::string> texts_of(const std::string& source)
{
    std::vector<std::string> literals = literals_of(source);
    literals.erase(std::remove_if(literals.begin(), literals.end(), is_keypath), literals.end());
    return literals;
}

// The arguments of a call whose opening parenthesis is at `open`, each with single blanks.
std::vector<std::string> arguments_at(const std::string& source, std::size_t open)
{
    std::vector<std::string> arguments(1);
    int depth = 1;
    for (std::size_t at = open + 1; at < source.size(); ++at) {
        const char here = source[at];
        depth += here == '(' ? 1 : here == ')' ? -1 : 0;
        std::string& argument = arguments.back();
        if (depth == 0) {
            break;
        }
        if (here == ',' && depth == 1) {
            arguments.emplace_back();
        } else if (std::isspace(static_cast<unsigned char>(here)) == 0) {
            argument += here;
        } else if (!argument.empty() && argument.back() != ' ') {
            argument += ' ';
        }
    }
    return arguments;
}

// The texts that failed type checks of a source show, as the check's macro composes them.
std::vector<std::string> asserted_in(const std::string& source)
{
    std::vector<std::string> texts;
    for (const std::string check : {"BGP_REQUIRE_TYPE(", "BGP_REQUIRE_TYPE_FOR(", "BGP_REQUIRE_TYPE_AT("}) {
        for (std::size_t at = source.find(check); at != std::string::npos; at = source.find(check, at + 1)) {
            const std::vector<std::string> arguments = arguments_at(source, at + check.size() - 1);
            const std::string& pointer = arguments.at(arguments.size() - 2);
            texts.push_back("(" + pointer + ")->type == " + arguments.back());
        }
    }
    return texts;
}

// The signatures among the strings of a section of read-only data, as GCC spells them.
std::vector<std::string> signatures_among(const std::string& strings)
{
    static const std::regex signature(
        R"(((static|virtual) )?((const|unsigned) )*([\w:<>]+[*&]* )?[\w:~]+\([^()]*\)( const)?)");
    std::vector<std::string> signatures;
    for (const std::string& line : lines_of(strings)) {
        const std::size_t text = line.find("]  ");  // readelf: [  offset]  text
        const std::string spelled = text == std::string::npos ? "" : bgp_test::plain_signature(line.substr(text + 3));
        if (std::regex_match(spelled, signature)) {
            signatures.push_back(spelled);
        }
    }
    return signatures;
}

// What `parts_of` finds in the library's sources and public headers. The header that composes the texts of failed type
// checks has only pieces of them.
template <typename Parts>
std::set<std::string> in_library(Parts parts_of)
{
    std::set<std::string> found;
    for (const char* folder : {BGP_SOURCE_DIR "/src", BGP_SOURCE_DIR "/include"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
            const bool is_code = entry.path().extension() == ".cpp" || entry.path().extension() == ".h";
            if (is_code && entry.path().filename() != "type_check.h") {
                const std::vector<std::string> parts = parts_of(content_of(entry.path()));
                found.insert(parts.begin(), parts.end());
            }
        }
    }
    return found;
}

std::set<std::string> listed(const std::string& name)
{
    static const std::regex entry("\"(.*)\"");
    std::set<std::string> texts;
    for (const std::string& line : lines_of(content_of(BGP_SOURCE_DIR "/contract/" + name))) {
        if (!line.empty() && line[0] != '#') {
            std::smatch parts;
            EXPECT_TRUE(std::regex_match(line, parts, entry)) << name << ": not in quotes: " << line;
            EXPECT_TRUE(texts.insert(parts[1]).second) << name << ": twice: " << line;
        }
    }
    EXPECT_FALSE(texts.empty()) << name;
    return texts;
}

// What only one of both has, a line each.
std::string differences(const std::set<std::string>& list, const std::set<std::string>& library)
{
    std::string lines;
    for (const std::string& text : list) {
        lines += library.count(text) == 0 ? "listed, not in the library: " + text + "\n" : "";
    }
    for (const std::string& text : library) {
        lines += list.count(text) == 0 ? "in the library, not listed: " + text + "\n" : "";
    }
    return lines;
}

TEST(SourceLiterals, Texts_AreThoseOfTheList)
{
    EXPECT_EQ(differences(listed("texts.txt"), in_library(texts_of)), "");
}

TEST(SourceLiterals, Keypaths_AreThoseOfTheList)
{
    EXPECT_EQ(differences(listed("keypaths.txt"), in_library(keypaths_of)), "");
}

TEST(SourceLiterals, AssertedTypes_AreThoseOfTheList)
{
    EXPECT_EQ(differences(listed("asserted_types.txt"), in_library(asserted_in)), "");
}

TEST(SourceLiterals, SignaturesInTheBuiltLibrary_AreThoseOfTheList)
{
    const CommandResult strings = run_command({"readelf", "-p", ".rodata", BGP_UPDATE_LIBRARY});
    ASSERT_EQ(strings.status, 0) << strings.err;
    const std::vector<std::string> found = signatures_among(strings.out);
    const std::set<std::string> signatures(found.begin(), found.end());
    const std::set<std::string> promised = listed("signatures.txt");
#ifdef NDEBUG
    EXPECT_EQ(differences(promised, signatures), "");
#else
    // The getters of values assert, too, and put the signatures of more functions into the library.
    EXPECT_TRUE(std::includes(signatures.begin(), signatures.end(), promised.begin(), promised.end()))
        << differences(promised, signatures);
#endif
}

TEST(SourceLiterals, WhatOnlyTheListOrTheLibraryHas_IsTold)
{
    EXPECT_EQ(differences({"both", "gone"}, {"both", "new"}),
              "listed, not in the library: gone\nin the library, not listed: new\n");
}

TEST(IsKeypath, RootedPathsWithBlanksOnlyBetweenKeys_AreKeypaths)
{
    for (const char* path :
         {"/prefix-list", "/a/b{%u}/c", "/a{%x ipv4 \\\"%s\\\"}", "/a[%d]/b", "%s/b", "%s{%x %x}/c", "%s[%d]/b"}) {
        EXPECT_TRUE(is_keypath(path)) << path;
    }
    for (const char* text : {"%s", "%s:%d", "%s exists", "/bgp-vrf{%u} exists", "/bgp-vrf{%u}still has", "Set /a{%u}",
                             "src/daemon/bgp_utils", ""}) {
        EXPECT_FALSE(is_keypath(text)) << text;
    }
}

TEST(SignaturesAmong, StringsOfTheLibrary_AreToldFromSignatures)
{
    EXPECT_EQ(signatures_among("String dump of section '.rodata':\n"
                               "  [     0]  int32_t f(int32_t, nzmw_log_t *)\n"
                               "  [    1a]  Failed (err: %s)\n"
                               "  [    2b]  cannot create std::vector larger than max_size()\n"
                               "  [   3c0]  A::B::B(const std::string&)\n"
                               "  [   4d0]  virtual const char* A::name(int) const\n"),
              (std::vector<std::string>{"int32_t f(int32_t, nzmw_log_t*)", "A::B::B(const std::string&)",
                                        "virtual const char* A::name(int) const"}));
}

TEST(LiteralReader, AdjacentLiterals_AreOne)
{
    EXPECT_EQ(literals_of("f(\"one \"\n   \"two\", \"three\" x \"four\");"),
              (std::vector<std::string>{"one two", "three", "four"}));
}

TEST(LiteralReader, CommentsAndIncludes_HaveNoLiterals)
{
    EXPECT_EQ(literals_of("#include \"a.h\"\n// \"b\"\n/* \"c\n\" */ \"d\" // it's\n \"e\"\n"),
              (std::vector<std::string>{"de"}));
}

TEST(LiteralReader, LinkagesAttributesAndStaticAssertions_HaveNoLiterals)
{
    EXPECT_EQ(literals_of("extern \"C\" int f();\n#define E __attribute__((visibility(\"default\")))\n\"a\";\n"
                          "static_assert(f(1) == 2,\n #f \" differs\"); \"b\""),
              (std::vector<std::string>{"a", "b"}));
}

TEST(LiteralReader, QuotesInCharactersNumbersAndEscapes_DoNotMislead)
{
    EXPECT_EQ(literals_of("c = '\"'; d = '\\''; n = 1'000; s = \"a\\\"b // \\\\\"; t = \"//\";"),
              (std::vector<std::string>{"a\\\"b // \\\\", "//"}));
}

TEST(AssertedTypes, TypeCheck_GivesTheTextOfItsFailure)
{
    EXPECT_EQ(asserted_in("BGP_REQUIRE_TYPE(80, &temp, C_UINT32);\nBGP_REQUIRE_TYPE_FOR(name(), __LINE__,\n"
                          "    &rows[i * kLast +\n   kIndex], C_BUF);"),
              (std::vector<std::string>{"(&temp)->type == C_UINT32", "(&rows[i * kLast + kIndex])->type == C_BUF"}));
}

}  // namespace
}  // namespace bgp_test

// The texts that readers of logs, traces and fault reports know, and the keypaths, stand whole in the library's sources,
// so that whoever meets one finds the place by searching for it. The lists are texts.txt, keypaths.txt
// and asserted_types.txt in contract/; a text is put there as C spells it, in quotes.
#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "support/scratch_folder.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;

// The string literals of a source as they are spelled, without quotes. Literals that follow one another are one; what
// stands in comments, and the names of included files, are none.
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
    for (const std::string check : {"BGP_REQUIRE_TYPE(", "BGP_REQUIRE_TYPE_FOR("}) {
        for (std::size_t at = source.find(check); at != std::string::npos; at = source.find(check, at + 1)) {
            const std::vector<std::string> arguments = arguments_at(source, at + check.size() - 1);
            const std::string& pointer = arguments.at(arguments.size() - 2);
            texts.push_back("(" + pointer + ")->type == " + arguments.back());
        }
    }
    return texts;
}

// What `parts_of` finds in the library's sources and public headers.
template <typename Parts>
std::set<std::string> in_library(Parts parts_of)
{
    std::set<std::string> found;
    for (const char* folder : {BGP_SOURCE_DIR "/src", BGP_SOURCE_DIR "/include"}) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") {
                const std::vector<std::string> parts = parts_of(content_of(entry.path()));
                found.insert(parts.begin(), parts.end());
            }
        }
    }
    return found;
}

std::vector<std::string> listed(const std::string& name)
{
    std::vector<std::string> texts;
    for (const std::string& line : lines_of(content_of(BGP_SOURCE_DIR "/contract/" + name))) {
        if (!line.empty() && line[0] != '#') {
            EXPECT_TRUE(line.size() > 2 && line.front() == '"' && line.back() == '"')
                << name << ": not in quotes: " << line;
            texts.push_back(line.substr(1, line.size() - 2));
        }
    }
    EXPECT_FALSE(texts.empty()) << name;
    return texts;
}

std::string missing(const std::vector<std::string>& texts, const std::set<std::string>& found)
{
    std::string lines;
    for (const std::string& text : texts) {
        if (found.count(text) == 0) {
            lines += text + "\n";
        }
    }
    return lines;
}

TEST(SourceLiterals, FixedTexts_StandWholeInTheSources)
{
    EXPECT_EQ(missing(listed("texts.txt"), in_library(literals_of)), "");
}

TEST(SourceLiterals, KeypathTemplates_StandWholeInTheSources)
{
    EXPECT_EQ(missing(listed("keypaths.txt"), in_library(literals_of)), "");
}

TEST(SourceLiterals, AssertedTypes_AreThoseOfTheTypeChecks)
{
    EXPECT_EQ(missing(listed("asserted_types.txt"), in_library(asserted_in)), "");
}

TEST(SourceLiterals, TextThatIsNotInTheSources_IsMissed)
{
    const std::string text = "Starting BGP update";  // without its line end
    EXPECT_EQ(missing({text, text + "\\n"}, in_library(literals_of)), text + "\n");
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

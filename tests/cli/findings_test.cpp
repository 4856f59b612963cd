// bgp-rehearse findings: each finding has its section in docs/rehearse.md, and the command prints that very text.
#include <gmock/gmock.h>

#include <fstream>
#include <regex>
#include <sstream>

#include "findings/page.h"
#include "findings/plain_text.h"
#include "judge/finding.h"
#include "support/run_command.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using bgp_rehearse::finding_sections;
using bgp_rehearse::FindingId;
using bgp_rehearse::FindingSection;
using bgp_rehearse::kFindingIds;
using bgp_rehearse::plain_text;
using bgp_rehearse::Severity;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

std::string page()
{
    std::ifstream file(BGP_SOURCE_DIR "/docs/rehearse.md");
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> ids_of_the_model()
{
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < kFindingIds; ++i) {
        ids.emplace_back(name_of(static_cast<FindingId>(i)));
    }
    return ids;
}

std::string told(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "findings");
    const CommandResult result = rehearse(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    return result.out;
}

// The words of the page's section, found and stripped of its marks in another way than the command does it.
std::string words_in_the_page(const std::string& id)
{
    std::smatch section;
    const std::string all = page();
    if (!std::regex_search(all, section, std::regex("\n### " + id + "\n([^]*?)\n##"))) {
        return "there is no section";
    }
    const std::string text = std::regex_replace(section[1].str(), std::regex(R"(\[([^\]]*)\]\([^)]*\))"), "$1");
    return std::regex_replace(std::regex_replace(text, std::regex("[`*]"), ""), std::regex("\\s+"), " ");
}

TEST(Findings, CompiledInPage_IsTheOneInDocs)
{
    EXPECT_EQ(bgp_rehearse::builtin_page(), page());
}

TEST(Findings, EachOfTheModel_HasASectionAndNoOtherHas)
{
    std::vector<std::string> ids;
    const std::string text = page();
    for (const FindingSection& section : finding_sections(text)) {
        ids.emplace_back(section.id);
    }
    EXPECT_EQ(ids, ids_of_the_model());
}

TEST(Findings, EachSection_SaysWhatItIsAndHowSevere)
{
    const std::string text = page();
    for (const FindingSection& section : finding_sections(text)) {
        EXPECT_THAT(section.sentence, AllOf(SizeIs(Ge(10U)), Not(HasSubstr("*")))) << section.id;
        EXPECT_THAT(section.severities, Not(IsEmpty())) << section.id;
        EXPECT_THAT(std::string(section.text), HasSubstr("ignore")) << section.id << " does not say when it may be";
    }
}

TEST(Findings, WithId_PrintsTheSectionsWords)
{
    for (const std::string& id : ids_of_the_model()) {
        const std::string printed = std::regex_replace(told({id}), std::regex("\\s+"), " ");
        EXPECT_EQ(printed, id + words_in_the_page(id));
    }
}

TEST(Findings, WithoutId_ListsThemWithSeveritiesAndSentences)
{
    const std::string list = told({});
    const std::string text = page();
    for (const FindingSection& section : finding_sections(text)) {
        std::string severities;
        for (const Severity severity : section.severities) {
            severities += (severities.empty() ? "" : ", ") + std::string(name_of(severity));
        }
        const std::string sentence = std::regex_replace(section.sentence, std::regex(" "), "\\s+");
        const std::regex lines("(^|\n)" + std::string(section.id) + " +" + severities + " +" + sentence + "\n");
        EXPECT_TRUE(std::regex_search(list, lines)) << section.id << " in\n" << list;
    }
    EXPECT_THAT(list, HasSubstr("\nbgp-rehearse findings ID tells what each means and what to do.\n"));
}

TEST(Findings, Terminal_HasLinesAsWideAsItIs)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{BGP_REHEARSE, "findings"}, {BGP_REHEARSE, "findings", "identity-guessed"}}) {
        const CommandResult result = RunningCommand(arguments, {"COLUMNS=64"}, RunningCommand::Out::Terminal).wait();
        EXPECT_EQ(result.status, 0);
        std::size_t widest = 0;
        for (const std::string& line : lines_of(result.out)) {
            widest = std::max(widest, line.find('\r'));
        }
        EXPECT_GT(widest, 54U);
        EXPECT_LE(widest, 64U);
    }
}

TEST(Findings, UnknownId_IsRefusedWithTheOneThatIsMeant)
{
    const CommandResult meant = rehearse({"findings", "rowleft"});
    EXPECT_EQ(meant.status, 2);
    EXPECT_EQ(meant.out, "");
    EXPECT_EQ(meant.err, "bgp-rehearse: no finding has the id \"rowleft\"; did you mean row-left?\n");
    const CommandResult none = rehearse({"findings", "\x1b[2J"});
    EXPECT_EQ(none.status, 2);
    EXPECT_EQ(none.err, "bgp-rehearse: no finding has the id \"\\x1b[2J\"; bgp-rehearse findings lists all\n");
}

TEST(Findings, FullStandardOutput_IsTold)
{
    const CommandResult result = run_command({"/bin/sh", "-c", BGP_REHEARSE " findings >/dev/full"});
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.err, HasSubstr("standard output: No space left on device"));
}

TEST(FindingSections, Chapter_EndsAtTheNextOne)
{
    const auto sections = finding_sections(
        "# A page\n\n## Before\n\n### no\n\n## Findings\n\nWords.\n\n### one\n\n**It is\nso.** `stop`; `note` where "
        "`x`\n"
        "is.\n\nMore `review`.\n\n### two\n\n**And so.** `review`\n\n## After\n\n### neither\n");
    ASSERT_THAT(sections, SizeIs(2));
    EXPECT_EQ(sections[0].id, "one");
    EXPECT_EQ(sections[0].sentence, "It is so");
    EXPECT_THAT(sections[0].severities, ElementsAre(Severity::Stop, Severity::Note));
    EXPECT_EQ(sections[0].text, "**It is\nso.** `stop`; `note` where `x`\nis.\n\nMore `review`.");
    EXPECT_EQ(sections[1].id, "two");
    EXPECT_EQ(sections[1].text, "**And so.** `review`");
}

TEST(FindingSections, PageWithoutTheChapter_HasNone)
{
    EXPECT_THAT(finding_sections("# A page\n\n### one\n\nText.\n"), IsEmpty());
    EXPECT_THAT(finding_sections(""), IsEmpty());
}

TEST(PlainText, Marks_AreLeftOut)
{
    EXPECT_EQ(plain_text("**Bold** and `code **` and a [link](page.md#here), [no link].", 80),
              "Bold and code ** and a link, [no link].\n");
}

TEST(PlainText, Paragraphs_AreWrappedAndStandApart)
{
    EXPECT_EQ(plain_text("One two\nthree.\n\n\nFour.", 9), "One two\nthree.\n\nFour.\n");
}

TEST(PlainText, ItemsOfAList_HangAndStandTogether)
{
    EXPECT_EQ(plain_text("Words:\n\n- one two\n  three\n- four\n\nAfter.", 10),
              "Words:\n\n- one two\n  three\n- four\n\nAfter.\n");
    EXPECT_EQ(plain_text("Words:\n- one", 10), "Words:\n\n- one\n") << "an empty line before it in any case";
}

TEST(PlainText, BlockThatIsSetIn_StaysAsItIs)
{
    EXPECT_EQ(plain_text("So:\n\n    run `this` and that\n    and this\n\nDone.", 10),
              "So:\n\n    run `this` and that\n    and this\n\nDone.\n");
}

}  // namespace
}  // namespace bgp_test

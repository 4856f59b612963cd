// What of folders and lists becomes an input of a plan, under which name, and what a worker reads for it.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "base/text_escape.h"
#include "fleet/plan/find_inputs.h"
#include "fleet/plan_fixture.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;
using bgp_rehearse::PlanOptions;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

class FindInputs : public PlanFixture {
protected:
    std::string file(const std::string& name, const std::string& content) const
    {
        fs::create_directories(fs::path(in_ / name).parent_path());
        return in_.file(name, content);
    }
};

TEST_F(FindInputs, Folder_GivesXmlAndPackedXmlOfAllFoldersBelow)
{
    file("edge.xml", "one");
    file("site/a/core.xml.gz", "two");
    file("site/b/core.xml.xz", "three");
    file("notes.txt", "no");
    file("site/.xml", "no");
    const bgp_rehearse::Plan plan = planned({in_.path()});
    EXPECT_EQ(texts(), (Texts{{"edge.xml", "one"}, {"site/a/core.xml.gz", "two"}, {"site/b/core.xml.xz", "three"}}));
    EXPECT_THAT(plan.passed_over, ElementsAre(Pair("another name", 2)));
    EXPECT_EQ(plan.bytes, 11U);
}

TEST_F(FindInputs, AllNames_TakesEveryFile)
{
    file("edge", "one");
    file("core.cfg", "two");
    PlanOptions options;
    options.paths = {in_.path()};
    options.all_names = true;
    planned(options);
    EXPECT_EQ(texts(), (Texts{{"edge", "one"}, {"core.cfg", "two"}}));
}

TEST_F(FindInputs, HostileNames_AreOneLineEachAndLeadToTheirFiles)
{
    const std::string longest = std::string(251, 'n') + ".xml";
    Texts expected;
    for (const std::string& name :
         {std::string("new\nline.xml"), std::string("quote\"'`.xml"), std::string("\xff\xfe.xml"),
          std::string("back\\x0aslash.xml"), std::string("-o.xml"), std::string("@list.xml"), std::string("a!b:c.xml"),
          std::string("\u202exml.xml"), longest}) {
        file(name, "content of " + name);
        expected.emplace(bgp_rehearse::escaped_name(name), "content of " + name);
    }
    planned({in_.path()});
    EXPECT_EQ(texts(), expected);
    EXPECT_EQ(lines_of(content_of(plan_file())).size(), 1 + expected.size());
}

TEST_F(FindInputs, Links_LeadToFilesButNotToFolders)
{
    const ScratchFolder elsewhere;
    elsewhere.file("core.xml", "core");
    file("edge.xml", "edge");
    fs::create_symlink(elsewhere / "core.xml", in_ / "link.xml");
    fs::create_symlink(elsewhere.path(), in_ / "folder.xml");
    fs::create_symlink(".", in_ / "loop");
    fs::create_symlink("nowhere", in_ / "nothing.xml");
    ASSERT_EQ(mkfifo((in_ / "pipe.xml").c_str(), 0600), 0);
    const bgp_rehearse::Plan plan = planned({in_.path()});
    EXPECT_EQ(texts(), (Texts{{"edge.xml", "edge"}, {"link.xml", "core"}}));
    EXPECT_THAT(plan.passed_over, ElementsAre(Pair("device, pipe or socket", 1), Pair("link to a folder", 2),
                                              Pair("link to nothing", 1)));
}

TEST_F(FindInputs, FileReachedTwice_IsTakenOnceUnderItsOwnName)
{
    file("a/edge.xml", "edge");
    fs::create_symlink("a/edge.xml", in_ / "0-latest.xml");
    const bgp_rehearse::Plan plan = planned({in_.path(), in_ / "a", in_ / "a/../a/edge.xml"});
    EXPECT_EQ(texts(), (Texts{{"a/edge.xml", "edge"}}));
    EXPECT_THAT(plan.passed_over, ElementsAre(Pair("reached twice", 3)));
}

TEST_F(FindInputs, NamesOfOneFile_AreInputsOfTheirOwn)
{
    file("monday/edge.xml", "edge");
    fs::create_directory(in_ / "tuesday");
    fs::create_hard_link(in_ / "monday/edge.xml", in_ / "tuesday/edge.xml");
    planned({in_.path()});
    EXPECT_EQ(texts(), (Texts{{"monday/edge.xml", "edge"}, {"tuesday/edge.xml", "edge"}}));
}

TEST_F(FindInputs, FileThatWasNamed_IsTakenWhateverItsNameIs)
{
    planned({file("edge", "<config/>"), file("empty.cfg", "")});
    EXPECT_EQ(texts(), (Texts{{"edge", "<config/>"}, {"empty.cfg", ""}}));
}

TEST_F(FindInputs, NothingToPlan_MakesNoPlan)
{
    fs::create_directory(in_ / "empty");
    EXPECT_THAT(refusal_of({in_ / "empty"}), HasSubstr("no configuration was found"));
    EXPECT_THAT(refusal_of({in_ / "missing"}), HasSubstr("missing: No such file or directory"));
    EXPECT_THAT(refusal_of({"/dev/null"}), HasSubstr("/dev/null: this is neither a file nor a folder"));
    EXPECT_THAT(refusal_of({""}), HasSubstr("a path is missing"));
}

TEST_F(FindInputs, List_NamesFilesLineByLine)
{
    const std::string list = in_.file("list", file("edge.xml", "edge") + "\n" + file("core", "core") + "\n");
    planned({"@" + list});
    EXPECT_EQ(texts(), (Texts{{"edge.xml", "edge"}, {"core", "core"}}));
}

TEST_F(FindInputs, ListDividedByNul_NamesFilesWithLineEnds)
{
    const std::string list = in_.file("list", file("new\nline.xml", "edge") + '\0' + file("core.xml", "core") + '\0');
    planned({"@" + list});
    EXPECT_EQ(texts(), (Texts{{"new\\x0aline.xml", "edge"}, {"core.xml", "core"}}));
}

TEST_F(FindInputs, ListedFileThatCannotBeRead_IsAnInputThatIsRefused)
{
    const std::string list = in_.file("list", in_ / "gone.xml\n" + file("edge.xml", "edge") + "\n" + in_.path() + "\n");
    planned({"@" + list, "@" + list});
    EXPECT_EQ(texts(), (Texts{{"edge.xml", "edge"},
                              {"gone.xml", "refused: it cannot be read: No such file or directory"},
                              {in_.path(), "refused: it cannot be read: it is no ordinary file"}}));
}

TEST_F(FindInputs, BadList_IsToldWithThePlace)
{
    EXPECT_THAT(refusal_of({"@" + in_.file("gap", "a.xml\n\nb.xml\n")}), HasSubstr("gap: name 2 is empty"));
    EXPECT_THAT(refusal_of({"@" + in_.file("none", "")}), HasSubstr("none: the list is empty"));
    EXPECT_THAT(refusal_of({"@" + in_ / "gone"}), HasSubstr("gone: No such file or directory"));
}

// Root reads everything; while it lives the process is nobody, if it was root.
class AsNobody {
public:
    AsNobody() : before_(geteuid())
    {
        constexpr uid_t kNobody = 65534;
        EXPECT_TRUE(before_ != 0 || seteuid(kNobody) == 0);
    }
    ~AsNobody() { EXPECT_EQ(seteuid(before_), 0); }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

private:
    uid_t before_;
};

TEST_F(FindInputs, WhatMayNotBeRead_IsRefusedOrTold)
{
    chmod(in_.path().c_str(), 0755);
    chmod(file("edge.xml", "edge").c_str(), 0);
    file("secret/core.xml", "core");
    chmod((in_ / "secret").c_str(), 0);
    const bgp_rehearse::Found found = [&] {
        const AsNobody nobody;
        return bgp_rehearse::find_inputs({{in_.path()}, false, 1000});
    }();
    chmod((in_ / "secret").c_str(), 0700);
    ASSERT_EQ(found.inputs.size(), 1U);
    EXPECT_EQ(found.inputs[0].refused, 1U);
    EXPECT_THAT(found.refusals, ElementsAre("it cannot be read: Permission denied"));
    EXPECT_THAT(found.passed_over, ElementsAre(Pair("folder that cannot be read", 1)));
    EXPECT_THAT(found.remarks,
                ElementsAre(in_ / "secret/: Permission denied; what is in this folder is not in the plan"));
}

TEST_F(FindInputs, FileOfTooManyBytes_IsAnInputThatIsRefused)
{
    file("edge.xml", "edge");
    file("huge.xml", std::string(2000, 'x'));
    PlanOptions options;
    options.paths = {in_.path()};
    options.options.max_bytes = 1999;
    const bgp_rehearse::Plan plan = planned(options);
    EXPECT_EQ(texts(),
              (Texts{{"edge.xml", "edge"}, {"huge.xml", "refused: it has more bytes than --max-bytes allows (1999)"}}));
    EXPECT_EQ(plan.bytes, 2004U);
}

TEST_F(FindInputs, FileThatChangesBehindThePlan_IsRefused)
{
    const std::string grown = file("grown.xml", "1");
    const std::string gone = file("gone.xml", "2");
    file("same.xml", "3");
    planned({in_.path()});
    file("grown.xml", "12");
    fs::remove(gone);
    EXPECT_EQ(texts(), (Texts{{"grown.xml", kChanged},
                              {"gone.xml", "refused: it cannot be read: No such file or directory"},
                              {"same.xml", "3"}}));
}

}  // namespace
}  // namespace bgp_test

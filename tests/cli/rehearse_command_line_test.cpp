// The command line of bgp-rehearse: what it prints for help, and what it refuses before anything runs.
#include <gmock/gmock.h>

#include <filesystem>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
namespace fs = std::filesystem;

class RehearseCommandLine : public RehearseTest {
protected:
    // The command line is refused: status 2, nothing printed but a message that holds the text, and no file made.
    void expect_refused(const std::vector<std::string>& arguments, const std::string& text) const
    {
        const std::vector<std::string> before = folder.names();
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr(text));
        EXPECT_EQ(folder.names(), before);
    }
};

TEST_F(RehearseCommandLine, Help_NamesTheSubcommand)
{
    const CommandResult result = rehearse({"--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("run"));
    EXPECT_EQ(result.err, "");
}

TEST_F(RehearseCommandLine, HelpOfRun_NamesEveryOptionAndStatus)
{
    const CommandResult result = rehearse({"run", "--help"});
    EXPECT_EQ(result.status, 0);
    for (const char* part : {"CONFIG.xml",
                             "--library PATH",
                             "-o,--output OUT.xml",
                             "--log FILE",
                             "--interfaces ADDR[,ADDR...]",
                             "--user-profile N",
                             "--max-entries N",
                             "--json",
                             "--fail-on",
                             "--severity",
                             "--call-time",
                             "--facts",
                             "--color",
                             "--commit-check",
                             "  0  ",
                             "  1  ",
                             "  2  ",
                             "  3  ",
                             "  4  ",
                             "  5  "}) {
        EXPECT_THAT(result.out, HasSubstr(part));
    }
}

TEST_F(RehearseCommandLine, Version_IsThatOfTheCommandTheLibraryTheSchemaAndZlog)
{
    const CommandResult result = rehearse({"--version"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, MatchesRegex("bgp-rehearse [0-9]+\\.[0-9]+\\.[0-9]+\n"
                                         "library: libbgp_update [0-9.]+ \\(/[^\n]*/libbgp_update\\.so\\)\n"
                                         "library SHA-256: [0-9a-f]{64}\n"
                                         "schema SHA-256: [0-9a-f]{64}\n"
                                         "zlog: (system|stand-in)\n"));
}

TEST_F(RehearseCommandLine, MissingSubcommand_IsRefused)
{
    expect_refused({}, "subcommand");
}

TEST_F(RehearseCommandLine, MissingConfiguration_IsRefused)
{
    expect_refused({"run"}, "CONFIG");
}

TEST_F(RehearseCommandLine, UnknownOption_IsRefusedByName)
{
    expect_refused({"run", config, "--colour"}, "--colour");
}

TEST_F(RehearseCommandLine, ConfigurationThatIsNotThere_IsRefusedByName)
{
    expect_refused({"run", folder / "missing.xml"}, "missing.xml");
}

TEST_F(RehearseCommandLine, ConfigurationThatIsNotWellFormed_IsRefusedByNameAndLine)
{
    const std::string broken = folder.file("broken.xml", "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n<router");
    expect_refused({"run", broken}, "broken.xml:2");
}

TEST_F(RehearseCommandLine, ConfigurationWithUnknownElement_IsRefusedByTheElement)
{
    const std::string strange = folder.file("strange.xml",
                                            "<config xmlns=\"http://tail-f.com/ns/config/1.0\"><router "
                                            "xmlns=\"urn:bgp-update:yang:router\"><strange/></router></config>");
    expect_refused({"run", strange}, "strange");
}

TEST_F(RehearseCommandLine, InterfaceThatIsNoAddress_IsRefusedByItsText)
{
    expect_refused({"run", config, "--interfaces", "192.0.2.1,eth0"}, "\"eth0\" is not an IPv4 address");
    expect_refused({"run", config, "--interfaces", "192.0.2.1,"}, "\"\" is not an IPv4 address");
}

TEST_F(RehearseCommandLine, UserProfileThatIsNoNumber_IsRefused)
{
    expect_refused({"run", config, "--user-profile", "big"}, "--user-profile");
    expect_refused({"run", config, "--user-profile=-1"}, "--user-profile");
}

TEST_F(RehearseCommandLine, ConfigurationWithMoreEntriesThanAllowed_IsRefusedByTheLine)
{
    const std::string idle = fake_library(folder, "return 0;");
    EXPECT_EQ(rehearse({"run", config, "--library", idle, "--max-entries", "4"}).status, 0);
    expect_refused({"run", config, "--max-entries", "3"}, "small.xml:12: /: an entry beyond the 3 that are allowed");
    expect_refused({"run", config, "--max-entries=-1"}, "--max-entries");
}

TEST_F(RehearseCommandLine, LibraryThatIsNotThere_IsRefusedByName)
{
    expect_refused({"run", config, "--library", folder / "missing.so"}, "missing.so");
}

TEST_F(RehearseCommandLine, LibraryThatIsNone_IsRefusedWithTheLoadersReason)
{
    expect_refused({"run", config, "--library", config}, "invalid ELF header");
}

TEST_F(RehearseCommandLine, LibraryWithoutUpdate_IsRefusedWithTheLoadersReason)
{
    const std::string library = fake_library(folder, "return 0;");
    const std::string source = folder.file("other.cpp", "extern \"C\" int upgrade() { return 0; }");
    ASSERT_EQ(run_command({BGP_CXX_COMPILER, "-shared", "-fPIC", "-o", library, source}).status, 0);
    expect_refused({"run", config, "--library", library, "-o", folder / "out.xml"}, "undefined symbol: update");
}

TEST_F(RehearseCommandLine, EmptyFileNames_AreRefused)
{
    expect_refused({"run", config, "-o", ""}, "--output");
    expect_refused({"run", config, "--log", ""}, "--log");
    expect_refused({"run", config, "--library", ""}, "--library");
}

TEST_F(RehearseCommandLine, OutputToStandardOutput_IsRefused)
{
    expect_refused({"run", config, "-o", "-"}, "name a file");
}

TEST_F(RehearseCommandLine, OutputInMissingFolder_IsRefusedByTheFolder)
{
    expect_refused({"run", config, "-o", folder / "missing/out.xml"}, folder / "missing");
    expect_refused({"run", config, "--log", folder / "missing/upgrade.log"}, folder / "missing");
}

TEST_F(RehearseCommandLine, OutputInFolderThatTakesNoFiles_IsRefused)
{
    expect_refused({"run", config, "-o", "/proc/out.xml"}, "/proc");
}

TEST_F(RehearseCommandLine, OutputBelowAFile_IsRefused)
{
    expect_refused({"run", config, "-o", config + "/out.xml"}, config);
}

TEST_F(RehearseCommandLine, OutputThatIsAFolder_IsRefused)
{
    expect_refused({"run", config, "-o", folder.path()}, "is a folder");
    expect_refused({"run", config, "-o", folder / ""}, "is a folder");
}

TEST_F(RehearseCommandLine, OutputThatIsADevice_IsRefusedAndStays)
{
    expect_refused({"run", config, "-o", "/dev/null"}, "not an ordinary file");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(RehearseCommandLine, OutputThatIsTheConfiguration_IsRefusedWhateverLinkLeadsToIt)
{
    const std::string before = content_of(config);
    fs::create_symlink("small.xml", folder / "symbolic.xml");
    fs::create_hard_link(config, folder / "hard.xml");
    for (const char* name : {"small.xml", "symbolic.xml", "hard.xml", "./small.xml"}) {
        expect_refused({"run", config, "-o", folder / name}, "choose another name");
        expect_refused({"run", config, "--log", folder / name}, "choose another name");
    }
    EXPECT_EQ(content_of(config), before);
}

TEST_F(RehearseCommandLine, LogThatIsTheOutput_IsRefused)
{
    expect_refused({"run", config, "-o", folder / "out", "--log", folder / "out"}, "choose another name");
    fs::create_symlink("out", folder / "link");
    expect_refused({"run", config, "-o", folder / "out", "--log", folder / "link"}, "choose another name");
}

TEST_F(RehearseCommandLine, OutputThatIsALinkToItself_IsRefused)
{
    fs::create_symlink("loop", folder / "loop");
    expect_refused({"run", config, "-o", folder / "loop"}, "too many symbolic links");
}

TEST_F(RehearseCommandLine, OutputThatIsTheLibrary_IsRefused)
{
    const std::string library = fake_library(folder, "return 0;");
    expect_refused({"run", config, "--library", library, "-o", library}, "choose another name");
}

TEST_F(RehearseCommandLine, ControlCharactersInAName_AreEscapedInTheMessage)
{
    const CommandResult result = rehearse({"run", folder / "a\033[31mb.xml"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("a\\x1b[31mb.xml"));
}

}  // namespace
}  // namespace bgp_test

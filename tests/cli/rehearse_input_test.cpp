// The configuration that bgp-rehearse is given: compressed, on standard input, with parts of unknown modules, and wrong
// in several places at once.
#include <gmock/gmock.h>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class RehearseInput : public RehearseTest {
protected:
    const std::string output = folder / "out.xml";
    const std::string idle = fake_library(folder, "return 0;");

    // Runs the command by a shell, which has the arguments as "$@".
    static CommandResult shell(const std::string& line, std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"/bin/bash", "-c", line, BGP_REHEARSE});
        return run_command(arguments);
    }

    std::string written() const
    {
        EXPECT_EQ(rehearse({"run", config, "--library", idle, "-o", folder / "expected.xml"}).status, 0);
        return content_of(folder / "expected.xml");
    }
};

TEST_F(RehearseInput, StandardInput_IsReadLikeAFile)
{
    const CommandResult result =
        shell("gzip < '" + config + "' | \"$0\" \"$@\"", {"run", "-", "--library", idle, "-o", output});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, StartsWith("Rehearsal of standard input, "));
    EXPECT_EQ(content_of(output), written());
}

TEST_F(RehearseInput, WhatIsWrongOnStandardInput_IsToldUnderItsName)
{
    const CommandResult result = shell("echo '<nothing/>' | \"$0\" \"$@\"", {"run", "-", "--library", idle});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, StartsWith("bgp-rehearse: standard input:1: the outermost element is <nothing>"));
}

TEST_F(RehearseInput, FileOnStandardInput_IsNotReplaced)
{
    const std::string before = content_of(config);
    const CommandResult result =
        shell("exec \"$0\" \"$@\" < '" + config + "'", {"run", "-", "--library", idle, "-o", config});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("this is the configuration to upgrade; choose another name"));
    EXPECT_EQ(content_of(config), before);
}

TEST_F(RehearseInput, PipeOfTheShell_IsReadLikeAFile)
{
    const CommandResult result =
        shell("exec \"$0\" \"$@\" <(cat '" + config + "')", {"run", "--library", idle, "-o", output});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(content_of(output), written());
}

TEST_F(RehearseInput, UnknownModules_AreInTheUpgradedConfiguration)
{
    std::string text = content_of(config);
    const std::string system = "<system xmlns=\"urn:vendor:system\"><hostname>pe1</hostname></system>";
    text.insert(text.find('>') + 1, system);
    const std::string create = "maapi_create(maapi, th, \"/router/bgp{%u}\", 65020u); return 0;";
    const CommandResult result = rehearse({"run", folder.file("whole.xml", text), "--library",
                                           fake_library(folder, create), "-o", output, "--commit-check"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(content_of(output), HasSubstr("<as-number>65020</as-number>"));
    EXPECT_THAT(content_of(output), EndsWith("</router>\n  " + system + "\n</config>\n"));
}

TEST_F(RehearseInput, SeveralErrors_StandInALineEachUpToTheNumberAskedFor)
{
    const std::string wrong = folder.file(
        "wrong.xml", "<config xmlns=\"http://tail-f.com/ns/config/1.0\">\n<one/>\n<two/>\n<three/>\n</config>");
    const std::string told = " is not in the data model\n";
    const CommandResult all = rehearse({"run", wrong, "--library", idle});
    EXPECT_EQ(all.status, 2);
    EXPECT_EQ(all.err, "bgp-rehearse: " + wrong + ":2: /: element <one>" + told + wrong + ":3: /: element <two>" +
                           told + wrong + ":4: /: element <three>" + told);
    EXPECT_EQ(rehearse({"run", wrong, "--library", idle, "--max-errors", "1"}).err,
              "bgp-rehearse: " + wrong + ":2: /: element <one>" + told + "and 2 more; --max-errors 3 shows them\n");
    EXPECT_EQ(rehearse({"sweep", wrong, "--library", idle, "--max-errors", "2"}).err,
              "bgp-rehearse: " + wrong + ":2: /: element <one>" + told + wrong + ":3: /: element <two>" + told +
                  "and 1 more; --max-errors 3 shows it\n");
    EXPECT_EQ(rehearse({"run", wrong, "--library", idle, "--max-errors", "0"}).status, 2);
}

}  // namespace
}  // namespace bgp_test

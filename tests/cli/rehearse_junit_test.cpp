// The JUnit report: what a pipeline's reader makes of it agrees with the JSON report and with the exit status.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/ended_upgrade.h"
#include "generate/configuration.h"

namespace bgp_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RehearseJUnit : public RehearseTest {
protected:
    // Both documents of a run, which must agree; returns what the reader prints.
    std::string read(std::vector<std::string> arguments, int status)
    {
        arguments.insert(arguments.begin(), "run");
        arguments.insert(arguments.end(), {"--junit", junit, "--json=" + json});
        std::filesystem::remove(junit);
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.status, status) << result.err;
        EXPECT_THAT(folder.names(), Not(testing::Contains(StartsWith(".bgp-rehearse"))));
        const CommandResult checked = run_command({BGP_SOURCE_DIR "/tests/scripts/check_junit.py", junit, json});
        EXPECT_EQ(checked.status, 0) << checked.out << checked.err;
        return checked.out;
    }

    std::string read_body(const std::string& body, int status, std::vector<std::string> more = {})
    {
        more.insert(more.begin(), {config, "--library", fake_library(folder, body)});
        return read(more, status);
    }

    const std::string junit = folder / "junit.xml";
    const std::string json = folder / "report.json";
};

TEST_F(RehearseJUnit, UpgradeThatDoesNothing_PassesAll)
{
    EXPECT_EQ(read_body("return 0;", 0), (folder / "libfake.so") +
                                             ": 20 cases, 0 failures, 0 errors, 2 skipped\n"
                                             "skipped: not-valid: only with --commit-check\n"
                                             "skipped: again: only with --again\n");
    EXPECT_THAT(read_body("return 0;", 0, {"--again", "--commit-check"}), HasSubstr(" 0 skipped\n"));
}

TEST_F(RehearseJUnit, Examples_AgreeAtEachLevel)
{
    const std::string examples = BGP_SOURCE_DIR "/examples/";
    for (const char* example : {"edge-router.xml", "provider-edge.xml"}) {
        read({examples + example, "--fail-on", "review"}, 3);
        read({examples + example, "--fail-on", "never"}, 0);
    }
    EXPECT_THAT(read({examples + "upgraded.xml", "--fail-on", "review"}, 0), HasSubstr(" 0 failures, 0 errors"));
}

TEST_F(RehearseJUnit, FlawedRouters_Agree)
{
    for (const auto& flaw : bgp_generator::healthy::known_flaws()) {
        const std::string finding = flaw.finding;
        if (finding == "refused") {
            continue;
        }
        bgp_generator::healthy::Request request;
        request.flaws = {flaw.flaw};
        const std::string file = folder.file("flawed.xml", bgp_generator::configuration_text(request));
        const std::string told = read({file, "--severity", finding + "=stop"}, finding == "ended" ? 1 : 3);
        EXPECT_THAT(told, HasSubstr((finding == "ended" ? "error: " : "failure: ") + finding + ": ")) << flaw.name;
    }
}

TEST_F(RehearseJUnit, StepThatFailed_FailsWithItsFinding)
{
    bgp_generator::healthy::Request request;
    request.flaws = {bgp_generator::healthy::Flaw::MissingLocalAs};
    const std::string file = folder.file("flawed.xml", bgp_generator::configuration_text(request));
    EXPECT_THAT(read({file}, 3),
                AllOf(HasSubstr("failure: update_rm_index: the AS number of the BGP router entity cannot be read\n"),
                      HasSubstr("failure: update_vrf: the AS number of the BGP router entity cannot be read\n"),
                      HasSubstr("skipped: update_ipv6: IPv6 is on already\n")));
    EXPECT_THAT(read({file, "--severity", "step-failed=review"}, 0), Not(HasSubstr("failure: ")));
}

TEST_F(RehearseJUnit, UpgradeThatReturnedAnotherValue_Fails)
{
    EXPECT_THAT(read_body("return 3;", 3), HasSubstr("failure: returned: the upgrade returned 3 instead of 0\n"));
    EXPECT_THAT(read_body("return 3;", 0, {"--fail-on", "never"}), Not(HasSubstr("failure: ")));
}

TEST_F(RehearseJUnit, ResultThatIsNotValid_FailsWhateverIsAskedFor)
{
    const std::string body = R"(return maapi_create(maapi, th, "/prefix-list{%s}", "a\001b");)";
    EXPECT_THAT(read_body(body, 4, {"--commit-check", "--fail-on", "never", "--severity", "not-valid=note"}),
                HasSubstr("failure: not-valid: the result is not valid under the YANG modules\n"));
}

TEST_F(RehearseJUnit, UpgradeThatEnded_IsAnErrorOfItsStep)
{
    const std::string told = read_body(std::string(kWorking) + "exit(7);", 1, {"--fail-on", "never"});
    EXPECT_THAT(told, AllOf(HasSubstr("0 failures, 2 errors"),
                            HasSubstr("error: update_vrf: the upgrade ended in an exit with status 7\n"),
                            HasSubstr("error: ended: the upgrade ended in an exit with status 7\n"),
                            HasSubstr("skipped: update_vrf_ipv6: the upgrade ended before it\n"),
                            HasSubstr("skipped: row-left: the upgrade ended: there is no result to look at\n")));
    EXPECT_THAT(content_of(junit), HasSubstr("read last: /prefix-list{a}/seq{10}/address\n"));
    EXPECT_THAT(read_body(std::string(kWorking) + "for (;;) pause();", 1, {"--time-limit", "200ms"}),
                HasSubstr("error: update_vrf: the upgrade took longer than 200 ms (--time-limit)\n"));
}

TEST_F(RehearseJUnit, RefusedInput_IsAnErrorAlone)
{
    const std::string broken = folder.file("broken.xml", "<config");
    EXPECT_THAT(read({broken}, 2), AllOf(HasSubstr("1 cases, 0 failures, 1 errors, 0 skipped\nerror: rehearsal: "),
                                         HasSubstr("broken.xml:1")));
    EXPECT_THAT(read({config, "--library", folder / "none.so"}, 2), HasSubstr("none.so"));
    EXPECT_THAT(read({config, "--severity", "odd=stop"}, 2), HasSubstr("no finding has the id"));
}

TEST_F(RehearseJUnit, OutputThatCannotBeWritten_IsAnError)
{
    EXPECT_THAT(
        read_body(R"(return maapi_create(maapi, th, "/prefix-list{%s}", "a\001b");)", 5, {"-o", folder / "out.xml"}),
        HasSubstr("error: rehearsal: "));
    std::filesystem::create_directory(folder / "gone");
    EXPECT_THAT(read_body("return std::system(\"rm -r '" + (folder / "gone") + "'\") == 0 ? 0 : 1;", 5,
                          {"-o", folder / "gone/out.xml"}),
                AllOf(HasSubstr("1 cases, 0 failures, 1 errors"), HasSubstr("gone/out.xml")));
}

TEST_F(RehearseJUnit, HostileTexts_AreShownAsText)
{
    const std::string body = R"(
        maapi_set_elem2(maapi, th, "up", "/router/bgp{%u}/vrf{%s}/administrative-status", 1u,
                        "\"]]><&'\x01\x7f\n\t\xff \xEF\xBF\xBE\xEF\xBF\xBF \xE2\x80\xAE");
        nzmw_gen_fault(1, "f", "s", 5, "<odd attr=\"1\">&amp;</failure>\r\n\x1b[31m");
        return 0;)";
    read_body(body, 3, {"--fail-on", "review"});
    const std::string document = content_of(junit);
    EXPECT_THAT(document, HasSubstr("&lt;odd attr=&quot;1&quot;&gt;&amp;amp;&lt;/failure&gt;\\r\\n\\x1b[31m"));
    EXPECT_THAT(document, HasSubstr("]]&gt;&lt;&amp;'\\x01\\x7f\\n\\t\\xff \\u{fffe}\\u{ffff} \\u{202e}"));
}

TEST_F(RehearseJUnit, ManyPlaces_AreCut)
{
    read_body(
        "for (unsigned i = 1; i <= 1234; ++i) maapi_set_elem2(maapi, th, \"up\", "
        "\"/router/bgp{%u}/administrative-status\", i); return 0;",
        0);
    EXPECT_THAT(content_of(junit), AllOf(HasSubstr("/router/bgp{100}/"), Not(HasSubstr("/router/bgp{101}/")),
                                         HasSubstr("and 1,134 more, which the JSON document has")));
}

TEST_F(RehearseJUnit, FileThatIsAnothersOrCannotBe_IsRefusedAndLeftAlone)
{
    const std::string library = fake_library(folder, "return 0;");
    const std::string other = folder.file("other.xml", "the old content");
    const auto refused = [&](const std::vector<std::string>& more, const std::string& why) {
        std::vector<std::string> arguments = {"run", config, "--library", library, "--junit"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_THAT(result.err, HasSubstr(why));
        EXPECT_EQ(content_of(other), "the old content");
    };
    const std::string stored = content_of(config);
    refused({config}, "the configuration to upgrade");
    refused({library}, "the upgrade library");
    refused({other, "-o", other}, "this is the output file");
    refused({other, "--log", other}, "this is the log file");
    refused({folder / "none/junit.xml"}, "none");
    refused({"-"}, "--junit -: the report goes to standard output; name a file");
    refused({""}, "a file name is missing");
    EXPECT_EQ(content_of(config), stored);
    std::filesystem::create_symlink(folder / "same.xml", folder / "link.xml");
    refused({folder / "link.xml", "--json=" + (folder / "same.xml")}, "this is the file of --json");
}

TEST_F(RehearseJUnit, NoRoomForIt_IsToldAndLeavesTheOldOne)
{
    const std::string old = folder.file("junit.xml", "the old content");
    const CommandResult result = run_command({"/bin/sh", "-c", "ulimit -f 0; exec \"$0\" \"$@\"", BGP_REHEARSE, "run",
                                              config, "--library", fake_library(folder, "return 0;"), "--junit", old},
                                             {});
    EXPECT_NE(result.status, 0);
    EXPECT_EQ(content_of(old), "the old content");
}

}  // namespace
}  // namespace bgp_test

// Whether a router may be upgraded tonight: the last line of the report and the exit status, for routers as they come.
#include <gmock/gmock.h>

#include "cli/examples.h"
#include "cli/fake_library.h"
#include "generate/configuration.h"

namespace bgp_test {
namespace {

using bgp_generator::healthy::Flaw;
using bgp_generator::healthy::Request;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::vector<std::string> kGiven = {"--interfaces", "192.0.2.1", "--user-profile", "3"};

std::string last_line(const std::string& text)
{
    const std::size_t end = text.find_last_not_of('\n');
    const std::size_t start = text.rfind('\n', end);
    return text.substr(start + 1, end - start);
}

// The findings of a report, from their heading on.
std::string findings(const CommandResult& result)
{
    const std::size_t start = result.out.find("\nFindings");
    return start == std::string::npos ? std::string() : result.out.substr(start + 1);
}

class VerdictOf : public RehearseTest {
protected:
    static CommandResult run(const std::string& file, std::vector<std::string> more = kGiven)
    {
        more.insert(more.begin(), {"run", file});
        return rehearse(more);
    }
    std::string router_with(std::vector<Flaw> flaws) const
    {
        Request request;
        request.flaws = std::move(flaws);
        return folder.file("router.xml", bgp_generator::configuration_text(request));
    }
};

TEST_F(VerdictOf, HealthyRouter_IsSafe)
{
    const CommandResult result =
        run(router_with({}), {"--interfaces", "192.0.2.1", "--user-profile", "3", "--fail-on", "review"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: SAFE. "));
}

TEST_F(VerdictOf, RouterWhoseIpv6FlagCannotBeRead_IsStop)
{
    const CommandResult result = run(router_with({Flaw::MissingIpv6Flag}));
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: STOP. "));
}

TEST_F(VerdictOf, RouterWhoseVpnStepGivesUp_IsStop)
{
    const CommandResult result = run(router_with({Flaw::NoMplsAnswer}));
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: STOP. "));
    EXPECT_EQ(run(router_with({Flaw::NoMplsAnswer}), {"--fail-on", "never"}).status, 0);
}

TEST_F(VerdictOf, LibraryThatReturnsSeven_IsStop)
{
    const CommandResult result = run(config, {"--library", fake_library(folder, "return 7;")});
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: STOP. "));
    EXPECT_THAT(findings(result), HasSubstr("the upgrade returned 7 instead of 0"));
}

TEST_F(VerdictOf, EdgeRouter_TellsTheLimitsThatChange)
{
    const CommandResult result = run(example("edge-router"), {});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: REVIEW. "));
    EXPECT_THAT(findings(result), HasSubstr("500000 -> 0"));
    EXPECT_THAT(findings(result), HasSubstr("100 -> 0"));
    EXPECT_THAT(findings(result), HasSubstr("7 writes failed as on every such router"));
}

TEST_F(VerdictOf, FamiliesThatAreTurnedOff_AreTold)
{
    bgp_generator::Settings settings;
    settings.neighbors = 30;
    settings.seed = 19;
    const CommandResult result = run(folder.file("drawn.xml", bgp_generator::configuration_text(settings)));
    EXPECT_THAT(findings(result), HasSubstr("IPv6 unicast off"));
}

TEST_F(VerdictOf, RouterConvertedBefore_IsSafe)
{
    const CommandResult result = run(example("upgraded"));
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: SAFE. "));
}

TEST_F(VerdictOf, RowsLeftBehind_StandBeforeWritesThatFailOnEachRouter)
{
    const CommandResult result = run(router_with({Flaw::PlaceTaken}));
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: REVIEW. "));
    const std::string told = findings(result);
    EXPECT_LT(told.find("under index"), told.find("as on every such router"));
}

TEST_F(VerdictOf, RouterIdThatComesFromAnAssumption_IsForReview)
{
    const CommandResult assumed = run(router_with({Flaw::NoRouterId}), {"--user-profile", "3"});
    EXPECT_THAT(last_line(assumed.out), StartsWith("Verdict: REVIEW. "));
    EXPECT_THAT(findings(assumed), HasSubstr("--interfaces"));
    const CommandResult given = run(router_with({Flaw::NoRouterId}));
    EXPECT_THAT(last_line(given.out), StartsWith("Verdict: SAFE. "));
}

TEST_F(VerdictOf, WholeRouterBackup_IsReadAndItsOtherModulesAreTold)
{
    std::string backup = content_of(example("upgraded"));
    backup.insert(backup.rfind("</config>"),
                  "<interfaces xmlns=\"urn:example:interfaces\"><interface><name>eth0</name></interface></interfaces>");
    const CommandResult result = run(folder.file("backup.xml", backup));
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(findings(result), HasSubstr("interfaces"));
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: SAFE. "));
}

TEST_F(VerdictOf, ChosenSeverity_ChangesIt)
{
    const CommandResult result =
        run(config, {"--library", fake_library(folder, "return 7;"), "--severity", "returned=note"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(last_line(result.out), StartsWith("Verdict: SAFE. "));
    EXPECT_EQ(run(config, {"--severity", "returnd=note"}).status, 2);
}

TEST_F(VerdictOf, SecondUpgradeThatChangesMore_IsForReview)
{
    const std::string body =
        "static int runs = 0; ++runs; "
        "maapi_set_elem2(maapi, th, runs == 1 ? \"192.0.2.7\" : \"192.0.2.8\", "
        "\"/router/bgp{65010}/router-id\"); return 0;";
    const std::string library = fake_library(folder, body);
    EXPECT_THAT(findings(run(config, {"--library", library, "--again"})),
                HasSubstr("a second upgrade of the result still changes 1 row"));
    EXPECT_THAT(findings(run(config, {"--library", library})), Not(HasSubstr("second upgrade")));
}

}  // namespace
}  // namespace bgp_test

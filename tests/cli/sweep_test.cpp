// bgp-rehearse sweep: the real library keeps its contract in every run, and a library that does not is caught at it.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using nlohmann::json;
using testing::HasSubstr;

class Sweep : public RehearseTest {
protected:
    // One router entity with a neighbour and a VRF, small enough for all pairs of calls.
    std::string drawn(const std::vector<std::string>& numbers)
    {
        const std::string file = folder / "drawn.xml";
        std::vector<std::string> arguments = {"generate", "-o", file};
        arguments.insert(arguments.end(), numbers.begin(), numbers.end());
        EXPECT_EQ(rehearse(arguments).status, 0);
        return file;
    }

    static json report(const CommandResult& result) { return json::parse(result.out); }

    // The first breaks that a library with this update() shows.
    std::string breaks_of(const std::string& body)
    {
        const CommandResult result = rehearse({"sweep", config, "--library", fake_library(folder, body)});
        EXPECT_EQ(result.status, 6) << result.err;
        return result.out;
    }
};

constexpr char kReadAs[] = R"(
    confd_value_t as;
    log("Starting BGP router update\n");
    int read = cdb_get(cdb, &as, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[%d]/bgpRmEntLocalAs", 0);
)";

TEST_F(Sweep, RealLibrary_KeepsItsContract)
{
    const CommandResult result =
        rehearse({"sweep", drawn({"--neighbors", "1", "--vrfs", "1", "--seed", "1"}), "--every", "9", "--json"});
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    const json swept = report(result);
    EXPECT_EQ(swept["breaks"], 0) << swept["kept_breaks"];
    EXPECT_GT(swept["runs"]["one failed call"], 50);
    EXPECT_GT(swept["runs"]["every call failed from one on"], 50);
    EXPECT_GT(swept["runs"]["one refused allocation"], 0);
    EXPECT_GT(swept["outcomes"]["fault"], 0);
    EXPECT_EQ(swept["outcomes"]["died"], 0);
}

TEST_F(Sweep, Pairs_AreAllPairsOfCalls)
{
    const json alone = report(rehearse({"sweep", config, "--json"}));
    const CommandResult result = rehearse({"sweep", config, "--pairs", "--json"});
    EXPECT_EQ(result.status, 0) << result.out;
    const json paired = report(result);
    const auto pairs = paired["runs"]["two failed calls"].get<int>() - alone["runs"]["two failed calls"].get<int>();
    EXPECT_GT(pairs, 0);
    int calls = 2;
    while (calls * (calls - 1) / 2 < pairs) {
        ++calls;
    }
    EXPECT_EQ(calls * (calls - 1) / 2, pairs);
}

TEST_F(Sweep, FailureThatIsNotLogged_IsABreak)
{
    EXPECT_THAT(breaks_of(std::string(kReadAs) + "return 0;"),
                HasSubstr("update_router_bgp: cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[]/bgpRmEntLocalAs: its "
                          "failure is not logged by \"Failed to read as-number  err: \""));
}

TEST_F(Sweep, CallThatTheContractDoesNotKnow_IsABreak)
{
    EXPECT_THAT(breaks_of("cdb_exists(cdb, \"/prefix-list{a}\"); return 0;"),
                HasSubstr("update: cdb_exists /prefix-list{}: a call site that the contract does not know"));
}

TEST_F(Sweep, WriteThatOnlyAFailureBrings_IsABreak)
{
    EXPECT_THAT(breaks_of(R"(
                    log("Starting BGP router update\n");
                    if (cdb_exists(cdb, "/router/bgp{%u}", 65010) != 1) {
                        log("Router BGP high-level already exists");
                        log("Update Prefix List\n");
                        maapi_create(maapi, th, "/prefix-list/{%s}", "new");
                    }
                    return 0;)"),
                HasSubstr("maapi_create /prefix-list/{}: a write that the run without failures does not make"));
}

TEST_F(Sweep, FailureLikeThatOfALaterRepetition_ExplainsAWrite)
{
    const CommandResult result = rehearse({"sweep", config, "--library", fake_library(folder, R"(
        auto created = [&](const char* row) {
            bool done = maapi_create(maapi, th, "/internal/neighbor-afi-safi-hidden{5 %s ipv4 unicast}", row) == CONFD_OK;
            if (!done) {
                log("Failed to create BGP Peer AFI/SAFI ipv4 unicast internal hidden entry for BGP entity id: 5");
            }
            return done;
        };
        log("Update BGP Ipv6\n");
        bool first = created("10.0.0.1");
        created("10.0.0.1");  // item already exists
        if (!first) {
            created("10.0.0.2");
        }
        return 0;)")});
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_THAT(result.out, HasSubstr("0 contract breaks"));
}

TEST_F(Sweep, GoingOnWhereTheProcessMustEnd_IsABreak)
{
    EXPECT_THAT(
        breaks_of("log(\"Update BGP VRF\\n\"); cdb_num_instances(cdb, \"/router/bgp{%u}/vrf\", 65010); return 0;"),
        HasSubstr("went on after a failure that must end the process"));
}

TEST_F(Sweep, FaultThatTheContractDoesNotAskFor_IsABreak)
{
    EXPECT_THAT(breaks_of(std::string(kReadAs) + R"(
                    if (confd_errno == CONFD_ERR_OS) {
                        nzmw_gen_fault(1, "Somebody", "src/somewhere", 1, "no");
                        exit(1);
                    }
                    log("Failed to read as-number  err: ");
                    return read * 0;)"),
                HasSubstr("ended in Somebody (src/somewhere:1: no) after a failure at update_router_bgp: cdb_get"));
}

TEST_F(Sweep, CrashAfterAFailure_IsABreak)
{
    EXPECT_THAT(breaks_of(std::string(kReadAs) + R"(
                    log("Failed to read as-number  err: ");
                    if (read == CONFD_EOF) {
                        signal(SIGSEGV, SIG_DFL);
                        raise(SIGSEGV);
                    }
                    return 0;)"),
                HasSubstr("the process ended by signal 11, without a report"));
}

TEST_F(Sweep, CursorLeftOpen_IsABreak)
{
    EXPECT_THAT(breaks_of(R"(
                    log("Update BGP VRF IPv6\n");
                    static maapi_cursor cursor;
                    if (maapi_init_cursor(maapi, th, &cursor, "/router/bgp") != CONFD_OK) {
                        log("get_local_as:136: ");
                    } else if (maapi_get_next(&cursor) == CONFD_OK) {
                        maapi_destroy_cursor(&cursor);
                    }
                    return 0;)"),
                HasSubstr("left open: 0 sessions, 0 sockets, 1 cursors, 0 values"));
}

TEST_F(Sweep, ExceptionForWantOfMemory_IsABreak)
{
    EXPECT_THAT(breaks_of("delete new int; return 0;"), HasSubstr("an exception left update: std::bad_alloc"));
}

TEST_F(Sweep, ResultThatIsNotZero_IsABreak)
{
    EXPECT_THAT(breaks_of(std::string(kReadAs) + "log(\"Failed to read as-number  err: \"); return 7;"),
                HasSubstr("update returned 7"));
}

TEST_F(Sweep, SitesThatWereNotReached_FailOnlyWhereTheyAreAskedFor)
{
    EXPECT_EQ(rehearse({"sweep", config}).status, 0);
    const CommandResult asked = rehearse({"sweep", config, "--all-sites"});
    EXPECT_EQ(asked.status, 6);
    EXPECT_THAT(asked.out, HasSubstr("Not reached: update_vrf: maapi_set_values "));
}

TEST_F(Sweep, UpgradeThatEndsWithoutAnyFailure_IsTold)
{
    const CommandResult result = rehearse({"sweep", config, "--library", fake_library(folder, "exit(0);")});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.err, HasSubstr("the upgrade does not return even when nothing fails"));
}

TEST_F(Sweep, ConfigurationThatCannotBeRead_IsRefused)
{
    const CommandResult result = rehearse({"sweep", folder / "none.xml"});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("none.xml"));
}

}  // namespace
}  // namespace bgp_test

// The router step: from a row of the BGP router entity table to an entry of the command-line model.
#include "bgp_update/router_bgp.h"

#include <dlfcn.h>

#include "confd_lib.h"
#include "support/update_fixture.h"

namespace {

// When set, the address conversion gives a number in place of a text.
bool conversion_gives_a_number = false;

}  // namespace

// Stands before the platform's, so that a test can have a conversion go wrong.
extern "C" int HexlistTOipv4str(confd_value_t* in, confd_value_t* out)
{
    if (conversion_gives_a_number) {
        CONFD_SET_UINT32(out, 7);
        return 0;
    }
    using Conversion = int (*)(confd_value_t*, confd_value_t*);
    static const auto platform = reinterpret_cast<Conversion>(dlsym(RTLD_NEXT, "HexlistTOipv4str"));
    return platform(in, out);
}

namespace {

using bgp_platform::UpgradeHandles;
using bgp_platform::capi::Function;
using bgp_test::absent;
using bgp_test::bgp_entity;
using bgp_test::error_text;
using bgp_test::planned;

constexpr char kRouterId[] = "<bgpRmEntLocalIdentifier>0a:01:02:03</bgpRmEntLocalIdentifier>";
constexpr char kAsSize[] = "<bgpRmEntAsSize>fourOctet</bgpRmEntAsSize>";
constexpr char kAdminStatus[] = "<bgpRmEntAdminStatus>down</bgpRmEntAdminStatus>";
constexpr char kLocalPreference[] = "<bgpRmEntDefLocalPref>150</bgpRmEntDefLocalPref>";
constexpr char kClusterId[] = "<bgpRmEntClusterId>c0:00:02:01</bgpRmEntClusterId>";

std::string leaf(const std::string& name, int entry = 0)
{
    return "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[" + std::to_string(entry) + "]/" + name;
}

std::string entity(const std::string& more)
{
    return bgp_entity("<bgpRmEntIndex>5</bgpRmEntIndex><bgpRmEntLocalAs>65010</bgpRmEntLocalAs>" + more);
}

std::string whole_entity()
{
    return entity(std::string(kRouterId) + kAsSize + kAdminStatus + kLocalPreference + kClusterId);
}

class RouterBgp : public bgp_test::UpdateTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }
};

TEST_F(RouterBgp, WholeEntity_GetsAnEntryWithItsFiveAttributes)
{
    stored(whole_entity());
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectLog({"Starting BGP router update\n", "Router BGP as-number: 65010 created", "Will create bgp router-id ",
               "Will create bgp as size", "Will create bgp administrative-status", "Will create bgp local-preference",
               "Will create bgp cluster-id", "Finishing BGP router update\n"});
    expectChanges({"create /router/bgp{65010}", "set /router/bgp{65010}/router-id 10.1.2.3",
                   "set /router/bgp{65010}/as-size fourOctet", "set /router/bgp{65010}/administrative-status down",
                   "set /router/bgp{65010}/bgp/default-local-preference 150",
                   "set /router/bgp{65010}/bgp/cluster-id 192.0.2.1"});
}

TEST_F(RouterBgp, WholeEntity_IsReadAndWrittenInTheFixedOrder)
{
    stored(whole_entity());
    device().recorder().start();
    run(update_router_bgp, 0);
    expectCalls({
        "cdb_set_namespace 82011741 -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalAs -> 0",
        "cdb_exists /router/bgp{65010} -> 0",
        "maapi_create /router/bgp{65010} -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntLocalIdentifier -> 0",
        "maapi_set_elem2 /router/bgp{65010}/router-id 10.1.2.3 -> 0",
        "cdb_get_enum_value /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntAsSize -> 0",
        "maapi_set_elem /router/bgp{65010}/as-size fourOctet -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntAdminStatus -> 0",
        "maapi_set_elem /router/bgp{65010}/administrative-status down -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntDefLocalPref -> 0",
        "maapi_set_elem /router/bgp{65010}/bgp/default-local-preference 150 -> 0",
        "cdb_get /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry[0]/bgpRmEntClusterId -> 0",
        "maapi_set_elem2 /router/bgp{65010}/bgp/cluster-id 192.0.2.1 -> 0",
    });
}

TEST_F(RouterBgp, EntryThere_IsLeftAlone)
{
    stored(whole_entity());
    stored(R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number></bgp></router>)");
    const std::string error_before = confd_lasterr();
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectLog({"Starting BGP router update\n", "Router BGP high-level already exists  err:" + error_before,
               "Finishing BGP router update\n"});
    expectChanges({});
}

TEST_F(RouterBgp, EntryOfAnotherAs_DoesNotCountAsThere)
{
    stored(entity(""));
    stored(R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65011</as-number></bgp></router>)");
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectChanges({"create /router/bgp{65010}"});
}

TEST_F(RouterBgp, FailedLookForTheEntry_CountsAsAbsent)
{
    stored(entity(kAsSize));
    faults().fail(Function::cdb_exists);
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectChanges({"create /router/bgp{65010}", "set /router/bgp{65010}/as-size fourOctet"});
}

TEST_F(RouterBgp, LocalAsAbsent_WritesNothing)
{
    stored(bgp_entity("<bgpRmEntIndex>5</bgpRmEntIndex>"));
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectLog({"Starting BGP router update\n",
               "Failed to read as-number  err: " + absent("cdb_get", leaf("bgpRmEntLocalAs")),
               "Finishing BGP router update\n"});
    expectChanges({});
}

TEST_F(RouterBgp, NamespaceNotSet_GoesOn)
{
    stored(entity(kAsSize));
    faults().fail(Function::cdb_set_namespace);
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectChanges({"create /router/bgp{65010}", "set /router/bgp{65010}/as-size fourOctet"});
}

TEST_F(RouterBgp, EntryNotCreated_EndsTheStepAtOnceWithFailure)
{
    stored(whole_entity());
    faults().fail(Function::maapi_create);
    EXPECT_EQ(run(update_router_bgp, 0), -1);
    expectLog({"Starting BGP router update\n",
               "Failed to configure router bgp: 65010, err: " + planned("maapi_create", "/router/bgp{65010}")});
    expectChanges({});
}

TEST_F(RouterBgp, SecondEntity_IsReadAtItsPosition)
{
    stored(whole_entity());
    stored(
        bgp_entity("<bgpRmEntIndex>9</bgpRmEntIndex><bgpRmEntLocalAs>4200000001</bgpRmEntLocalAs>"
                   "<bgpRmEntDefLocalPref>4294967295</bgpRmEntDefLocalPref>"));
    EXPECT_EQ(run(update_router_bgp, 1), 0);
    expectChanges(
        {"create /router/bgp{4200000001}", "set /router/bgp{4200000001}/bgp/default-local-preference 4294967295"});
    EXPECT_EQ(device().log()[3],
              "Failed to get bgpRmEntLocalIdentifier, err: " + absent("cdb_get", leaf("bgpRmEntLocalIdentifier", 1)));
}

TEST_F(RouterBgp, EmptyEntity_GetsABareEntryAndALineForEachAbsentAttribute)
{
    stored(entity(""));
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectLog({"Starting BGP router update\n", "Router BGP as-number: 65010 created", "Will create bgp router-id ",
               "Failed to get bgpRmEntLocalIdentifier, err: " + absent("cdb_get", leaf("bgpRmEntLocalIdentifier")),
               "Will create bgp as size",
               "Failed to get bgpRmEntAsSize, err: " + absent("cdb_get_enum_value", leaf("bgpRmEntAsSize")),
               "Will create bgp administrative-status",
               "Failed to get bgpRmEntAdminStatus, err: " + absent("cdb_get", leaf("bgpRmEntAdminStatus")),
               "Will create bgp local-preference",
               "Failed to get bgpRmEntDefLocalPref, err: " + absent("cdb_get", leaf("bgpRmEntDefLocalPref")),
               "Will create bgp cluster-id",
               "Failed to get bgpRmEntClusterId, err: " + absent("cdb_get", leaf("bgpRmEntClusterId")),
               "Finishing BGP router update\n"});
    expectChanges({"create /router/bgp{65010}"});
}

TEST_F(RouterBgp, EntityWithoutClusterId_GetsTheOtherFourAttributes)
{
    stored(entity(std::string(kRouterId) + kAsSize + kAdminStatus + kLocalPreference));
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectChanges({"create /router/bgp{65010}", "set /router/bgp{65010}/router-id 10.1.2.3",
                   "set /router/bgp{65010}/as-size fourOctet", "set /router/bgp{65010}/administrative-status down",
                   "set /router/bgp{65010}/bgp/default-local-preference 150"});
    EXPECT_EQ(device().log()[7],
              "Failed to get bgpRmEntClusterId, err: " + absent("cdb_get", leaf("bgpRmEntClusterId")));
}

// One attribute that cannot be written: its log line, and the others written.
struct UnwritableCase {
    const char* name;
    Function call;
    const char* call_name;
    const char* path;
    std::size_t line;  // of the log
    const char* message;
    const char* change;  // the one that is missing
};

const UnwritableCase kUnwritable[] = {
    {"RouterId", Function::maapi_set_elem2, "maapi_set_elem2", "/router/bgp{65010}/router-id", 3,
     "Failed to configure router-id: 10.1.2.3, err: ", "set /router/bgp{65010}/router-id 10.1.2.3"},
    {"AsSize", Function::maapi_set_elem, "maapi_set_elem", "/router/bgp{65010}/as-size", 4,
     "Failed to configure as-size: 2, err: ", "set /router/bgp{65010}/as-size fourOctet"},
    {"AdministrativeStatus", Function::maapi_set_elem, "maapi_set_elem", "/router/bgp{65010}/administrative-status", 5,
     "Failed to configure administrative-status: 2, err: ", "set /router/bgp{65010}/administrative-status down"},
    {"LocalPreference", Function::maapi_set_elem, "maapi_set_elem", "/router/bgp{65010}/bgp/default-local-preference",
     6, "Failed to configure default-local-preference: 150, err: ",
     "set /router/bgp{65010}/bgp/default-local-preference 150"},
    {"ClusterId", Function::maapi_set_elem2, "maapi_set_elem2", "/router/bgp{65010}/bgp/cluster-id", 7,
     "Failed to configure bgp cluster-id: 192.0.2.1, err: ", "set /router/bgp{65010}/bgp/cluster-id 192.0.2.1"},
};

class UnwritableAttribute : public RouterBgp, public testing::WithParamInterface<UnwritableCase> {};

TEST_P(UnwritableAttribute, IsLoggedAndTheOthersAreWritten)
{
    const UnwritableCase& unwritable = GetParam();
    stored(whole_entity());
    faults().fail(unwritable.call, unwritable.path);
    EXPECT_EQ(run(update_router_bgp, 0), 0);

    std::vector<std::string> log = {
        "Starting BGP router update\n", "Router BGP as-number: 65010 created",   "Will create bgp router-id ",
        "Will create bgp as size",      "Will create bgp administrative-status", "Will create bgp local-preference",
        "Will create bgp cluster-id",   "Finishing BGP router update\n"};
    log.insert(log.begin() + static_cast<std::ptrdiff_t>(unwritable.line),
               unwritable.message + planned(unwritable.call_name, unwritable.path));
    expectLog(log);

    std::vector<std::string> changes = {"create /router/bgp{65010}"};
    for (const UnwritableCase& attribute : kUnwritable) {
        if (attribute.line != unwritable.line) {
            changes.push_back(attribute.change);
        }
    }
    expectChanges(changes);
}

INSTANTIATE_TEST_SUITE_P(RouterBgp, UnwritableAttribute, testing::ValuesIn(kUnwritable),
                         [](const auto& unwritable) { return std::string(unwritable.param.name); });

TEST_F(RouterBgp, StatusOfATypeThatTheModelTakes_IsWrittenWithoutComplaint)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntAdminStatus", "int32");
    leafHasType("router", "administrative-status", "int32");
    stored(entity("<bgpRmEntAdminStatus>77</bgpRmEntAdminStatus>"));
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectChanges({"create /router/bgp{65010}", "set /router/bgp{65010}/administrative-status 77"});
}

TEST_F(RouterBgp, AsSizeOfAnotherType_CountsAsUnreadable)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntAsSize", "uint32");
    stored(entity("<bgpRmEntAsSize>2</bgpRmEntAsSize>"));
    EXPECT_EQ(run(update_router_bgp, 0), 0);
    expectChanges({"create /router/bgp{65010}"});
    EXPECT_EQ(device().log()[5].rfind("Failed to get bgpRmEntAsSize, err: cdb_get_enum_value: bad type: ", 0), 0U)
        << device().log()[5];
}

class RouterBgpDeath : public RouterBgp {
protected:
    void TearDown() override { conversion_gives_a_number = false; }

    void expectAssertion(const std::string& line, const std::string& function, const std::string& expression)
    {
        const UpgradeHandles handles = open();
        EXPECT_DEATH(update_router_bgp(handles.maapi_socket, handles.thandle, handles.cdb_socket, 0),
                     "src/config_update/bgp_update_router_bgp:" + line + ": " + function + ": Assertion `" +
                         expression + "' failed\\.");
    }
};

TEST_F(RouterBgpDeath, LocalAsOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntLocalAs", "int32");
    stored(entity(""));
    expectAssertion("230", "int32_t update_router_bgp\\(int32_t, int32_t, int32_t, int\\)",
                    "\\(&temp\\)->type == C_UINT32");
}

TEST_F(RouterBgpDeath, RouterIdNotConvertedToText_FailsTheAssertion)
{
    stored(entity(kRouterId));
    conversion_gives_a_number = true;
    expectAssertion("59", "int32_t create_bgp_router_id\\(int32_t, int32_t, int32_t, int, uint32_t\\)",
                    "\\(&val_ipv4\\)->type == C_BUF");
}

TEST_F(RouterBgpDeath, ClusterIdNotConvertedToText_FailsTheAssertion)
{
    stored(entity(kClusterId));
    conversion_gives_a_number = true;
    expectAssertion("203", "int32_t create_bgp_cluster_id\\(int32_t, int32_t, int32_t, int, uint32_t\\)",
                    "\\(&val_cluster_id\\)->type == C_BUF");
}

TEST_F(RouterBgpDeath, RefusedStatusOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntAdminStatus", "string");
    stored(entity(kAdminStatus));
    expectAssertion("134", "int32_t create_bgp_adm_status\\(int32_t, int32_t, int32_t, int, uint32_t\\)",
                    "\\(&temp\\)->type == C_ENUM_VALUE");
}

TEST_F(RouterBgpDeath, RefusedLocalPreferenceOfAnotherType_FailsTheAssertion)
{
    leafHasType("DC-BGP-MIB", "bgpRmEntDefLocalPref", "string");
    stored(entity(kLocalPreference));
    expectAssertion("168", "int32_t create_bgp_local_preference\\(int32_t, int32_t, int32_t, int, uint32_t\\)",
                    "\\(&temp\\)->type == C_UINT32");
}

}  // namespace

// The redistribution rule of a VRF and a source: its row for every source and both address families, where the VRF's
// RTM index comes from, and what is traced.
#include <dlfcn.h>

#include <climits>

#include "bgp_update/bgp_vrf_redist_entry.h"
#include "nzmw_trace.h"
#include "support/daemon_fixture.h"
#include "support/router_mgr_fixture.h"

namespace {

std::vector<confd_tag_value_t> row_written;  // the last row, whose values own nothing

}  // namespace

// Stands before the platform's, for the order of a row's values, which the row does not show.
extern "C" int maapi_set_values(int sock, int thandle, const confd_tag_value_t* values, int n, const char* format, ...)
{
    using SetValues = int (*)(int, int, const confd_tag_value_t*, int, const char*, ...);
    static const auto platform = reinterpret_cast<SetValues>(dlsym(RTLD_NEXT, "maapi_set_values"));
    row_written.assign(values, values + n);
    return platform(sock, thandle, values, n, "%s", format);
}

namespace {

using bgp_platform::capi::Function;
using bgp_test::internal;
using bgp_test::Name;
using bgp_test::rows;
using bgp_test::table;
using Redist = BgpUtils::BgpVrfRedistEntry;

constexpr char kRedVrf[] =
    "<vrf-config><stringTOindex><name>red</name><rtmIndex>7</rtmIndex><rtmIndexV6>8</rtmIndexV6></stringTOindex>"
    "</vrf-config>";

RtmRedistInfoSource number(int source)
{
    return static_cast<RtmRedistInfoSource>(source);
}

// The lines of a rule that was not there.
std::vector<std::string> rule(const std::string& rtm_index, const std::string& entry, const std::string& family,
                              const std::string& source)
{
    const std::string path = "/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{" + rtm_index + " " + entry + "}";
    return {"create " + path,
            "set " + path + "/rtmRedistInfoDest bgp",
            "set " + path + "/rtmRedistAddrFilterType " + family,
            "set " + path + "/rtmRedistInfoSrc " + source,
            "set " + path + "/rtmRedistRedistFlag redistribute",
            "set " + path + "/rtmRedistAdminStat up"};
}

class VrfRedistEntry : public bgp_test::DaemonTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }

    int create(const char* vrf, int source, bool ipv6)
    {
        return Redist::BgpVrfRedistCreateType(maapi(), thandle(), nullptr, nzmw_trace_register_category("bgp-app"),
                                              Name(vrf), number(source), ipv6);
    }

    int createSilently(const char* vrf, int source, bool ipv6)
    {
        return Redist::BgpVrfRedistCreateType(maapi(), thandle(), nullptr, nullptr, Name(vrf), number(source), ipv6);
    }
};

TEST_F(VrfRedistEntry, RoutingStacksNumbers_AreThoseOfTheTable)
{
    EXPECT_EQ(Redist::GetMetaswitchInfoSourceType(RtmRedistInfoSource::kOther), 0x1U);
    EXPECT_EQ(Redist::GetMetaswitchInfoSourceType(RtmRedistInfoSource::kAll), 0x0U);
    EXPECT_EQ(Redist::GetMetaswitchInfoSourceType(RtmRedistInfoSource::kBgp), 917504U);
    EXPECT_EQ(Redist::GetMetaswitchInfoSourceType(RtmRedistInfoSource::kManagement), 196608U);
    EXPECT_EQ(Redist::GetMetaswitchInfoSourceType(RtmRedistInfoSource::kLocal), 131072U);
    EXPECT_EQ(Redist::GetMetaswitchInfoSourceType(RtmRedistInfoSource::kOspf), 851968U);
    EXPECT_EQ(static_cast<int>(RtmRedistInfoSource::kBgp), 2) << "callers pass numbers";
    EXPECT_EQ(static_cast<int>(RtmRedistInfoSource::kOspf), 5) << "callers pass numbers";
}

TEST_F(VrfRedistEntry, NumberThatIsNoSource_StandsForAllSources)
{
    for (const int none : {6, 7, INT_MAX, -1, INT_MIN}) {
        EXPECT_EQ(Redist::GetMetaswitchInfoSourceType(number(none)), 0U) << none;
    }
}

TEST_F(VrfRedistEntry, BgpSourceOfIpv4_IsTheRowOfTheIpv4Manager)
{
    stored(internal(kRedVrf));
    EXPECT_EQ(create("red", 2, false), 0);
    expectChanges(rule("7", "33554432", "ipv4", "bgp"));
    expectTrace({"BgpVrfRedistCreateType 10 Creating/Updating redist rule RTM: 7, src_type: 2"});
}

TEST_F(VrfRedistEntry, BgpSourceOfIpv6_IsTheRowOfTheIpv6Manager)
{
    stored(internal(kRedVrf));
    EXPECT_EQ(create("red", 2, true), 0);
    expectChanges(rule("8", "33554432", "ipv6", "bgp"));
    expectTrace({"BgpVrfRedistCreateType 10 Creating/Updating redist rule RTM: 8, src_type: 2"});
}

TEST_F(VrfRedistEntry, EverySource_HasItsRuleInBothFamilies)
{
    stored(internal(kRedVrf));
    const std::vector<std::pair<std::string, std::string>> rules = {
        {"0", "other"},        {"16777216", "all"},  {"33554432", "bgp"}, {"50331648", "netmgmt"},
        {"67108864", "local"}, {"83886080", "ospf"}, {"100663296", "all"}};
    std::vector<std::string> changes;
    std::vector<std::string> trace;
    for (const bool ipv6 : {false, true}) {
        const std::string rtm_index = ipv6 ? "8" : "7";
        for (int source = 0; source < static_cast<int>(rules.size()); ++source) {
            EXPECT_EQ(create("red", source, ipv6), 0) << source;
            const auto& [entry, name] = rules[static_cast<std::size_t>(source)];
            for (const std::string& line : rule(rtm_index, entry, ipv6 ? "ipv6" : "ipv4", name)) {
                changes.push_back(line);
            }
            trace.push_back("BgpVrfRedistCreateType 10 Creating/Updating redist rule RTM: " + rtm_index +
                            ", src_type: " + std::to_string(source));
        }
    }
    expectChanges(changes);
    expectTrace(trace);
}

TEST_F(VrfRedistEntry, Row_IsWrittenAtOnceInTheOrderOfTheRoutingStack)
{
    stored(internal(kRedVrf));
    EXPECT_EQ(create("red", 2, false), 0);
    EXPECT_EQ(device().calls().writes(), 1U);
    const std::vector<std::pair<uint32_t, uint32_t>> expected = {
        {0x6a914910, 7},       {0x7495deb9, 0x02000000}, {0x41bbfc01, 0xE0000}, {0x27b53c74, 1},
        {0x4673da6d, 0xE0000}, {0x0fc4103e, 1},          {0x7edd4bb5, 1}};
    ASSERT_EQ(row_written.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const confd_tag_value_t& value = row_written[i];
        EXPECT_EQ(value.tag.tag, expected[i].first) << i;
        EXPECT_EQ(value.tag.ns, 0U) << i;
        ASSERT_EQ(value.v.type, i < 2 ? C_UINT32 : C_ENUM_VALUE) << i;
        EXPECT_EQ(i < 2 ? CONFD_GET_UINT32(&value.v) : static_cast<uint32_t>(CONFD_GET_ENUM_VALUE(&value.v)),
                  expected[i].second)
            << i;
    }
}

TEST_F(VrfRedistEntry, RuleThatIsThere_IsOverwrittenAndKeepsWhatIsNotWritten)
{
    stored(internal(kRedVrf));
    stored(table("DC-RTM-MIB", "rtmRedistTable",
                 rows("rtmRedistEntry",
                      {"<rtmRedistFteIndex>7</rtmRedistFteIndex><rtmRedistEntryId>33554432</rtmRedistEntryId>"
                       "<rtmRedistInfoDest>ospf</rtmRedistInfoDest><rtmRedistAddrFilterLen>24</rtmRedistAddrFilterLen>"
                       "<rtmRedistRedistFlag>filter</rtmRedistRedistFlag>"})));
    EXPECT_EQ(create("red", 2, false), 0);
    const std::string row = "set /DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{7 33554432}/";
    expectChanges({row + "rtmRedistInfoDest bgp", row + "rtmRedistAddrFilterType ipv4", row + "rtmRedistInfoSrc bgp",
                   row + "rtmRedistRedistFlag redistribute", row + "rtmRedistAdminStat up"});
}

TEST_F(VrfRedistEntry, WithoutACategory_TheRuleIsWrittenAndNothingTraced)
{
    stored(internal(kRedVrf));
    EXPECT_EQ(createSilently("red", 5, true), 0);
    expectChanges(rule("8", "83886080", "ipv6", "ospf"));
    expectTrace({});
}

TEST_F(VrfRedistEntry, VrfKnownToTheRunningDatastoreOnly_GetsItsRules)
{
    stored(internal(kRedVrf));
    ASSERT_EQ(maapi_delete(maapi(), thandle(), "/metacli-internal:internal/vrf-config"), CONFD_OK);
    EXPECT_EQ(create("red", 2, false), 0);
    EXPECT_EQ(create("red", 2, true), 0);
    std::vector<std::string> changes = rule("7", "33554432", "ipv4", "bgp");
    for (const std::string& line : rule("8", "33554432", "ipv6", "bgp")) {
        changes.push_back(line);
    }
    changes.push_back("delete /internal/vrf-config/stringTOindex{red}");
    expectChanges(changes);
}

TEST_F(VrfRedistEntry, UnknownVrf_IsTracedAndNothingWritten)
{
    stored(internal(kRedVrf));
    EXPECT_EQ(create("green", 2, false), 0);
    EXPECT_EQ(create("green", 2, true), 0);
    expectChanges({});
    expectTrace({"BgpVrfRedistCreateType 10 Trying to configure a non existent VRF!",
                 "BgpVrfRedistCreateType 10 Trying to configure a non existent VRF!"});
}

TEST_F(VrfRedistEntry, UnknownVrfWithoutACategory_IsPassedOverSilently)
{
    stored(internal(kRedVrf));
    EXPECT_EQ(createSilently("green", 2, false), 0);
    expectChanges({});
    expectTrace({});
}

TEST_F(VrfRedistEntry, VrfWithoutAnIpv6Manager_CountsAsUnknownForIpv6)
{
    stored(internal("<vrf-config><stringTOindex><name>red</name><rtmIndex>7</rtmIndex></stringTOindex></vrf-config>"));
    EXPECT_EQ(create("red", 2, true), 0);
    expectChanges({});
    expectTrace({"BgpVrfRedistCreateType 10 Trying to configure a non existent VRF!"});
}

TEST_F(VrfRedistEntry, FailedWrite_IsNotTold)
{
    stored(internal(kRedVrf));
    faults().fail(Function::maapi_set_values);
    EXPECT_EQ(create("red", 2, false), 0);
    EXPECT_EQ(device().calls().failed_write_count(), 1U);
    expectChanges({});
    expectTrace({"BgpVrfRedistCreateType 10 Creating/Updating redist rule RTM: 7, src_type: 2"});
}

class VrfRedistEntryDeath : public VrfRedistEntry {
protected:
    static constexpr char kSignature[] =
        "static int BgpUtils::BgpVrfRedistEntry::BgpVrfRedistCreateType(int, int, nzmw_log_t*, nzmw_trace_category_t, "
        "char*, RtmRedistInfoSource, bool)";
};

TEST_F(VrfRedistEntryDeath, RtmIndexOfAnotherType_FailsAnAssertion)
{
    leafHasType("metacli-internal", "rtmIndex", "int32");
    stored(internal(kRedVrf));
    EXPECT_DEATH(create("red", 2, false), bgp_test::asserts(kSignature, "(&myval)->type == C_UINT32"));
    EXPECT_EQ(create("red", 2, true), 0) << "the other leaf has its type";
}

}  // namespace

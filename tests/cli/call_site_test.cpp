// What a recorded call is found by in the contract, and what its failure means.
#include "judge/call_site.h"

#include <gtest/gtest.h>

#include <string>

#include "confd_lib.h"
#include "contract/rekeyed_tables.h"
#include "contract/steps.h"

namespace bgp_test {
namespace {

using bgp_contract::Class;
using bgp_contract::kCallsOfEachTable;
using bgp_contract::kRekeyedTables;
using bgp_rehearse::FailureMeaning;
using bgp_rehearse::find_call_site;
using bgp_rehearse::meaning_of;
using bgp_rehearse::without_keys;

void expect_meaning(const FailureMeaning& meaning, Class kind, const std::string& sentence)
{
    EXPECT_EQ(meaning.kind, kind);
    EXPECT_EQ(meaning.sentence, sentence);
}

TEST(CallSiteOf, EachSiteOfTheContract_IsFound)
{
    for (const bgp_contract::Step& step : bgp_contract::kSteps) {
        for (const bgp_contract::CallSite& site : step.calls) {
            EXPECT_EQ(find_call_site(step.name, site.function, site.path), &site) << step.name << ": " << site.path;
        }
    }
}

TEST(CallSiteOf, CallsOfEachRekeyedTable_AreOneSiteForAll)
{
    for (const bgp_contract::RekeyedTable& table : kRekeyedTables) {
        for (const bgp_contract::CallSite& site : kCallsOfEachTable) {
            EXPECT_EQ(find_call_site("update_rm_index", site.function, std::string(table.path) + site.path), &site);
        }
    }
}

TEST(CallSiteOf, CallThatTheStepDoesNotMake_IsNotFound)
{
    EXPECT_NE(find_call_site("update_router_bgp", "maapi_create", "/router/bgp{}"), nullptr);
    EXPECT_EQ(find_call_site("update_ipv6", "maapi_create", "/router/bgp{}"), nullptr);
    EXPECT_EQ(find_call_site("update_router_bgp", "maapi_delete", "/router/bgp{}"), nullptr);
    EXPECT_EQ(find_call_site("update_router_bgp", "maapi_create", "/router/bgp"), nullptr);
}

TEST(WithoutKeys, LeavesBracesAndBracketsEmpty)
{
    EXPECT_EQ(without_keys("/router/bgp{65010}/vrf[3]/name"), "/router/bgp{}/vrf[]/name");
    EXPECT_EQ(without_keys("/prefix-list"), "/prefix-list");
    EXPECT_EQ(without_keys(""), "");
}

TEST(WithoutKeys, BracesInAQuotedKeyEndNothing)
{
    EXPECT_EQ(without_keys(R"(/prefix-list{"a}{\"b"}/seq{10})"), "/prefix-list{}/seq{}");
}

TEST(MeaningOf, ExpectedWhereThere_IsALossForOtherErrors)
{
    const auto* site =
        find_call_site("update_vrf_ipv6", "maapi_create", "/DC-BGP-MIB/bgpRmAfmJoinTable/bgpRmAfmJoinEntry{}");
    ASSERT_NE(site, nullptr);
    expect_meaning(meaning_of(site->meaning, CONFD_ERR_ALREADY_EXISTS), Class::Expected,
                   "the VRF's IPv6 join is there already");
    expect_meaning(meaning_of(site->meaning, CONFD_ERR_NOEXISTS), Class::Loses, "the VRF's IPv6 join is not made");
}

TEST(MeaningOf, ExpectedWhereMissing_IsALossForOtherErrors)
{
    const auto* site = find_call_site("update_ipv6", "maapi_set_elem",
                                      "/DC-BGP-MIB/bgpPeerAfiSafiTable/bgpPeerAfiSafiEntry{}/bgpPeerAfiSafiDisable");
    ASSERT_NE(site, nullptr);
    expect_meaning(meaning_of(site->meaning, CONFD_ERR_NOEXISTS), Class::Expected, "the peer has no IPv6 row yet");
    expect_meaning(meaning_of(site->meaning, CONFD_ERR_BADTYPE), Class::Loses,
                   "the neighbour's IPv6 family is not turned off");
}

TEST(MeaningOf, ListNameLookedUpTwice_IsALossOnlyWhenBothTriesFail)
{
    const auto* site = find_call_site("update_prefix_list", "cdb_get",
                                      "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry-get{}/name");
    ASSERT_NE(site, nullptr);
    expect_meaning(meaning_of(site->meaning, CONFD_ERR_NOEXISTS), Class::Expected,
                   "the list's name is looked up under the next index");
    expect_meaning(meaning_of(site->meaning, CONFD_ERR_NOEXISTS, true), Class::Left,
                   "the rule goes into no prefix list: its list has no name");
}

TEST(MeaningOf, OneMeaningForAllErrors_IsThatOne)
{
    const bgp_contract::Meaning meaning = bgp_contract::left("its place is taken");
    expect_meaning(meaning_of(meaning, CONFD_ERR_ALREADY_EXISTS), Class::Left, "its place is taken");
    expect_meaning(meaning_of(meaning, CONFD_ERR_OS, true), Class::Left, "its place is taken");
}

}  // namespace
}  // namespace bgp_test

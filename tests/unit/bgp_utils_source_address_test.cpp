// The update-source address of a VRF's neighbour, from the open transaction and from the running configuration.
#include <arpa/inet.h>
#include <gtest/gtest.h>

#include <string>

#include "bgp_update/bgp_utils.h"
#include "confd_maapi.h"
#include "nz_confd_cdb_session.h"
#include "support/show_faults.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::capi::Function;

constexpr unsigned int kAs = 65010;
constexpr char kLeaf[] = "/router/bgp{65010}/vrf{red}/neighbor{10.0.0.1}/update-source-address";

class SourceAddress : public bgp_test::UpdateTest {
protected:
    using Lookup = confd_value (*)(confd_trans_ctx*, unsigned int, char*, confd_value*);

    // AS 65010 with VRF red and its neighbours 10.0.0.1, with these further leaves, and 2001:db8::1.
    void stored_neighbor(const std::string& leaves)
    {
        stored(
            "<router xmlns=\"urn:bgp-update:yang:router\"><bgp><as-number>65010</as-number><vrf><name>red</name>"
            "<neighbor><address>10.0.0.1</address>" +
            leaves +
            "</neighbor><neighbor><address>2001:db8::1</address>"
            "<update-source-address>2001:db8::2</update-source-address></neighbor></vrf></bgp></router>");
    }

    void stored_source_address() { stored_neighbor("<update-source-address>10.0.0.9</update-source-address>"); }

    void set_in_transaction(const char* address)
    {
        const bgp_platform::UpgradeHandles upgrade = open();
        ASSERT_EQ(maapi_set_elem2(upgrade.maapi_socket, upgrade.thandle, address, kLeaf), CONFD_OK) << confd_lasterr();
    }

    confd_value found(Lookup lookup, const char* neighbor = "10.0.0.1", unsigned int as = kAs)
    {
        open();
        std::string vrf = "red";
        confd_value_t key{};
        in_addr address{};
        in6_addr address6{};
        if (inet_pton(AF_INET, neighbor, &address) == 1) {
            CONFD_SET_IPV4(&key, address);
        } else {
            EXPECT_EQ(inet_pton(AF_INET6, neighbor, &address6), 1);
            CONFD_SET_IPV6(&key, address6);
        }
        return lookup(device().transaction_context(), as, vrf.data(), &key);
    }

    // The address found, as text; "none" for a zeroed C_NOEXISTS.
    std::string address(Lookup lookup, const char* neighbor = "10.0.0.1", unsigned int as = kAs)
    {
        confd_value value = found(lookup, neighbor, as);
        if (value.type == C_NOEXISTS) {
            EXPECT_EQ(value.val.u64, 0U);
            return "none";
        }
        char text[64];
        confd_pp_value(text, sizeof text, &value);
        confd_free_value(&value);
        return text;
    }

    // A lookup that ends in a fault of this function, which the pattern describes.
    void expectFault(Lookup lookup, const std::string& function, const std::string& text)
    {
        open();
        bgp_test::show_faults(device());
        EXPECT_EXIT(found(lookup), testing::ExitedWithCode(1),
                    "^1 backtrace, then 1, " + function + ", src/daemon/bgp_utils, [1-9][0-9]*, <" + text + ">\n$");
    }

    static constexpr Lookup kCommitted = BgpUtils::cdb_get_source_address;
    static constexpr Lookup kOpen = BgpUtils::maapi_cdb_get_source_address;
    static constexpr char kBadSocket[] = "Socket has an invalid file descriptor\n";
};

TEST_F(SourceAddress, CommittedAddress_IsFoundByBoth)
{
    stored_source_address();
    EXPECT_EQ(address(kCommitted), "10.0.0.9");
    EXPECT_EQ(address(kOpen), "10.0.0.9");
    expectNothingLeftOpen();
}

TEST_F(SourceAddress, NeighborOfIpv6_IsFoundByBoth)
{
    stored_source_address();
    EXPECT_EQ(address(kCommitted, "2001:db8::1"), "2001:db8::2");
    EXPECT_EQ(address(kOpen, "2001:db8::1"), "2001:db8::2");
    expectNothingLeftOpen();
}

TEST_F(SourceAddress, AsNotConfigured_IsNoAddressWithoutLookingAtTheNeighbor)
{
    stored_source_address();
    open();
    device().recorder().start();
    EXPECT_EQ(address(kCommitted, "10.0.0.1", 65011), "none");
    expectCalls({"cdb_connect -> 0", "cdb_start_session -> 0", "cdb_exists /router/bgp{65011} -> 0", "cdb_close -> 0"});
    EXPECT_EQ(address(kOpen, "10.0.0.1", 65011), "none");
    expectNothingLeftOpen();
}

TEST_F(SourceAddress, NeighborWithoutTheAddress_IsNoAddress)
{
    stored_neighbor("");
    open();
    device().recorder().start();
    EXPECT_EQ(address(kCommitted), "none");
    expectCalls({"cdb_connect -> 0", "cdb_start_session -> 0", "cdb_exists /router/bgp{65010} -> 1",
                 std::string("cdb_exists ") + kLeaf + " -> 0", "cdb_close -> 0"});
    EXPECT_EQ(address(kOpen), "none");
    expectNothingLeftOpen();
}

TEST_F(SourceAddress, UnknownNeighbor_IsNoAddress)
{
    stored_source_address();
    EXPECT_EQ(address(kCommitted, "10.0.0.2"), "none");
    EXPECT_EQ(address(kOpen, "10.0.0.2"), "none");
    expectNothingLeftOpen();
}

TEST_F(SourceAddress, AddressNotYetCommitted_IsFoundInTheTransactionOnly)
{
    stored_neighbor("");
    set_in_transaction("10.0.0.8");
    EXPECT_EQ(address(kOpen), "10.0.0.8");
    EXPECT_EQ(address(kCommitted), "none");
    expectNothingLeftOpen();
}

TEST_F(SourceAddress, AddressChangedInTheTransaction_WinsOverTheCommittedOne)
{
    stored_source_address();
    set_in_transaction("10.0.0.8");
    EXPECT_EQ(address(kOpen), "10.0.0.8");
    EXPECT_EQ(address(kCommitted), "10.0.0.9");
}

TEST_F(SourceAddress, AddressDeletedInTheTransaction_IsFoundAsCommitted)
{
    stored_source_address();
    const bgp_platform::UpgradeHandles upgrade = open();
    ASSERT_EQ(maapi_delete(upgrade.maapi_socket, upgrade.thandle, kLeaf), CONFD_OK);
    EXPECT_EQ(address(kOpen), "10.0.0.9");
    expectNothingLeftOpen();
}

TEST_F(SourceAddress, AddressInTheTransaction_IsReadWithoutAPrivateSession)
{
    stored_source_address();
    open();
    device().recorder().start();
    EXPECT_EQ(address(kOpen), "10.0.0.9");
    expectCalls({std::string("maapi_exists ") + kLeaf + " -> 1", std::string("maapi_get_elem ") + kLeaf + " -> 0"});
}

TEST_F(SourceAddress, FailedTestInTheRunningConfiguration_IsNoAddress)
{
    stored_source_address();
    faults().fail(Function::cdb_exists, "/router/bgp{65010}", {}, 1);
    EXPECT_EQ(address(kCommitted), "none");
    faults().clear();
    faults().fail(Function::cdb_exists, kLeaf);
    EXPECT_EQ(address(kCommitted), "none");
    expectNothingLeftOpen();
}

TEST_F(SourceAddress, FailedTestInTheTransaction_LetsTheReadDecide)
{
    stored_source_address();
    faults().fail(Function::maapi_exists, kLeaf);
    EXPECT_EQ(address(kOpen), "10.0.0.9");
    EXPECT_EQ(device().calls().of(Function::maapi_get_elem), 1U);
}

using SourceAddressDeath = SourceAddress;

TEST_F(SourceAddressDeath, NoPrivateSession_ReportsAFaultAndExits)
{
    stored_neighbor("");
    faults().fail(Function::cdb_start_session);
    expectFault(kCommitted, "cdb_get_source_address", kBadSocket);
    expectFault(kOpen, "maapi_cdb_get_source_address", kBadSocket);
}

TEST_F(SourceAddressDeath, ContextWithoutInterface_ReportsAFaultAndExits)
{
    stored_source_address();
    open();
    device().transaction_context()->t_opaque = nullptr;
    expectFault(kCommitted, "cdb_get_source_address", kBadSocket);
    expectFault(kOpen, "maapi_cdb_get_source_address", kBadSocket);
}

TEST_F(SourceAddressDeath, InterfaceWithoutMaapiSocket_ReportsAFaultAndExits)
{
    stored_source_address();
    open();
    NzConfdInterface without_socket(-1);
    device().transaction_context()->t_opaque = &without_socket;
    expectFault(kOpen, "maapi_cdb_get_source_address", kBadSocket);
    EXPECT_EQ(address(kCommitted), "10.0.0.9");
}

TEST_F(SourceAddressDeath, FailedReadOfTheRunningConfiguration_ReportsAFaultAndExits)
{
    stored_source_address();
    open();
    faults().fail(Function::cdb_get, kLeaf);
    const std::string text = "error\\[18\\]: cdb_get: internal error: [^\n]*update-source-address: as planned \n";
    expectFault(kCommitted, "cdb_get_source_address", text);
    const bgp_platform::UpgradeHandles upgrade = open();
    ASSERT_EQ(maapi_delete(upgrade.maapi_socket, upgrade.thandle, kLeaf), CONFD_OK);
    expectFault(kOpen, "maapi_cdb_get_source_address", text);
}

TEST_F(SourceAddressDeath, FailedReadOfTheTransaction_ReportsAFaultAndExits)
{
    stored_source_address();
    faults().fail(Function::maapi_get_elem, kLeaf);
    expectFault(kOpen, "maapi_cdb_get_source_address",
                "error\\[18\\]: maapi_get_elem: internal error: [^\n]*update-source-address: as planned \n");
}

TEST_F(SourceAddressDeath, FailedTestOfAnAbsentAddress_EndsInTheFailedRead)
{
    stored_neighbor("");
    faults().fail(Function::maapi_exists, kLeaf);
    expectFault(kOpen, "maapi_cdb_get_source_address",
                "error\\[1\\]: maapi_get_elem: item does not exist: [^\n]*update-source-address \n");
}

}  // namespace

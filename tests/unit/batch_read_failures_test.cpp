// Batch reads that fail after they have left values in the array: those are ConfD's still, and the step gives back the
// array alone.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>
#include <vector>

#include "bgp_update/ipv6.h"
#include "bgp_update/vrf.h"
#include "confd/value.h"
#include "confd_cdb.h"
#include "support/prefix_list_fixture.h"

namespace {

bool read_fails = false;
std::vector<confd_value_t> left;  // by the reads that failed, to be given back by the test

}  // namespace

// Stands before the platform's: reads as that one does, and says that it failed when told so.
extern "C" int cdb_get_objects(int sock, confd_value_t* values, int n, int ix, int nobj, const char* fmt, ...)
{
    static auto* const platforms = reinterpret_cast<decltype(&cdb_get_objects)>(dlsym(RTLD_NEXT, "cdb_get_objects"));
    va_list keys;
    va_start(keys, fmt);
    const uint32_t key = std::strchr(fmt, '%') == nullptr ? 0 : va_arg(keys, uint32_t);
    va_end(keys);
    const int result = platforms(sock, values, n, ix, nobj, fmt, key);
    if (!read_fails) {
        return result;
    }
    left.insert(left.end(), values, values + std::ptrdiff_t{n} * nobj);
    return CONFD_ERR;
}

namespace {

std::string mib(const std::string& tables)
{
    return R"(<DC-BGP-MIB xmlns="http://tail-f.com/ns/mibs/DC-BGP-MIB">)" + tables + "</DC-BGP-MIB>";
}

constexpr char kPeer[] =
    "<bgpPeerTable><bgpPeerEntry><bgpRmEntIndex>5</bgpRmEntIndex><bgpPeerLocalAddrType>ipv4</bgpPeerLocalAddrType>"
    "<bgpPeerLocalAddr>0a:00:00:01</bgpPeerLocalAddr><bgpPeerLocalPort>0</bgpPeerLocalPort>"
    "<bgpPeerRemoteAddrType>ipv4</bgpPeerRemoteAddrType><bgpPeerRemoteAddr>0a:00:00:02</bgpPeerRemoteAddr>"
    "<bgpPeerRemotePort>0</bgpPeerRemotePort><bgpPeerLocalAddrScopeId>0</bgpPeerLocalAddrScopeId></bgpPeerEntry>"
    "</bgpPeerTable>";

class BatchReadFailure : public bgp_test::UpdateTest {
protected:
    void SetUp() override { read_fails = true; }
    void TearDown() override
    {
        read_fails = false;
        EXPECT_GT(left.size(), 0U) << "no read failed";
        for (confd_value_t& value : left) {
            confd_free_value(&value);
        }
        left.clear();
        expectNothingLeftOpen();
    }
};

TEST_F(BatchReadFailure, Array_LeavesWhatStandsInIt)
{
    stored(mib(kPeer));
    {
        confd::ValueArray peers(8);
        EXPECT_EQ(peers.read_objects(open().cdb_socket, 8, 0, 1, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry"), CONFD_ERR);
    }
    EXPECT_EQ(device().open_things().values, 2U) << "of the two addresses";
}

TEST_F(BatchReadFailure, Peers_AreNotGivenBack)
{
    stored(mib("<bgpRmEntTable><bgpRmEntEntry><bgpRmEntIndex>5</bgpRmEntIndex></bgpRmEntEntry></bgpRmEntTable>" +
               std::string(kPeer)));
    EXPECT_EQ(run(update_ipv6), 0);
    EXPECT_EQ(device().open_things().values, 2U);
}

TEST_F(BatchReadFailure, PrefixRules_AreNotGivenBack)
{
    using namespace bgp_test::prefix_list;
    stored(rules(plain_rule(1, 1)) + hidden("4", ""));
    EXPECT_EQ(run(update_prefix_list, 5U), -1);
    EXPECT_EQ(device().open_things().values, 1U);
}

TEST_F(BatchReadFailure, NamesOfVrfs_AreNotGivenBack)
{
    stored(R"(<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number><vrf><name>blue</name></vrf>)"
           "<vrf><name>red</name></vrf></bgp></router>");
    EXPECT_EQ(run(update_vrf, 65010U), -1);
    EXPECT_EQ(device().open_things().values, 2U);
}

}  // namespace

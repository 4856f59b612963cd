// The maps of one VRF's BGP instances, stored and in a transaction, and the operations on them.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "libvrfid.h"
#include "support/daemon_fixture.h"

namespace bgp_test {

constexpr uint32_t kVrf = 7;

// A VRF's container as XML: released indices, the counter, and who owns which index, in both maps.
inline std::string vrf_container(const std::vector<int>& released, int next, const std::map<uint32_t, int>& owners,
                                 uint32_t vrf = kVrf)
{
    std::string xml = "<bgp-internal xmlns=\"urn:bgp-update:yang:bgp-internal\"><bgp-vrf><vrf-idx>" +
                      std::to_string(vrf) + "</vrf-idx>";
    for (const int index : released) {
        xml += "<bgp-free-index>" + std::to_string(index) + "</bgp-free-index>";
    }
    xml += "<bgp-next-index>" + std::to_string(next) + "</bgp-next-index>";
    for (const auto& [as, index] : owners) {
        xml += "<as-to-bgp-idx><as>" + std::to_string(as) + "</as><inst-idx>" + std::to_string(index) +
               "</inst-idx></as-to-bgp-idx><idx-to-bgp-as><idx>" + std::to_string(index) + "</idx><as-number>" +
               std::to_string(as) + "</as-number></idx-to-bgp-as>";
    }
    return xml + "</bgp-vrf></bgp-internal>";
}

class CompoundIndexTest : public DaemonTest {
protected:
    uint32_t create(uint32_t as) { return BgpUtils::CreateBgpCompoundIdx(maapi(), thandle(), cdb(), kVrf, as); }
    uint32_t createInCallback(uint32_t as) { return BgpUtils::CreateBgpCompoundIdx(maapi(), context(), kVrf, as); }
    uint32_t candidate(uint32_t as) { return BgpUtils::GetNextBgpCompoundIdxCandidate(maapi(), context(), kVrf, as); }
    void release(uint32_t as) { BgpUtils::DeleteBgpCompoundIdx(maapi(), context(), kVrf, as); }
    uint32_t ofVrf() { return BgpUtils::GetBgpCompoundIdxFromVrfIdx(maapi(), thandle(), kVrf); }
    int ofVrfName(const std::string& name, uint32_t& compound)
    {
        return BgpUtils::GetBgpCompoundIdxFromVrfName(maapi(), thandle(), name, compound);
    }
    static uint32_t compound(int index)
    {
        return libvrfid::VrfId::ComponentFromVrf(kVrf) + static_cast<uint32_t>(index);
    }

    void forgetVrfInTransaction()
    {
        ASSERT_EQ(maapi_delete(maapi(), thandle(), "/bgp-internal/bgp-vrf{%u}", kVrf), CONFD_OK);
    }
    uint16_t counter()
    {
        uint16_t next = 0;
        EXPECT_EQ(maapi_get_u_int16_elem(maapi(), thandle(), &next, "/bgp-internal/bgp-vrf{%u}/bgp-next-index", kVrf),
                  CONFD_OK);
        return next;
    }
    void nameVrf(const std::string& name)
    {
        stored("<internal xmlns=\"urn:bgp-update:yang:metacli-internal\"><vrf-config><stringTOindex><name>" + name +
               "</name><vrf-idx>7</vrf-idx></stringTOindex></vrf-config></internal>");
    }
};

}  // namespace bgp_test

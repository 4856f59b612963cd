// What holds for every compound index, and for every sequence of allocations, releases and commits in one VRF as long
// as the counter has not wrapped.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "bgp_update/bgp_utils.h"
#include "confd/cursor.h"
#include "confd/value.h"
#include "device.h"
#include "libvrfid.h"
#include "support/update_fixture.h"

namespace {

using bgp_platform::Device;

constexpr uint32_t kVrf = 7;
constexpr uint32_t kInstances = 65536;  // of a VRF

using Owners = std::map<uint32_t, uint32_t>;  // AS numbers and their instance indices

// A VRF whose instances all have component numbers within 32 bits.
struct Numbering {
    uint32_t base;
    uint32_t step;
    uint32_t vrf;
};

Numbering arbitrary_numbering()
{
    const uint32_t base = *rc::gen::inRange<uint32_t>(0, 1U << 31);
    const uint32_t step = *rc::gen::oneOf(rc::gen::just(kInstances), rc::gen::inRange<uint32_t>(kInstances, 1U << 30));
    const uint32_t vrfs = (UINT32_MAX - base - (kInstances - 1)) / step;
    return {base, step, *rc::gen::oneOf(rc::gen::inRange<uint32_t>(0, vrfs + 1), rc::gen::just(vrfs))};
}

RC_GTEST_PROP(CompoundIndexProperty, ComposingAndTakingApart_AreInverse, ())
{
    const Numbering numbering = arbitrary_numbering();
    const auto instance = *rc::gen::oneOf(rc::gen::arbitrary<uint16_t>(), rc::gen::element<uint16_t>(0, 1, 65535));
    Device device;
    device.set_vrf_component(numbering.base, numbering.step);
    const uint32_t compound = BgpUtils::GetBgpCompoundIdx(instance, numbering.vrf);
    RC_ASSERT(BgpUtils::GetInstIdxFromCompoundIdx(compound) == instance);
    RC_ASSERT(libvrfid::VrfId::VrfFromComponent(compound) == numbering.vrf);
    RC_ASSERT(BgpUtils::GetBgpCompoundIdx(static_cast<unsigned short>(BgpUtils::GetInstIdxFromCompoundIdx(compound)),
                                          libvrfid::VrfId::VrfFromComponent(compound)) == compound);
}

// One VRF on a device, the operations on it, and what its maps must look like.
class Allocations {
public:
    explicit Allocations(uint32_t counter)
    {
        device_.load_text(
            bgp_test::config("<bgp-internal xmlns=\"urn:bgp-update:yang:bgp-internal\"><bgp-vrf><vrf-idx>7"
                             "</vrf-idx><bgp-next-index>" +
                             std::to_string(counter) + "</bgp-next-index></bgp-vrf></bgp-internal>"));
        open_ = device_.open_upgrade();
    }

    // Any step that may come now: an AS has one index, and only what is committed and unchanged since is released.
    void step()
    {
        switch (*rc::gen::weightedElement<int>({{5, 0}, {5, 1}, {2, 2}})) {
            case 0:
                create(*rc::gen::inRange<uint32_t>(1, 12));
                break;
            case 1:
                release(*rc::gen::inRange<uint32_t>(1, 12));
                break;
            default:
                commit();
        }
        check();
    }

    void expectNothingLeftOpen() const { RC_ASSERT(device_.open_things().none()); }

private:
    void create(uint32_t as)
    {
        if (owners_.count(as) != 0) {
            return;
        }
        confd_trans_ctx* const context = device_.transaction_context();
        const uint32_t candidate = BgpUtils::GetNextBgpCompoundIdxCandidate(open_.maapi_socket, context, kVrf, as);
        const uint32_t created =
            *rc::gen::arbitrary<bool>()
                ? BgpUtils::CreateBgpCompoundIdx(open_.maapi_socket, context, kVrf, as)
                : BgpUtils::CreateBgpCompoundIdx(open_.maapi_socket, open_.thandle, open_.cdb_socket, kVrf, as);
        RC_ASSERT(candidate == created);
        const uint32_t index = BgpUtils::GetInstIdxFromCompoundIdx(created);
        for (const auto& [other, owned] : owners_) {
            RC_ASSERT(owned != index);
        }
        owners_[as] = index;
        RC_ASSERT(BgpUtils::GetNextBgpCompoundIdxCandidate(open_.maapi_socket, context, kVrf, as) == created);
    }

    void release(uint32_t as)
    {
        if (releasable_.erase(as) == 0) {
            return;
        }
        BgpUtils::DeleteBgpCompoundIdx(open_.maapi_socket, device_.transaction_context(), kVrf, as);
        owners_.erase(as);
    }

    void commit()
    {
        device_.commit();
        open_ = device_.open_upgrade();
        for (const auto& [as, index] : owners_) {
            releasable_.insert(as);
        }
    }

    void check() const
    {
        const Owners indices = read_map("/bgp-internal/bgp-vrf{7}/as-to-bgp-idx", "inst-idx");
        const Owners owners = read_map("/bgp-internal/bgp-vrf{7}/idx-to-bgp-as", "as-number");
        RC_ASSERT(indices == owners_);
        RC_ASSERT(owners.size() == indices.size());
        for (const auto& [as, index] : indices) {
            RC_ASSERT(owners.at(index) == as);
        }
        for (const uint32_t released : free_list()) {
            RC_ASSERT(owners.count(released) == 0U);
        }
        const uint32_t first = BgpUtils::GetBgpCompoundIdxFromVrfIdx(open_.maapi_socket, open_.thandle, kVrf);
        RC_ASSERT(first == (owners.empty() ? 0xFFFFFFFF
                                           : BgpUtils::GetBgpCompoundIdx(
                                                 static_cast<unsigned short>(owners.begin()->first), kVrf)));
    }

    static uint32_t number(const confd_value_t& value)
    {
        return value.type == C_UINT16 ? CONFD_GET_UINT16(&value) : CONFD_GET_UINT32(&value);
    }

    Owners read_map(const char* list, const char* leaf) const
    {
        Owners map;
        confd::Cursor entries(open_.maapi_socket, open_.thandle, list);
        while (entries.next()) {
            confd::Value value;
            RC_ASSERT(maapi_get_elem(open_.maapi_socket, open_.thandle, &value, "%s{%x}/%s", list, entries.keys(),
                                     leaf) == CONFD_OK);
            map[number(entries.keys()[0])] = number(value);
        }
        return map;
    }

    std::vector<uint32_t> free_list() const
    {
        std::vector<uint32_t> released;
        confd::Value list;
        if (maapi_get_elem(open_.maapi_socket, open_.thandle, &list, "/bgp-internal/bgp-vrf{7}/bgp-free-index") ==
            CONFD_OK) {
            for (unsigned int i = 0; i < CONFD_GET_LISTSIZE(&list); ++i) {
                released.push_back(number(CONFD_GET_LIST(&list)[i]));
            }
        }
        return released;
    }

    Device device_;
    bgp_platform::UpgradeHandles open_;
    Owners owners_;                  // as the transaction must have them
    std::set<uint32_t> releasable_;  // ASes whose index is committed and was not released since
};

RC_GTEST_PROP(CompoundIndexProperty, IndicesInUse_AreNeverHandedOutAndTheMapsAgree, ())
{
    const int steps = *rc::gen::inRange(0, 60);
    Allocations allocations(*rc::gen::oneOf(rc::gen::just(0U), rc::gen::inRange<uint32_t>(0, 65535U - 60U)));
    for (int i = 0; i < steps; ++i) {
        allocations.step();
    }
    allocations.expectNothingLeftOpen();
}

}  // namespace

// What holds for every sequence of creations, deletions and commits of route maps and route policies in one VRF as long
// as the counter has not wrapped.
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "confd/value.h"
#include "device.h"
#include "support/map_index_fixture.h"

namespace {

using bgp_platform::Device;
using bgp_test::Name;

using Numbers = std::map<std::string, uint32_t>;

// The names of one allocator in the VRF "red" of a device, and what they must look like.
class Names {
public:
    Names(const bgp_test::Allocator* allocator, const bgp_platform::UpgradeHandles* open)
        : allocator_(allocator), open_(open)
    {
    }

    // A name deleted since the last commit still has its number in the running datastore, where a creation would find
    // it: it rests until the commit.
    void create(const std::string& name)
    {
        if (resting_.count(name) != 0) {
            return;
        }
        const uint32_t number =
            allocator_->create(open_->maapi_socket, open_->thandle, Name("red"), Name(name.c_str()));
        if (numbers_.count(name) != 0) {
            RC_ASSERT(number == numbers_[name]);
        }
        for (const auto& [other, used] : numbers_) {
            RC_ASSERT(other == name || used != number);
        }
        numbers_[name] = number;
    }

    void remove(const std::string& name)
    {
        if (resting_.count(name) != 0) {
            return;
        }
        const int result = allocator_->remove(open_->maapi_socket, open_->thandle, Name("red"), Name(name.c_str()));
        RC_ASSERT(result == (numbers_.erase(name) != 0 ? 0 : -1));
        if (committed_.count(name) != 0) {
            resting_.insert(name);
        }
    }

    void committed()
    {
        resting_.clear();
        committed_ = numbers_;
    }

    void check()
    {
        std::set<uint32_t> used;
        for (const auto& [name, number] : numbers_) {
            confd::Value found;
            RC_ASSERT(allocator_->get(open_->maapi_socket, open_->thandle, Name("red"), Name(name.c_str()), &found) ==
                      0);
            RC_ASSERT(CONFD_GET_UINT32(&found) == number);
            used.insert(number);
        }
        const std::string list = std::string(allocator_->path) + "/stringTOindex";
        RC_ASSERT(maapi_num_instances(open_->maapi_socket, open_->thandle, "%s", list.c_str()) ==
                  static_cast<int>(numbers_.size()));
        confd::Value released;
        const std::string free_index = std::string(allocator_->path) + "/free-index";
        if (maapi_get_elem(open_->maapi_socket, open_->thandle, &released, "%s", free_index.c_str()) == CONFD_OK) {
            for (unsigned int i = 0; i < CONFD_GET_LISTSIZE(&released); ++i) {
                RC_ASSERT(used.count(CONFD_GET_UINT32(&CONFD_GET_LIST(&released)[i])) == 0U);
            }
        }
    }

private:
    const bgp_test::Allocator* allocator_;
    const bgp_platform::UpgradeHandles* open_;
    Numbers numbers_;  // as the transaction must have them
    Numbers committed_;
    std::set<std::string> resting_;
};

RC_GTEST_PROP(MapIndexProperty, NumbersInUse_AreNeverHandedOut, ())
{
    Device device;
    bgp_platform::UpgradeHandles open = device.open_upgrade();
    std::vector<Names> allocators = {{&bgp_test::kRouteMaps, &open}, {&bgp_test::kRoutePolicies, &open}};
    const int steps = *rc::gen::inRange(0, 60);
    for (int i = 0; i < steps; ++i) {
        Names& names = *rc::gen::arbitrary<bool>() ? allocators[0] : allocators[1];
        const std::string name(1, *rc::gen::inRange('a', 'k'));
        switch (*rc::gen::weightedElement<int>({{5, 0}, {5, 1}, {2, 2}})) {
            case 0:
                names.create(name);
                break;
            case 1:
                names.remove(name);
                break;
            default:
                device.commit();
                open = device.open_upgrade();
                allocators[0].committed();
                allocators[1].committed();
        }
        allocators[0].check();
        allocators[1].check();
    }
    RC_ASSERT(device.open_things().none());
}

}  // namespace

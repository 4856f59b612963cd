// The setters of the router's attributes: what each writes, what an instance that is not there gets, and the end of the
// process at a write that fails.
#include <arpa/inet.h>

#include <ostream>

#include "confd_lib.h"
#include "support/router_mgr_fixture.h"

namespace {

using bgp_platform::capi::Function;
using bgp_test::RouterMgrTest;
using bgp_test::show_faults_and_writes;

using Setter = int (BgpRouterMgr::*)(int, int, uint32_t, confd_value*);

confd_value_t address(const char* text)
{
    in_addr number{};
    inet_pton(AF_INET, text, &number);
    confd_value_t value;
    CONFD_SET_IPV4(&value, number);
    return value;
}

confd_value_t enumeration(int32_t number)
{
    confd_value_t value;
    CONFD_SET_ENUM_VALUE(&value, number);
    return value;
}

confd_value_t preference(uint32_t number)
{
    confd_value_t value;
    CONFD_SET_UINT32(&value, number);
    return value;
}

struct SetterCase {
    const char* name;
    Setter setter;
    confd_value_t value;
    const char* leaf;
    const char* text;  // of the leaf then
    int fault_line;
};

void PrintTo(const SetterCase& setter, std::ostream* out)
{
    *out << setter.name;
}

const SetterCase kSetters[] = {
    {"SetRouterId", &BgpRouterMgr::SetRouterId, address("192.0.2.1"), "bgpRmEntLocalIdentifier", "c0:00:02:01", 60},
    {"SetAdminStatus", &BgpRouterMgr::SetAdminStatus, enumeration(2), "bgpRmEntAdminStatus", "down", 76},
    {"SetAsSize", &BgpRouterMgr::SetAsSize, enumeration(1), "bgpRmEntAsSize", "twoOctet", 87},
    {"SetClusterId", &BgpRouterMgr::SetClusterId, address("10.255.0.128"), "bgpRmEntClusterId", "0a:ff:00:80", 101},
    {"SetDefLocPref", &BgpRouterMgr::SetDefLocPref, preference(4294967295), "bgpRmEntDefLocalPref", "4294967295", 114},
};

class AttributeSetter : public RouterMgrTest, public testing::WithParamInterface<SetterCase> {
protected:
    void given() { stored(bgp_test::bgp_entity("<bgpRmEntIndex>6</bgpRmEntIndex>")); }

    int set(uint32_t index, confd_value_t value)
    {
        const bgp_platform::UpgradeHandles upgrade = open();
        BgpRouterMgr self = manager();
        return (self.*GetParam().setter)(upgrade.maapi_socket, upgrade.thandle, index, &value);
    }

    std::string leaf() const { return std::string("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}/") + GetParam().leaf; }

    bool setsRouterId() const { return GetParam().fault_line == 60; }
};

using AttributeSetterDeath = AttributeSetter;

std::string name_of(const testing::TestParamInfo<SetterCase>& info)
{
    return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(All, AttributeSetter, testing::ValuesIn(kSetters), name_of);
INSTANTIATE_TEST_SUITE_P(All, AttributeSetterDeath, testing::ValuesIn(kSetters), name_of);

TEST_P(AttributeSetter, ExistingInstance_GetsTheAttribute)
{
    given();
    EXPECT_EQ(set(6, GetParam().value), 0);
    std::vector<std::string> changes = {"set " + leaf() + " " + GetParam().text};
    if (setsRouterId()) {
        changes.emplace_back("set /internal/router-id-default-hidden false");
    }
    expectChanges(changes);
    expectLog({});
    expectNothingLeftOpen();
}

TEST_P(AttributeSetter, MissingInstance_IsLeftAlone)
{
    given();
    open();
    device().recorder().start();
    EXPECT_EQ(set(7, GetParam().value), 0);
    expectCalls({"maapi_exists /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{7} -> 0"});
    expectChanges({});
    expectNothingLeftOpen();
}

TEST_P(AttributeSetter, ExistenceThatCannotBeAsked_CountsAsMissing)
{
    given();
    faults().fail(Function::maapi_exists);
    EXPECT_EQ(set(6, GetParam().value), 0);
    expectChanges({});
}

TEST_P(AttributeSetterDeath, FailedWrite_EndsTheProcess)
{
    given();
    open();
    show_faults_and_writes(device());
    faults().fail(Function::maapi_set_elem, leaf());
    EXPECT_EXIT(set(6, GetParam().value), testing::ExitedWithCode(1),
                "^fault 1 " + std::string(GetParam().name) +
                    " src/daemon/bgp_router_mgr:" + std::to_string(GetParam().fault_line) + " <error\\[18\\]: " +
                    bgp_test::planned("maapi_set_elem", std::string("/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry\\{6\\}/") +
                                                            GetParam().leaf) +
                    " \n> backtraces 1, writes 1\nwrites 1 at exit\n$");
}

TEST_P(AttributeSetterDeath, ValueOfAnotherType_EndsTheProcess)
{
    given();
    open();
    show_faults_and_writes(device());
    confd_value_t text;
    CONFD_SET_STR(&text, "no such value");
    EXPECT_EXIT(set(6, text), testing::ExitedWithCode(1),
                "^fault 1 " + std::string(GetParam().name) + " src/daemon/bgp_router_mgr:" +
                    std::to_string(GetParam().fault_line) + " <error\\[5\\]: .* \n> backtraces 1, writes 1\n");
}

class SetRouterId : public RouterMgrTest {};
using SetRouterIdDeath = SetRouterId;

TEST_F(SetRouterId, DerivedRouterId_IsNoDefaultAnyMore)
{
    stored(bgp_test::bgp_entity("<bgpRmEntIndex>6</bgpRmEntIndex>"
                                "<bgpRmEntLocalIdentifier>0a:00:00:01</bgpRmEntLocalIdentifier>") +
           "<internal xmlns=\"urn:bgp-update:yang:metacli-internal\"><router-id-default-hidden>true"
           "</router-id-default-hidden></internal>");
    const bgp_platform::UpgradeHandles upgrade = open();
    device().recorder().start();
    confd_value_t value = address("192.0.2.1");
    EXPECT_EQ(manager().SetRouterId(upgrade.maapi_socket, upgrade.thandle, 6, &value), 0);
    expectChanges({"set /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}/bgpRmEntLocalIdentifier c0:00:02:01",
                   "set /internal/router-id-default-hidden false"});
    expectCalls({"maapi_exists /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6} -> 1",
                 "maapi_set_elem /DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry{6}/bgpRmEntLocalIdentifier c0:00:02:01 -> 0",
                 "maapi_set_elem /internal/router-id-default-hidden false -> 0"});
}

TEST_F(SetRouterIdDeath, FlagThatCannotBeSet_EndsTheProcessAtItsOwnLine)
{
    stored(bgp_test::bgp_entity("<bgpRmEntIndex>6</bgpRmEntIndex>"));
    const bgp_platform::UpgradeHandles upgrade = open();
    show_faults_and_writes(device());
    faults().fail(Function::maapi_set_elem, "/internal/router-id-default-hidden");
    confd_value_t value = address("192.0.2.1");
    EXPECT_EXIT(manager().SetRouterId(upgrade.maapi_socket, upgrade.thandle, 6, &value), testing::ExitedWithCode(1),
                "^fault 1 SetRouterId src/daemon/bgp_router_mgr:62 <error\\[18\\]: maapi_set_elem: .* \n> "
                "backtraces 1, writes 2\nwrites 2 at exit\n$");
}

}  // namespace

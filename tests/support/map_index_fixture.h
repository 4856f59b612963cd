// The two allocators of numbers by VRF and name, for route maps and for route policies, side by side: what each is
// called, where it keeps its numbers and what it says. A test of both is written once, over an Allocator.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "confd/value.h"
#include "support/daemon_fixture.h"

namespace bgp_test {

struct Allocator {
    const char* get_name;
    const char* create_name;
    const char* delete_name;
    int (*get)(int, int, char*, char*, confd_value*);
    uint32_t (*create)(int, int, char*, char*);
    int (*remove)(int, int, char*, char*);
    const char* element;  // of XML, below vrf-config
    const char* leaf;
    const char* path;     // of the VRF "red", as the operations name it
    const char* changed;  // the same, as changes name it
    const char* enter;
    const char* not_found;
    const char* already_set;
    const char* from_free_list;
    const char* from_counter;
    const char* returning;
    const char* not_set;
    const char* vrf_created;
};

inline const Allocator kRouteMaps = {
    "GetRouteMapIdx",
    "CreateRouteMapIdx",
    "DeleteRouteMapIdx",
    BgpUtils::GetRouteMapIdx,
    BgpUtils::CreateRouteMapIdx,
    BgpUtils::DeleteRouteMapIdx,
    "route-map",
    "map-idx",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-map/metacli-internal:vrf{red}",
    "/internal/vrf-config/route-map/vrf{red}",
    ">>> Enter - VRF :'red', map: 'in' sock=",
    "No idx recovered - Map does not exists",
    "Route map already set: route-map{red in}=",
    "Get VRF RouteMap index from free-index, list size:",
    "Get VRF RouteMap index from next-index",
    "<<< Returning VRF:'red' RouteMap:'in' index:",
    "Route map is not set: route-map{red in}=0",
    "Creating /metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-map/"
    "metacli-internal:vrf{red} ret:",
};

inline const Allocator kRoutePolicies = {
    "GetRoutePolicyIdx",
    "CreateRoutePolicyIdx",
    "DeleteRoutePolicyIdx",
    BgpUtils::GetRoutePolicyIdx,
    BgpUtils::CreateRoutePolicyIdx,
    BgpUtils::DeleteRoutePolicyIdx,
    "route-policy",
    "pol-idx",
    "/metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-policy/metacli-internal:vrf{red}",
    "/internal/vrf-config/route-policy/vrf{red}",
    ">>> Enter - VRF :'red', pol: 'in' sock=",
    "No idx recovered - Policy does not exists",
    "Policy map already set: route-policy{red in}=",
    "Get VRF RoutePolicy index from free-index, list size:",
    "Get VRF RoutePolicy index from next-index",
    "<<< Returning VRF:'red' RoutePolicy:'in' index:",
    "Route policy is not set: route-policy{red in}=0",
    "Creating /metacli-internal:internal/metacli-internal:vrf-config/metacli-internal:route-policy/"
    "metacli-internal:vrf{red} ret:",
};

class MapIndexTest : public DaemonTest, public testing::WithParamInterface<const Allocator*> {
protected:
    const Allocator& allocator() { return *GetParam(); }

    int get(const char* name, confd_value* out)
    {
        return allocator().get(maapi(), thandle(), Name("red"), Name(name), out);
    }
    uint32_t create(const char* name) { return allocator().create(maapi(), thandle(), Name("red"), Name(name)); }
    int remove(const char* name) { return allocator().remove(maapi(), thandle(), Name("red"), Name(name)); }

    // Stores the VRF "red" with released numbers, its counter and the numbers of names; an empty number is none.
    void storeVrf(const std::vector<int>& released, const std::string& next,
                  const std::map<std::string, std::string>& numbers)
    {
        std::string xml = "<vrf><name>red</name>";
        for (const int number : released) {
            xml += "<free-index>" + std::to_string(number) + "</free-index>";
        }
        xml += "<next-index>" + next + "</next-index>";
        for (const auto& [name, number] : numbers) {
            xml += "<stringTOindex><name>" + name + "</name>";
            xml += number.empty() ? "" : element(allocator().leaf, number);
            xml += "</stringTOindex>";
        }
        stored("<internal xmlns=\"urn:bgp-update:yang:metacli-internal\"><vrf-config>" +
               element(allocator().element, xml + "</vrf>") + "</vrf-config></internal>");
    }
    static std::string element(const std::string& name, const std::string& content)
    {
        return "<" + name + ">" + content + "</" + name + ">";
    }

    // Paths of the VRF's nodes, as the operations name them.
    std::string vrf() { return allocator().path; }
    std::string freeIndex() { return vrf() + "/free-index"; }
    std::string nextIndex() { return vrf() + "/next-index"; }
    std::string entry(const std::string& name) { return vrf() + "/stringTOindex{" + name + "}"; }
    std::string number(const std::string& name) { return entry(name) + "/" + allocator().leaf; }

    // A change as change lines name it, with its verb and its value.
    std::string changed(const std::string& verb, const std::string& node, const std::string& value = {})
    {
        return verb + " " + allocator().changed + node + (value.empty() ? "" : " " + value);
    }

    void deleteInTransaction(const std::string& path)
    {
        ASSERT_EQ(maapi_delete(maapi(), thandle(), "%s", path.c_str()), CONFD_OK);
    }
    uint32_t counter()
    {
        uint32_t next = 0;
        EXPECT_EQ(maapi_get_u_int32_elem(maapi(), thandle(), &next, "%s", nextIndex().c_str()), CONFD_OK);
        return next;
    }

    // Trace lines of the three operations, from "11 text" each.
    std::string of(const char* operation, const std::string& line) { return std::string(operation) + " " + line; }
    std::string getLine(const std::string& line) { return of(allocator().get_name, line); }
    std::string createLine(const std::string& line) { return of(allocator().create_name, line); }
    std::string deleteLine(const std::string& line) { return of(allocator().delete_name, line); }
    std::string entered()
    {
        return "11 " + std::string(allocator().enter) + std::to_string(maapi()) +
               " thandle=" + std::to_string(thandle());
    }
};

inline std::string allocator_name(const testing::TestParamInfo<const Allocator*>& info)
{
    return info.param == &kRouteMaps ? "RouteMap" : "RoutePolicy";
}

}  // namespace bgp_test

// An upgrade by the real library that is judged, as the command judges it.
//
//     JudgedUpgrade upgrade(configuration);
//     upgrade.run();
//     upgrade.by_hand([](const UpgradeHandles& handles) { ... });  // more than the library does
//     const Judgement judgement = upgrade.judged();
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "device.h"
#include "judge/judgement.h"

namespace bgp_test {

inline constexpr char kRouteMaps[] = "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry";

class JudgedUpgrade {
public:
    explicit JudgedUpgrade(const std::string& configuration);

    bgp_platform::Device& device() { return device_; }
    bgp_rehearse::Assumptions& assumptions()
    {
        return assumptions_;
    }  // given, both of them, unless a test says otherwise

    void run();  // update(), which is expected to return 0
    void by_hand(const std::function<void(const bgp_platform::UpgradeHandles&)>& calls);

    int result = 0;                            // that update() is said to have returned
    std::optional<std::string> invalid;        // what --commit-check is said to have found
    std::optional<bgp_rehearse::Again> again;  // and a second upgrade

    // May be asked again after more calls.
    bgp_rehearse::Judgement judged();

private:
    bgp_platform::UpgradeHandles open();

    bgp_platform::Device device_;
    std::optional<bgp_platform::UpgradeHandles> handles_;
    bgp_rehearse::UpgradeSteps steps_;
    bgp_rehearse::FailedCalls failed_calls_;
    std::vector<bgp_rehearse::Step> all_steps_;
    bgp_rehearse::Assumptions assumptions_;
};

// The findings of an id.
std::vector<bgp_rehearse::Finding> findings_of(const bgp_rehearse::Judgement& judgement, bgp_rehearse::FindingId id);

// "2 route map rows stay under index 5 [map 1, map 2]": the sentence with its places, which are all it counts.
std::string with_places(const bgp_rehearse::Finding& finding);

// "review row-left: 2 route map rows stay under index 5: their places were taken", a line for each finding from that
// severity on.
std::string findings_text(const bgp_rehearse::Judgement& judgement,
                          bgp_rehearse::Severity from = bgp_rehearse::Severity::Note);

// The rows that became other than they were, a line for each: "moved /a/b{5} -> /a/b{1}", "new /a/b{3}".
std::vector<std::string> fates(bgp_platform::Device& device);

}  // namespace bgp_test

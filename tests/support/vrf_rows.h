// What the VRF steps read and write, as stored rows and as lines of changes.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "support/router_mgr_fixture.h"
#include "support/text_lines.h"

namespace bgp_test {

// The bookkeeping of a VRF: its index, and RTM indexes made of it.
inline std::string vrf_numbers(const std::string& name, int index)
{
    const std::string text = std::to_string(index);
    return internal("<vrf-config><stringTOindex><name>" + name + "</name><vrf-idx>" + text + "</vrf-idx><rtmIndex>" +
                    text + "0</rtmIndex><rtmIndexV6>" + text + "6</rtmIndexV6></stringTOindex></vrf-config>");
}

inline std::string vrf_index_path(const std::string& name)
{
    return "/metacli-internal:internal/metacli-internal:vrf-config/stringTOindex{" + name + "}/vrf-idx";
}

// The rule that redistributes the routes of a VRF into BGP.
constexpr char kVrfRuleRow[] = R"(/DC-RTM-MIB/rtmRedistTable/rtmRedistEntry{MANAGER 33554432}
 rtmRedistInfoDest bgp
 rtmRedistAddrFilterType FAMILY
 rtmRedistInfoSrc bgp
 rtmRedistRedistFlag redistribute
 rtmRedistAdminStat up
)";

// Rows as text (an entry, and below it what is set of it) as lines of changes, with the words given replaced; no value
// holds a word.
inline Lines created(const std::string& text, const std::vector<std::pair<std::string, std::string>>& words)
{
    Lines lines;
    std::string entry;
    for (std::string line : bgp_test::lines_of(text)) {
        for (const auto& [word, value] : words) {
            for (std::size_t at = line.find(word); at != std::string::npos; at = line.find(word)) {
                line.replace(at, word.size(), value);
            }
        }
        if (line[0] == '/') {
            entry = line;
        }
        lines.push_back(line[0] == '/' ? "create " + line : "set " + entry + "/" + line.substr(1));
    }
    return lines;
}

inline Lines redistribution_rule(const std::string& rtm_index, const std::string& family)
{
    return created(kVrfRuleRow, {{"MANAGER", rtm_index}, {"FAMILY", family}});
}

// A failed assertion of the VRF steps at this line, in the function of this signature.
inline testing::Matcher<const std::string&> vrf_step_asserts(int line, const std::string& signature,
                                                             const std::string& expression)
{
    return testing::HasSubstr("src/config_update/bgp_update_vrf:" + std::to_string(line) + ": " + signature +
                              ": Assertion `" + expression + "' failed.");
}

}  // namespace bgp_test

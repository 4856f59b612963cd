// Rows of the prefix-list step's tables as XML, and the step as a story: old rules and names in, lists with sequences and
// the maps out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "bgp_update/prefix_list.h"
#include "support/stored_rows.h"
#include "support/update_fixture.h"

namespace bgp_test::prefix_list {

using bgp_test::leaf;

inline constexpr uint32_t kRmIndex = 5;
inline constexpr char kRules[] = "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry";
inline constexpr char kNextFree[] = "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry_next_free_index";
inline constexpr char kNameNext[] = "/prefix-list-internal/name-next-index";

// A row with the leaves that the step reads; bounds that are not given are left to their default.
inline std::string rule(int list, uint32_t number, const std::string& more)
{
    return leaf("aallPreAccessListEntry", leaf("aallPreAccessListListIndex", std::to_string(list)) +
                                              leaf("aallPreAccessListRuleIndex", std::to_string(number)) + more);
}

inline std::string prefix(const std::string& octets, int length)
{
    return leaf("aallPreAccessListAddrPrefix", octets) + leaf("aallPreAccessListAddrPrefLen", std::to_string(length));
}

inline std::string action(const std::string& action)
{
    return leaf("aallPreAccessListIncluded", action);
}

inline std::string bounds(const std::string& ge, const std::string& le)
{
    return leaf("aallPreAccessListAddrPrefGe", ge) + leaf("aallPreAccessListAddrPrefLe", le);
}

// 10.<list>.0.0/16, permitted; the list's number has one digit.
inline std::string plain_rule(int list, uint32_t number)
{
    return rule(list, number, prefix("0a:0" + std::to_string(list) + ":00:00", 16) + action("permit"));
}

inline std::string rules(const std::string& rows)
{
    return R"(<DC-AALL-MIB xmlns="http://tail-f.com/ns/mibs/DC-AALL-MIB"><aallPreAccessListTable>)" + rows +
           "</aallPreAccessListTable></DC-AALL-MIB>";
}

inline std::string name(uint32_t entity, int list, const std::string& name)
{
    return leaf("aallPreAccessListEntry-get",
                leaf("entity", std::to_string(entity)) + leaf("list", std::to_string(list)) + leaf("name", name));
}

inline std::string hidden(const std::string& next_free, const std::string& names)
{
    return internal(
        leaf("aallPreAccessListEntry-hidden",
             names + (next_free.empty() ? std::string() : leaf("aallPreAccessListEntry_next_free_index", next_free))));
}

inline std::string list_there(const std::string& name, const std::string& sequences)
{
    return R"(<prefix-list xmlns="urn:bgp-update:yang:prefix-list">)" + leaf("name", name) + sequences +
           "</prefix-list>";
}

inline std::string name_path(uint32_t entity, int list)
{
    return "/internal/aallPreAccessListEntry-hidden/aallPreAccessListEntry-get{" + std::to_string(entity) + " " +
           std::to_string(list) + "}/name";
}

inline std::string no_name(int list, const std::string& error)
{
    return "Could not get name for prefix list (rm_index: 5, pfx_index: " + std::to_string(list) + "), err: " + error;
}

inline std::string not_set(uint32_t sequence, const std::string& path)
{
    return "Could not set address for prefix list (pfx_name: customers, pfx_index: " + std::to_string(sequence) +
           "), err: " + planned("maapi_set_elem", path);
}

class PrefixList : public UpdateTest {
protected:
    void TearDown() override { expectNothingLeftOpen(); }

    // One list, "customers", number 7, with one rule, number 5.
    void storeOneRule(const std::string& more)
    {
        stored(rules(rule(7, 5, more)));
        stored(hidden("8", name(kRmIndex, 7, "customers")));
    }

    // The log of a step with one batch, around the lines of its rows.
    void expectLogOfOneBatch(int rows, const std::vector<std::string>& lines)
    {
        const std::string count = std::to_string(rows);
        std::vector<std::string> all = {"Update Prefix List\n", "It will set name-next-index as 8",
                                        "Number of entries is " + count, "Trying to get next " + count + " entries\n"};
        all.insert(all.end(), lines.begin(), lines.end());
        all.push_back("Finishing Prefix List update\n");
        expectLog(all);
    }
};

}  // namespace bgp_test::prefix_list

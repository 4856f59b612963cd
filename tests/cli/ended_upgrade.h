// What the tests of upgrades that do not return share.
#pragma once

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "cli/fake_library.h"
#include "support/sanitized.h"

namespace bgp_test {

// Reads and writes one row each, and then ends in some way, within update_vrf.
inline constexpr char kWorking[] = R"(
    confd_value_t value;
    log("Starting BGP update\n");
    cdb_get(cdb, &value, "/router/bgp{%u}/router-id", 65010u);
    log("Update BGP VRF\n");
    cdb_get(cdb, &value, "/prefix-list[%d]/seq{%u}/address", 0, 10u);
    maapi_set_elem2(maapi, th, "fourOctet", "/router/bgp{%u}/as-size", 65010u);
    maapi_set_elem2(maapi, th, "fourOctet", "/router/bgp{%u}/as-size", 65099u);
    log("the last line");
)";

class EndedUpgradeTest : public RehearseTest {
protected:
    // Runs an update with that body, asking for an output over an old one, which must stay as it was.
    CommandResult run_body(const std::string& body, std::vector<std::string> more = {})
    {
        const std::string output = folder.file("out.xml", "the old content");
        std::vector<std::string> arguments = {"run", config, "--library", fake_library(folder, body), "-o", output};
        arguments.insert(arguments.end(), more.begin(), more.end());
        CommandResult result = rehearse(arguments);
        EXPECT_EQ(content_of(output), "the old content");
        EXPECT_THAT(folder.names(), testing::Not(testing::Contains(testing::StartsWith(".bgp-rehearse"))));
        return result;
    }

    nlohmann::json ended(const std::string& body, std::vector<std::string> more = {})
    {
        more.emplace_back("--json");
        const CommandResult result = run_body(body, std::move(more));
        EXPECT_EQ(result.status, 1) << result.err;
        const nlohmann::json document = nlohmann::json::parse(result.out);
        EXPECT_EQ(document["returned"], nullptr);
        EXPECT_EQ(document["changes"], nlohmann::json::array());
        return document["ended"];
    }
};

}  // namespace bgp_test

// bgp-rehearse generate: what it draws loads, is valid, has as many rows as asked, and is the same for the same seed.
#include <gmock/gmock.h>

#include <sys/stat.h>

#include "device.h"
#include "generate/configuration.h"
#include "store/list.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"
#include "support/table_rows.h"

namespace bgp_test {
namespace {

using bgp_generator::Settings;
using bgp_platform::Datastore;
using bgp_platform::Device;
using testing::HasSubstr;

std::size_t count(const Device& device, const std::string& path)
{
    return rows_of(device, Datastore::Stored, path).size();
}

std::size_t count_vrfs(const Device& device)
{
    const auto& bgp = node_of(device, "/router/bgp");
    const auto& root = device.configuration(Datastore::Stored).root();
    std::size_t vrfs = 0;
    root.list(bgp.slot).for_each([&](const auto& router) { vrfs += router.list(bgp.child("vrf")->slot).size(); });
    return vrfs;
}

class Generate : public testing::Test {
protected:
    static std::string generated(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "generate");
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.status, 0) << result.err;
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    // The command line is refused: status 2, a message that holds the text, and nothing written.
    void expect_refused(std::vector<std::string> arguments, const std::string& text) const
    {
        arguments.insert(arguments.begin(), "generate");
        const CommandResult result = rehearse(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, HasSubstr(text));
        EXPECT_EQ(folder.names(), std::vector<std::string>());
    }

    ScratchFolder folder;
};

TEST_F(Generate, SameSeed_GivesTheSameBytes)
{
    const std::vector<std::string> arguments = {"--neighbors", "20",           "--vrfs", "3",      "--prefix-rules",
                                                "9",           "--route-maps", "5",      "--seed", "4"};
    EXPECT_EQ(generated(arguments), generated(arguments));
}

// By which measurements of another day can be repeated. FNV-1a of the text.
TEST_F(Generate, BytesOfASeed_StayFromReleaseToRelease)
{
    uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : bgp_generator::configuration_text({40, 7, 33, 21, 2, 7})) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
    }
    EXPECT_EQ(hash, 0x2d2acbc3ec903276U);
}

TEST_F(Generate, OtherSeed_GivesOtherBytes)
{
    EXPECT_NE(generated({"--neighbors", "20", "--seed", "4"}), generated({"--neighbors", "20", "--seed", "5"}));
}

TEST_F(Generate, NoOptions_IsOneEntityOfSeedZero)
{
    EXPECT_EQ(generated({}), bgp_generator::configuration_text(Settings{}));
}

TEST_F(Generate, Output_HoldsWhatStandardOutputWould)
{
    const std::string output = folder / "drawn.xml";
    EXPECT_EQ(generated({"--neighbors", "300", "-o", output}), "");
    EXPECT_EQ(content_of(output), generated({"--neighbors", "300", "-o", "-"}));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"drawn.xml"});
}

TEST_F(Generate, Counts_AreAsAsked)
{
    Device device;
    device.load_text(generated({"--neighbors", "100", "--vrfs", "12", "--prefix-rules", "61", "--route-maps", "44",
                                "--entities", "2", "--seed", "8"}));
    EXPECT_EQ(count(device, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry"), 100U);
    EXPECT_EQ(count(device, "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry"), 61U);
    EXPECT_EQ(count(device, "/DC-BGP-MIB/bgpRouteMapTable/bgpRouteMapEntry"), 44U);
    EXPECT_EQ(count(device, "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry"), 2U);
    EXPECT_EQ(count_vrfs(device), 12U);
}

TEST_F(Generate, EachNeighbor_HasAboutFourteenLeaves)
{
    Device device;
    device.load_text(bgp_generator::configuration_text({500, 0, 0, 0, 1, 1}));
    std::size_t leaves = 0;
    for (const RowText& peer : rows_of(device, Datastore::Stored, "/DC-BGP-MIB/bgpPeerTable/bgpPeerEntry")) {
        leaves += peer.key.size() + peer.leaves.size();
    }
    EXPECT_GT(leaves, 500U * 13);
    EXPECT_LT(leaves, 500U * 15);
}

// Every seed and number of entities, with what the schema's own validation says.
TEST_F(Generate, EveryConfiguration_IsValid)
{
    for (uint64_t seed = 0; seed < 60; ++seed) {
        Device device;
        device.load_text(bgp_generator::configuration_text(
            {static_cast<uint32_t>(seed % 30), static_cast<uint32_t>(seed % 5), 20, 20,
             static_cast<uint32_t>(seed % (bgp_generator::kMostEntities + 1)), seed}));
        EXPECT_EQ(device.validate(Datastore::Stored), "") << "seed " << seed;
    }
}

TEST_F(Generate, Library_RefusesMoreThanItCanNumber)
{
    Settings settings;
    settings.vrfs = bgp_generator::kMostVrfs + 1;
    EXPECT_THROW(bgp_generator::configuration_text(settings), std::invalid_argument);
}

TEST_F(Generate, SinkThatTakesNoMore_EndsTheDrawing)
{
    Settings settings;
    settings.neighbors = bgp_generator::kMostNeighbors;
    std::size_t pieces = 0;
    EXPECT_FALSE(bgp_generator::write_configuration(settings, [&pieces](std::string_view) { return ++pieces < 3; }));
    EXPECT_EQ(pieces, 3U);
}

TEST_F(Generate, BadNumbers_AreRefusedByName)
{
    expect_refused({"--neighbors", "many"}, "--neighbors");
    expect_refused({"--neighbors", "-1"}, "--neighbors");
    expect_refused({"--vrfs", "65535"}, "--vrfs");
    expect_refused({"--entities", "4"}, "--entities");
    expect_refused({"--seed", "x"}, "--seed");
}

TEST_F(Generate, UnknownOptionAndArgument_AreRefused)
{
    expect_refused({"--peers", "3"}, "--peers");
    expect_refused({"drawn.xml"}, "drawn.xml");
}

TEST_F(Generate, OutputThatCannotBe_IsRefused)
{
    expect_refused({"-o", ""}, "--output");
    expect_refused({"-o", folder / "missing/drawn.xml"}, "missing");
    expect_refused({"-o", folder.path()}, "folder");
}

TEST_F(Generate, FullDisk_IsReported)
{
    const CommandResult result = run_command({"/bin/sh", "-c", BGP_REHEARSE " generate --neighbors 500 >/dev/full"});
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.err, HasSubstr("standard output could not be written"));
}

TEST_F(Generate, Interrupted_LeavesNoFile)
{
    RunningCommand command({BGP_REHEARSE, "generate", "--neighbors", "90000000", "-o", folder / "drawn.xml"});
    // The temporary file grows: the command is at work.
    const auto at_work = [this] {
        for (const std::string& name : folder.names()) {
            struct stat status {};
            if (stat((folder / name).c_str(), &status) == 0 && status.st_size > 0) {
                return true;
            }
        }
        return false;
    };
    while (!at_work()) {
    }
    command.send(SIGTERM);
    EXPECT_EQ(command.wait().signal, SIGTERM);
    EXPECT_EQ(folder.names(), std::vector<std::string>());
}

TEST_F(Generate, Help_NamesEveryOption)
{
    const CommandResult result = rehearse({"generate", "--help"});
    EXPECT_EQ(result.status, 0);
    for (const char* option : {"--neighbors N", "--vrfs N", "--prefix-rules N", "--route-maps N", "--entities N",
                               "--seed N", "-o,--output FILE"}) {
        EXPECT_THAT(result.out, HasSubstr(option));
    }
}

}  // namespace
}  // namespace bgp_test

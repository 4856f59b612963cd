// Files of facts about devices: what they say, what is wrong with them, and which device a configuration is of.
#include "run/facts.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>

#include "base/exit_status.h"
#include "cli/fake_library.h"

namespace bgp_test {
namespace {

using bgp_rehearse::device_of;
using bgp_rehearse::DeviceFacts;
using bgp_rehearse::FactsByDevice;
using bgp_rehearse::read_facts;
using testing::HasSubstr;

// "192.0.2.1,127.0.0.1 7", "-" for what is not known.
std::string text_of(const DeviceFacts& facts)
{
    std::string text;
    for (const in_addr& address : facts.interfaces.value_or(std::vector<in_addr>())) {
        text += (text.empty() ? "" : ",") + std::string(inet_ntoa(address));
    }
    return (text.empty() ? "-" : text) + " " + (facts.user_profile ? std::to_string(*facts.user_profile) : "-");
}

class FactsOfDevices : public RehearseTest {
protected:
    FactsByDevice read(const std::string& text) const { return read_facts(folder.file("facts", text)); }

    // What is wrong with a file of that text, behind its name.
    std::string wrong(const std::string& text) const
    {
        try {
            read(text);
        } catch (const bgp_rehearse::CommandError& error) {
            EXPECT_EQ(error.status(), bgp_rehearse::ExitStatus::BadInput);
            const std::string what = error.what();
            return what.substr(what.find("/facts") + 6);
        }
        return "nothing";
    }
};

TEST_F(FactsOfDevices, Csv_HasALineForEachDevice)
{
    const FactsByDevice all =
        read("device,interfaces,profile\nedge-1,192.0.2.1 127.0.0.1,7\nedge-2,192.0.2.2;127.0.0.1,8\n");
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(text_of(all.at("edge-1")), "192.0.2.1,127.0.0.1 7");
    EXPECT_EQ(text_of(all.at("edge-2")), "192.0.2.2,127.0.0.1 8");
}

TEST_F(FactsOfDevices, CsvColumns_StandInAnyOrderAndMayBeMissing)
{
    EXPECT_EQ(text_of(read("profile,device\n4294967295,a\n").at("a")), "- 4294967295");
    EXPECT_EQ(text_of(read("device,interfaces,profile\na,,\n").at("a")), "- -");
    EXPECT_EQ(text_of(read("device,interfaces\na, 192.0.2.1 ; 192.0.2.2 \n").at("a")), "192.0.2.1,192.0.2.2 -");
}

TEST_F(FactsOfDevices, CsvAsSpreadsheetsWriteIt_IsRead)
{
    const FactsByDevice all = read(
        "\xEF\xBB\xBF"
        "device,interfaces,profile\r\n\"a, \"\"the\"\"\r\nfirst\",\"192.0.2.1\",\"1\"\r\n\r\nb,192.0.2.2,2");
    EXPECT_EQ(text_of(all.at("a, \"the\"\r\nfirst")), "192.0.2.1 1");
    EXPECT_EQ(text_of(all.at("b")), "192.0.2.2 2");
}

TEST_F(FactsOfDevices, BadCsv_IsToldByItsLine)
{
    EXPECT_EQ(wrong("device,profil\n"), ":1: \"profil\" is none of device, interfaces, profile; did you mean profile?");
    EXPECT_EQ(wrong("interfaces,profile\n"), ":1: no column has the name device");
    EXPECT_EQ(wrong("device,device\n"), ":1: the column device is there twice");
    EXPECT_EQ(wrong("device,profile\na,1\n\nb\n"), ":4: 1 fields, where the first line has 2");
    EXPECT_EQ(wrong("device,profile\na,x\n"), ":2: \"x\" is not a number from 0 to 4294967295");
    EXPECT_EQ(wrong("device,interfaces\n\"a\nb\",192.0.2.1\nc,eth0\n"), ":4: \"eth0\" is not an IPv4 address");
    EXPECT_EQ(wrong("device\na\na\n"), ":3: the device a is there twice");
    EXPECT_EQ(wrong("device,profile\n,1\n"), ":2: a device without a name");
    EXPECT_EQ(wrong("device\n\"a\n"), ":2: a quote is not closed");
    EXPECT_EQ(wrong("device\n\"a\"b\n"), ":2: a quote must stand around a whole field, and twice within one");
    EXPECT_EQ(wrong("device\na\"b\"\n"), ":2: a quote must stand around a whole field, and twice within one");
    EXPECT_EQ(wrong("\n"), ": it has no line");
}

TEST_F(FactsOfDevices, Json_IsAnArrayOrAnObjectByDevice)
{
    for (const char* text :
         {R"([{"device": "a", "interfaces": ["192.0.2.1", "127.0.0.1"], "profile": 7}, {"device": "b"}])",
          R"( {"a": {"interfaces": "192.0.2.1 127.0.0.1", "profile": 7}, "b": {"profile": null}})"}) {
        const FactsByDevice all = read(text);
        ASSERT_EQ(all.size(), 2U);
        EXPECT_EQ(text_of(all.at("a")), "192.0.2.1,127.0.0.1 7");
        EXPECT_EQ(text_of(all.at("b")), "- -");
    }
}

TEST_F(FactsOfDevices, BadJson_IsToldByItsLineOrDevice)
{
    EXPECT_EQ(wrong("[\n{\"device\": }]"), ":2: this is not JSON");
    EXPECT_EQ(wrong("[{\"device\": \"a\"}, {\"device\": \"a\"}]"), ": device \"a\": the device a is there twice");
    EXPECT_EQ(wrong("{\"a\": {\"profile\": -1}}"), ": device \"a\": \"-1\" is not a number from 0 to 4294967295");
    EXPECT_EQ(wrong("{\"a\": {\"interfaces\": [\"eth0\"]}}"), ": device \"a\": \"eth0\" is not an IPv4 address");
    EXPECT_EQ(wrong("{\"a\": {\"interfaces\": [1]}}"), ": device \"a\": its name and its addresses must be texts");
    EXPECT_EQ(wrong("{\"a\": {\"profil\": 1}}"),
              ": device \"a\": \"profil\" is none of device, interfaces, profile; did you mean profile?");
    EXPECT_EQ(wrong("{\"a\": 5}"), ": device \"a\": not an object with interfaces and profile: 5");
    EXPECT_EQ(wrong("[{\"profile\": 1}]"), ": device \"\": a device without a name");
}

TEST_F(FactsOfDevices, FileThatCannotBeRead_IsToldWithTheReason)
{
    EXPECT_THAT(rehearse({"run", config, "--facts", folder / "none"}).err,
                HasSubstr("none: No such file or directory"));
    EXPECT_THAT(rehearse({"run", config, "--facts", folder.path()}).err, HasSubstr("Is a directory"));
    EXPECT_THAT(rehearse({"run", config, "--facts", folder.file("empty", "")}).err, HasSubstr("it is empty"));
}

TEST(DeviceName, OfAConfiguration_IsItsFileWithoutFolderAndEndings)
{
    EXPECT_EQ(device_of("backups/2026/edge-1.xml"), "edge-1");
    EXPECT_EQ(device_of("edge-1.example.net.xml.gz"), "edge-1.example.net");
    EXPECT_EQ(device_of("edge-1"), "edge-1");
    EXPECT_EQ(device_of("/tmp/.xml"), ".xml");
}

// The interfaces and the profile that an upgrade sees.
class FactsOfARun : public FactsOfDevices {
protected:
    const std::string library = fake_library(folder, R"(
        ifaddrs* all = nullptr;
        if (getifaddrs(&all) != 0) return 1;
        for (const ifaddrs* each = all; each != nullptr; each = each->ifa_next) {
            char text[INET_ADDRSTRLEN];
            log("interface %s", inet_ntop(AF_INET, &reinterpret_cast<sockaddr_in*>(each->ifa_addr)->sin_addr, text, sizeof text));
        }
        freeifaddrs(all);
        return 0;)");
    const std::string facts =
        folder.file("facts.csv", "device,interfaces,profile\nsmall,192.0.2.7,7\nother,192.0.2.9,9\n");

    CommandResult run(std::vector<std::string> more) const
    {
        more.insert(more.begin(), {"run", config, "--library", library, "--log", "-", "--facts", facts});
        return rehearse(more);
    }
};

TEST_F(FactsOfARun, DeviceOfTheFilesName_IsRehearsed)
{
    const CommandResult result = run({});
    EXPECT_THAT(result.out, HasSubstr("interface 192.0.2.7\n"));
    EXPECT_EQ(result.err, "");
}

TEST_F(FactsOfARun, NamedDevice_CountsMoreThanTheFilesName)
{
    EXPECT_THAT(run({"--device", "other"}).out, HasSubstr("interface 192.0.2.9\n"));
}

TEST_F(FactsOfARun, OptionsCountMoreThanFacts)
{
    EXPECT_THAT(run({"--interfaces", "192.0.2.50"}).out, HasSubstr("interface 192.0.2.50\n"));
}

TEST_F(FactsOfARun, DeviceThatTheyDoNotHave_IsToldAndAssumed)
{
    const CommandResult result = run({"--device", "third"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("interface 127.0.0.1\n"));
    EXPECT_EQ(result.err,
              "bgp-rehearse: " + facts +
                  " does not have the device third (--device names another): what is not given is assumed\n");
}

TEST(FactsInOptions, WhatTheyTell_IsKnown)
{
    const ScratchFolder folder;
    bgp_rehearse::RunOptions options;
    options.configuration = "edge.xml";
    options.facts = folder.file("facts.csv", "device,profile\nedge,7\n");
    const bgp_rehearse::RunOptions with = bgp_rehearse::with_facts(options);
    EXPECT_TRUE(with.device.user_profile_known);
    EXPECT_EQ(with.device.user_profile, 7U);
    EXPECT_FALSE(with.device.interfaces_known);
}

}  // namespace
}  // namespace bgp_test

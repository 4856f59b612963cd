// The plan's file: the same inputs whatever the shards are, each in one shard; and known when it is not what was written.
#include <algorithm>
#include <numeric>
#include <regex>

#include "fleet/plan/shards.h"
#include "fleet/plan_fixture.h"
#include "support/run_command.h"

#include <rapidcheck/gtest.h>

namespace bgp_test {
namespace {

using bgp_rehearse::CommandError;
using bgp_rehearse::Found;
using bgp_rehearse::FoundInput;
using bgp_rehearse::Plan;
using bgp_rehearse::PlannedInput;
using bgp_rehearse::PlanOptions;
using bgp_rehearse::PlanReader;
using testing::ElementsAre;
using testing::HasSubstr;

class PlanFile : public PlanFixture {
protected:
    // Thirty files of all sizes, one of which cannot be read, and an archive.
    PlanOptions thirty() const
    {
        PlanOptions options;
        std::string list = in_ / "gone.xml";
        for (std::size_t i = 0; i < 30; ++i) {
            list += "\n" + in_.file("r" + std::to_string(i) + ".xml", std::string(i * i, 'x'));
        }
        options.paths = {"@" + in_.file("list", list),
                         in_.file("a.tgz", packed_archive(archive_write_set_format_ustar, archive_write_add_filter_gzip,
                                                          {{"1.xml", "one"}, {"2.xml", "two"}}))};
        return options;
    }

    Plan planned_in(std::size_t shards) const
    {
        PlanOptions options = thirty();
        options.shards = shards;
        return planned(options);
    }

    // What the reader says of a plan with this text, read whole.
    std::string refusal_of_text(const std::string& text) const
    {
        const std::string file = out_.file("changed.plan", text);
        try {
            const PlanReader reader(file);
            for (std::size_t shard = 0; shard < reader.plan().shards.size(); ++shard) {
                reader.shard(shard);
            }
        } catch (const CommandError& error) {
            EXPECT_EQ(error.status(), bgp_rehearse::ExitStatus::BadInput);
            const std::string said = error.what();
            EXPECT_EQ(said.compare(0, file.size() + 1, file + ":"), 0) << said;
            return said.substr(std::min(said.size(), file.size() + 1));
        }
        return "read";
    }
};

TEST_F(PlanFile, AnyNumberOfShards_HasTheSameInputsAndTheSameId)
{
    const std::string id = planned_in(1).id;
    const auto expected = inputs();
    ASSERT_EQ(expected.size(), 33U);
    for (const std::size_t shards : {2U, 7U, 100U}) {
        const Plan plan = planned_in(shards);
        EXPECT_EQ(plan.id, id);
        EXPECT_EQ(plan.shards.size(), shards);
        const auto all = inputs();
        ASSERT_EQ(all.size(), expected.size());
        for (const auto& [name, input] : all) {
            EXPECT_EQ(input.number, expected.at(name).number) << name;
            EXPECT_EQ(input.sha256, expected.at(name).sha256) << name;
        }
    }
}

TEST_F(PlanFile, WhatDecidesAResult_DecidesTheId)
{
    PlanOptions options = thirty();
    const std::string id = planned(options).id;
    const auto id_with = [&](auto change) {
        PlanOptions changed = options;
        change(&changed);
        return planned(changed).id;
    };
    EXPECT_NE(id_with([](PlanOptions* o) { o->options.device.user_profile_known = true; }), id);
    EXPECT_NE(id_with([](PlanOptions* o) { o->options.severities = {{"row-left", "note"}}; }), id);
    EXPECT_NE(id_with([](PlanOptions* o) { o->options.time_limit /= 2; }), id);
    EXPECT_NE(id_with([](PlanOptions* o) { o->options.memory_limit = 1 << 30; }), id);
    EXPECT_NE(id_with([&](PlanOptions* o) { o->facts = in_.file("facts", "device,profile\nr1,7\n"); }), id);
    EXPECT_EQ(id_with([&](PlanOptions* o) { o->facts = in_.file("facts", "device,profile\nother,7\n"); }), id);
    in_.file("r5.xml", "other");
    EXPECT_NE(planned(options).id, id);
}

TEST_F(PlanFile, Numbers_AreThePlacesOfTheNames)
{
    planned_in(7);
    std::size_t number = 0;
    for (const auto& [name, input] : inputs()) {
        EXPECT_EQ(input.number, number++) << name;
    }
}

TEST_F(PlanFile, Facts_GoToTheirDevicesUnlessAnOptionSpeaks)
{
    PlanOptions options;
    options.paths = {in_.file("edge.xml", "e"), in_.file("core.xml.gz", "c"),
                     in_.file("a.tar", packed_archive(archive_write_set_format_ustar, archive_write_add_filter_none,
                                                      {{"provider.xml", "p"}, {"site/rr.xml", "r"}}))};
    options.facts =
        in_.file("facts.csv", "device,interfaces,profile\nedge,192.0.2.1 192.0.2.2,7\ncore,,8\nprovider,192.0.2.3,\n");
    planned(options);
    auto all = inputs();
    EXPECT_EQ(all.at(in_ / "edge.xml").facts.interfaces->size(), 2U);
    EXPECT_EQ(all.at(in_ / "edge.xml").facts.user_profile, 7U);
    EXPECT_FALSE(all.at(in_ / "core.xml.gz").facts.interfaces);
    EXPECT_EQ(all.at(in_ / "core.xml.gz").facts.user_profile, 8U);
    EXPECT_EQ(all.at(in_ / "a.tar!provider.xml").facts.interfaces->size(), 1U);
    EXPECT_FALSE(all.at(in_ / "a.tar!site/rr.xml").facts.interfaces);
    options.options.device.user_profile_known = true;
    planned(options);
    all = inputs();
    EXPECT_EQ(all.at(in_ / "edge.xml").facts.interfaces->size(), 2U);
    EXPECT_FALSE(all.at(in_ / "edge.xml").facts.user_profile);
}

TEST_F(PlanFile, Options_ComeBackAsTheyWere)
{
    PlanOptions options = thirty();
    options.options.device.interfaces = {in_addr{htonl(0xC0000201)}, in_addr{htonl(INADDR_LOOPBACK)}};
    options.options.device.interfaces_known = true;
    options.options.device.user_profile = 9;
    options.options.device.user_profile_known = true;
    options.options.device.max_entries = 1234;
    options.options.severities = {{"row-left", "note"}, {"again", "stop"}};
    options.options.time_limit = std::chrono::milliseconds(1500);
    options.options.memory_limit = 5ULL << 30;
    options.options.max_bytes = 4321;
    const Plan written = planned(options);
    const Plan read = PlanReader(plan_file()).plan();
    EXPECT_EQ(read.id, written.id);
    EXPECT_EQ(read.options.device.interfaces.size(), 2U);
    EXPECT_EQ(read.options.device.interfaces[0].s_addr, htonl(0xC0000201));
    EXPECT_TRUE(read.options.device.interfaces_known && read.options.device.user_profile_known);
    EXPECT_EQ(read.options.device.user_profile, 9U);
    EXPECT_EQ(read.options.device.max_entries, 1234U);
    EXPECT_EQ(read.options.severities, options.options.severities);
    EXPECT_EQ(read.options.time_limit, options.options.time_limit);
    EXPECT_EQ(read.options.memory_limit, options.options.memory_limit);
    EXPECT_EQ(read.options.max_bytes, 4321U);
    EXPECT_EQ(read.library.path, BGP_UPDATE_LIBRARY);
    EXPECT_EQ(read.library.sha256.size(), 64U);
}

TEST_F(PlanFile, CutOffPlan_IsToldWithItsLine)
{
    planned_in(3);
    const std::string text = content_of(plan_file());
    ASSERT_EQ(refusal_of_text(text), "read");
    const std::vector<std::string> lines = lines_of(text);
    EXPECT_THAT(refusal_of_text(text.substr(0, text.size() - 1)), HasSubstr("34: the plan is cut off here"));
    EXPECT_THAT(refusal_of_text(text.substr(0, text.size() - lines.back().size() - 1)),
                HasSubstr("34: the plan is cut"));
    EXPECT_THAT(refusal_of_text(text.substr(0, 100)), HasSubstr("1: this is not JSON; is the plan cut off?"));
    EXPECT_THAT(refusal_of_text(lines.front() + "\n"), HasSubstr("2: the plan is cut off here"));
    EXPECT_THAT(refusal_of_text(""), HasSubstr("it is empty; a plan was to be read"));
}

TEST_F(PlanFile, ChangedPlan_IsToldWithItsLine)
{
    planned_in(3);
    const std::string text = content_of(plan_file());
    const auto with = [&](const std::string& what, const std::string& by) {
        return refusal_of_text(std::regex_replace(text, std::regex(what), by, std::regex_constants::format_first_only));
    };
    EXPECT_THAT(with("\"plan\":1", "\"plan\":2"), HasSubstr("1: this plan was made by another version"));
    EXPECT_THAT(with("\"plan\":1", "\"part\":1"), HasSubstr("1: this is no plan of a fleet"));
    EXPECT_THAT(with("\"inputs\":33", "\"inputs\":32"), HasSubstr("1: its shards do not have all its inputs"));
    EXPECT_THAT(with("\"inputs\":33", "\"inputs\":true"), HasSubstr("1: something is missing, or is of another kind"));
    EXPECT_THAT(with("\n\\{\"n\"", "\n\n{\"n\""), HasSubstr("2: this is not JSON"));
    EXPECT_THAT(with("\"sha256\":\"[0-9a-f]{64}\"\\}\n", "\"sha256\":\"\"}\n"),
                HasSubstr(": an input without its hash"));
    EXPECT_THAT(with("\"bytes\":784,", "\"bytes\":785,"), HasSubstr(": the plan has been changed"));
    EXPECT_THAT(refusal_of_text(text + "{}\n"), HasSubstr("34: the plan has been changed"));
}

TEST_F(PlanFile, Command_TellsWhatIsPlannedAndWhatIsNot)
{
    in_.file("edge.xml", "edge");
    in_.file("notes.txt", "notes");
    const CommandResult result = rehearse({"fleet", "plan", in_.path(), "@" + in_.file("list", in_ / "gone"), "-o",
                                           plan_file(), "--facts", in_.file("facts", "device,profile\nedge,1\n")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "2 inputs, 0.0 MB, in 1 shard: " + plan_file() + "\n");
    EXPECT_EQ(result.err,
              "bgp-rehearse: passed over: another name 3; --all-names takes files of any name\n"
              "bgp-rehearse: 1 of the inputs cannot be read, and will be refused\n"
              "bgp-rehearse: " +
                  in_ / "facts does not have 1 of the devices: what is not given is assumed\n");
}

TEST_F(PlanFile, PlanThatCannotBeWritten_IsToldAndNotThere)
{
    in_.file("edge.xml", "edge");
    const CommandResult folder = rehearse({"fleet", "plan", in_.path(), "-o", out_ / "missing/plan"});
    EXPECT_EQ(folder.status, 2);
    EXPECT_THAT(folder.err, HasSubstr("missing/plan"));
    const CommandResult full = run_command({"sh", "-c", "trap '' XFSZ; ulimit -f 0; exec \"$@\"", "sh", BGP_REHEARSE,
                                            "fleet", "plan", in_.path(), "-o", plan_file()});
    EXPECT_EQ(full.status, 5);
    EXPECT_THAT(full.err, HasSubstr("fleet.plan could not be written: File too large"));
    EXPECT_EQ(out_.names(), std::vector<std::string>());
}

TEST_F(PlanFile, BadOptions_MakeNoPlan)
{
    const std::string edge = in_.file("edge.xml", "edge");
    const auto refusal = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {"fleet", "plan", edge, "-o", plan_file()});
        const CommandResult result = rehearse(options);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(out_.names(), std::vector<std::string>());
        return result.err;
    };
    EXPECT_THAT(refusal({"--severity", "row-lost=bad"}), HasSubstr("\"bad\" is none of note, review, stop"));
    EXPECT_THAT(refusal({"--severity", "nothing=note"}), HasSubstr("no finding has the id \"nothing\""));
    EXPECT_THAT(refusal({"--memory-limit", "12X"}), HasSubstr("\"12X\" is not a size"));
    EXPECT_THAT(refusal({"--max-bytes", "-1"}), HasSubstr("\"-1\" is not a size"));
    EXPECT_THAT(refusal({"--time-limit", "soon"}), HasSubstr("\"soon\" is not a time"));
    EXPECT_THAT(refusal({"--shards", "0"}), HasSubstr("\"0\" is not a number from 1"));
    EXPECT_THAT(refusal({"--library", in_ / "gone.so"}), HasSubstr("gone.so: No such file"));
    EXPECT_THAT(refusal({"--facts", in_ / "gone"}), HasSubstr("gone: No such file"));
}

// Inputs of any sizes, some of them in compressed archives.
Found drawn_inputs()
{
    Found found;
    const auto places = *rc::gen::inRange<uint32_t>(1, 4);
    for (uint32_t i = 0; i < places; ++i) {
        found.places.emplace_back();
        found.places.back().packed = *rc::gen::arbitrary<bool>();
    }
    const auto count = *rc::gen::inRange<std::size_t>(0, 300);
    for (std::size_t i = 0; i < count; ++i) {
        FoundInput input;
        input.name = "r.xml";
        input.place = *rc::gen::inRange<uint32_t>(0, places);
        input.index = i;
        input.bytes = *rc::gen::inRange<uint64_t>(0, 1 << *rc::gen::inRange(1, 24));
        found.inputs.push_back(input);
    }
    return found;
}

RC_GTEST_PROP(BalancedShards, AnyInputs_AreInOneShardEachAndTheShardsAreEven, ())
{
    const Found found = drawn_inputs();
    const auto count = *rc::gen::inRange<std::size_t>(1, 120);
    const auto shards = balanced_shards(found, count);
    RC_ASSERT(shards.size() == count);
    std::vector<std::size_t> times(found.inputs.size());
    std::vector<double> loads;
    double all = 0;
    double longest = 0;
    for (const auto& shard : shards) {
        loads.push_back(0);
        for (const uint32_t input : shard) {
            ++times.at(input);
            const double seconds = seconds_of(found.inputs[input]);
            loads.back() += seconds;
            longest = std::max(longest, seconds);
        }
        all += loads.back();
    }
    RC_ASSERT(std::all_of(times.begin(), times.end(), [](std::size_t each) { return each == 1; }));
    // No shard has more than its share and one piece, which is no longer than a share or one input.
    const double share = all / static_cast<double>(count);
    RC_ASSERT(*std::max_element(loads.begin(), loads.end()) <= share + std::max(share, longest) + 1e-9);
}

RC_GTEST_PROP(BalancedShards, MembersOfACompressedArchive_ComeInItsOrder, ())
{
    const Found found = drawn_inputs();
    for (const auto& shard : balanced_shards(found, *rc::gen::inRange<std::size_t>(1, 20))) {
        std::map<uint32_t, std::size_t> reached;
        for (const uint32_t input : shard) {
            const FoundInput& member = found.inputs[input];
            if (found.places[member.place].packed) {
                RC_ASSERT(member.index >= reached[member.place]);
                reached[member.place] = member.index;
            }
        }
    }
}

}  // namespace
}  // namespace bgp_test

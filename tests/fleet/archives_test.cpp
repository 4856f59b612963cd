// Inputs in archives: read from them and nowhere else, whatever the archive says of names, links and sizes.
#include "fleet/plan_fixture.h"
#include "xml/load_errors.h"

namespace bgp_test {
namespace {

using bgp_rehearse::ArchiveMember;
using bgp_rehearse::PlanOptions;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

class Archives : public PlanFixture {
protected:
    static std::string tar(const std::vector<PackedMember>& members, PackSetting filter = archive_write_add_filter_none)
    {
        return packed_archive(archive_write_set_format_pax_restricted, filter, members);
    }

    static std::vector<PackedMember> two_hundred()
    {
        std::vector<PackedMember> members;
        for (int i = 0; i < 200; ++i) {
            members.push_back({"r" + std::to_string(i) + ".xml", std::string(static_cast<std::size_t>(i) * 97, 'x')});
        }
        return members;
    }
};

TEST_F(Archives, MembersOfAnyKindOfArchive_AreInputs)
{
    const std::vector<PackedMember> members = {{"./edge.xml", "edge"}, {"site/core.xml", "core"}, {"README", "no"}};
    const Texts expected = {{"a!edge.xml", "edge"}, {"a!site/core.xml", "core"}};
    for (const PackSetting filter : {archive_write_add_filter_none, archive_write_add_filter_gzip,
                                     archive_write_add_filter_xz, archive_write_add_filter_zstd}) {
        for (const PackSetting format : {archive_write_set_format_pax, archive_write_set_format_ustar,
                                         archive_write_set_format_gnutar, archive_write_set_format_cpio_newc}) {
            const bgp_rehearse::Plan plan = planned({in_.file("a", packed_archive(format, filter, members))});
            EXPECT_EQ(texts(), expected);
            EXPECT_THAT(plan.passed_over, ElementsAre(Pair("another name", 1)));
        }
    }
    planned({in_.file("a", packed_archive(archive_write_set_format_zip, archive_write_add_filter_none, members))});
    EXPECT_EQ(texts(), expected);
}

TEST_F(Archives, MembersOfAPlainTar_AreReadAlone)
{
    planned({in_.file("a.tar", tar(two_hundred()))});
    for (const auto& [name, input] : inputs()) {
        EXPECT_TRUE(std::get<ArchiveMember>(input.source).offset) << name;
        bgp_rehearse::InputReader alone(input.bytes);
        EXPECT_EQ(text_of(input, &alone), std::string(input.bytes, 'x')) << name;
    }
}

TEST_F(Archives, MembersOfACompressedTar_AreReadInEveryOrder)
{
    planned({in_.file("a.tar.gz", tar(two_hundred(), archive_write_add_filter_gzip))});
    bgp_rehearse::InputReader reader(1 << 20);
    const auto all = inputs();
    for (const char* const name : {"r7.xml", "r199.xml", "r0.xml", "r1.xml", "r1.xml"}) {
        const bgp_rehearse::PlannedInput& input = all.at(in_ / "a.tar.gz!" + name);
        EXPECT_FALSE(std::get<ArchiveMember>(input.source).offset);
        EXPECT_EQ(text_of(input, &reader), std::string(input.bytes, 'x')) << name;
    }
}

TEST_F(Archives, MembersOfACompressedTar_StayInTheArchivesOrder)
{
    PlanOptions options;
    options.paths = {in_.file("a.tar.gz", tar(two_hundred(), archive_write_add_filter_gzip))};
    options.shards = 7;
    planned(options);
    const bgp_rehearse::PlanReader reader(plan_file());
    std::size_t pieces = 0;
    for (std::size_t shard = 0; shard < 7; ++shard) {
        std::size_t before = 0;
        for (const bgp_rehearse::PlannedInput& input : reader.shard(shard)) {
            const std::size_t index = std::get<ArchiveMember>(input.source).index;
            pieces += before == 0 || index != before + 1 ? 1 : 0;
            EXPECT_GE(index + 1, before);
            before = index;
        }
    }
    EXPECT_LE(pieces, 2 * 7U);
}

TEST_F(Archives, NamesThatLeadElsewhere_AreOnlyNames)
{
    const ScratchFolder elsewhere;
    const std::string outside = elsewhere / "outside.xml";
    planned({in_.file("a.tar", tar({{outside, "absolute"},
                                    {"../up.xml", "up"},
                                    {"a/../../up.xml", "further up"},
                                    {"new\nline\"\xff.xml", "bytes"},
                                    {std::string(255, 'n') + ".xml", "long"}}))});
    EXPECT_EQ(texts(), (Texts{{"a.tar!" + outside, "absolute"},
                              {"a.tar!../up.xml", "up"},
                              {"a.tar!a/../../up.xml", "further up"},
                              {"a.tar!new\\x0aline\"\\xff.xml", "bytes"},
                              {"a.tar!" + std::string(255, 'n') + ".xml", "long"}}));
    EXPECT_THAT(elsewhere.names(), ElementsAre());
    EXPECT_THAT(in_.names(), ElementsAre("a.tar"));
}

TEST_F(Archives, NamesOfAnyScript_StayAsTheyAre)
{
    for (const PackSetting format : {archive_write_set_format_pax, archive_write_set_format_zip}) {
        const std::vector<PackedMember> members = {{"маршрутизатор.xml", "edge"}, {"路由器.xml", "core"}};
        planned({in_.file("a", packed_archive(format, archive_write_add_filter_none, members))});
        EXPECT_EQ(texts(), (Texts{{"a!маршрутизатор.xml", "edge"}, {"a!路由器.xml", "core"}}));
    }
}

TEST_F(Archives, LinksAndDevices_ArePassedOver)
{
    const bgp_rehearse::Plan plan = planned({in_.file("a.tar", tar({{"edge.xml", "edge"},
                                                                    {"passwd.xml", "", AE_IFLNK, ""},
                                                                    {"again.xml", "", AE_IFREG, "edge.xml"},
                                                                    {"null.xml", "", AE_IFCHR, ""},
                                                                    {"folder.xml", "", AE_IFDIR, ""}}))});
    EXPECT_EQ(texts(), (Texts{{"a.tar!edge.xml", "edge"}}));
    EXPECT_THAT(plan.passed_over, ElementsAre(Pair("device, pipe or socket", 1), Pair("link in an archive", 2)));
}

TEST_F(Archives, MemberThatIsThereTwice_CountsAsItsLastVersion)
{
    const bgp_rehearse::Plan plan =
        planned({in_.file("a.tar", tar({{"edge.xml", "old"}, {"core.xml", "core"}, {"./edge.xml", "new"}}))});
    EXPECT_EQ(texts(), (Texts{{"a.tar!edge.xml", "new"}, {"a.tar!core.xml", "core"}}));
    EXPECT_THAT(plan.passed_over, ElementsAre(Pair("older version in an archive", 1)));
}

TEST_F(Archives, ArchiveReachedTwice_IsTakenOnce)
{
    const std::string file = in_.file("a.tar", tar({{"edge.xml", "edge"}}));
    const bgp_rehearse::Plan plan = planned({file, in_.path() + "/./a.tar"});
    EXPECT_EQ(texts(), (Texts{{"a.tar!edge.xml", "edge"}}));
    EXPECT_THAT(plan.passed_over, ElementsAre(Pair("reached twice", 1)));
}

TEST_F(Archives, BombInAnArchive_IsRefusedAndItsNeighboursAreNot)
{
    for (const PackSetting filter : {archive_write_add_filter_none, archive_write_add_filter_xz}) {
        PlanOptions options;
        options.paths = {
            in_.file("a", tar({{"1.xml", "one"}, {"2.xml", std::string(8 << 20, '\0')}, {"3.xml", "three"}}, filter))};
        options.options.max_bytes = 1 << 20;
        planned(options);
        EXPECT_EQ(texts(), (Texts{{"a!1.xml", "one"},
                                  {"a!2.xml", "refused: it has more bytes than --max-bytes allows (1048576)"},
                                  {"a!3.xml", "three"}}));
    }
}

TEST_F(Archives, CutOffArchive_MakesNoPlan)
{
    for (const PackSetting filter :
         {archive_write_add_filter_none, archive_write_add_filter_gzip, archive_write_add_filter_xz}) {
        std::string bytes = tar(two_hundred(), filter);
        bytes.resize(bytes.size() / 2);
        EXPECT_THAT(refusal_of({in_.file("a", bytes)}),
                    testing::MatchesRegex(".*/a: the archive.* files; no plan is made"));
    }
}

TEST_F(Archives, ArchiveThatChangesBehindThePlan_GivesItsOldMembersOrNone)
{
    for (const PackSetting filter : {archive_write_add_filter_none, archive_write_add_filter_gzip}) {
        planned({in_.file("a", tar({{"1.xml", "one"}, {"2.xml", "two"}, {"3.xml", "three"}}, filter))});
        in_.file("a", tar({{"1.xml", "one"}, {"2.xml", "TWO"}}, filter));
        const Texts all = texts();
        EXPECT_EQ(all.at("a!1.xml"), "one");
        EXPECT_EQ(all.at("a!2.xml"), kChanged);
        EXPECT_THAT(all.at("a!3.xml"), HasSubstr("refused: "));
        std::filesystem::remove(in_ / "a");
        EXPECT_EQ(texts().at("a!1.xml"), "refused: it cannot be read: No such file or directory");
    }
}

std::string gzip(const std::string& text)
{
    return packed_archive(archive_write_set_format_raw, archive_write_add_filter_gzip, {{"x", text}});
}

TEST(UnpackedConfiguration, PackedText_IsUnpackedAndOtherIsLeft)
{
    using bgp_rehearse::unpacked_configuration;
    EXPECT_EQ(unpacked_configuration("<config/>", "edge", 100), "<config/>");
    EXPECT_EQ(unpacked_configuration("", "edge", 100), "");
    EXPECT_EQ(unpacked_configuration(gzip("<config/>"), "edge", 100), "<config/>");
    EXPECT_EQ(unpacked_configuration(gzip(gzip("<config/>")), "edge", 100), "<config/>");
}

TEST(UnpackedConfiguration, BombAndDamage_AreRefusedByName)
{
    const auto refusal = [](const std::string& bytes) -> std::string {
        try {
            bgp_rehearse::unpacked_configuration(bytes, "edge", 1000);
        } catch (const bgp_platform::xml::LoadError& error) {
            return error.what();
        }
        return "unpacked";
    };
    EXPECT_EQ(refusal(gzip(std::string(1000, ' '))), "unpacked");
    EXPECT_EQ(refusal(gzip(std::string(1001, ' '))), "edge: it has more bytes than --max-bytes allows (1000)");
    EXPECT_EQ(refusal(gzip("<config/>").substr(0, 15)), "edge: gzip data ends early");
    EXPECT_THAT(refusal(packed_archive(archive_write_set_format_ustar, archive_write_add_filter_gzip, {{"x", "y"}})),
                HasSubstr("edge: this is an archive of 1 file"));
}

}  // namespace
}  // namespace bgp_test

// Plans of what a test puts into a folder, and the inputs that a worker gets from them.
#pragma once

#include <archive.h>
#include <archive_entry.h>
#include <gmock/gmock.h>
#include <locale.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "base/exit_status.h"
#include "fleet/plan/input_reader.h"
#include "fleet/plan/make_plan.h"
#include "fleet/plan/plan_reader.h"
#include "support/scratch_folder.h"
#include "support/text_lines.h"

namespace bgp_test {

using PackSetting = int (*)(archive*);

struct PackedMember {
    std::string name;
    std::string content;
    unsigned int type = AE_IFREG;
    std::string link = {};  // the member that it is another name of
};

// An archive's bytes. Names are what they are in a locale of UTF-8: those of pax say that they are.
inline std::string packed_archive(PackSetting format, PackSetting filter, const std::vector<PackedMember>& members)
{
    const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t before = uselocale(locale);
    archive* const writer = archive_write_new();
    EXPECT_EQ(format(writer), ARCHIVE_OK);
    EXPECT_EQ(filter(writer), ARCHIVE_OK);
    std::string result(1 << 24, '\0');
    std::size_t used = 0;
    EXPECT_EQ(archive_write_open_memory(writer, result.data(), result.size(), &used), ARCHIVE_OK);
    for (const PackedMember& member : members) {
        archive_entry* const entry = archive_entry_new();
        archive_entry_set_pathname(entry, member.name.c_str());
        archive_entry_set_filetype(entry, member.type);
        archive_entry_set_size(entry, static_cast<la_int64_t>(member.content.size()));
        if (member.type == AE_IFLNK) {
            archive_entry_set_symlink(entry, "/etc/passwd");
        }
        if (!member.link.empty()) {
            archive_entry_set_hardlink(entry, member.link.c_str());
        }
        EXPECT_GE(archive_write_header(writer, entry), ARCHIVE_WARN) << archive_error_string(writer);
        archive_write_data(writer, member.content.data(), member.content.size());
        archive_entry_free(entry);
    }
    archive_write_free(writer);
    uselocale(before);
    freelocale(locale);
    result.resize(used);
    return result;
}

class PlanFixture : public testing::Test {
protected:
    using Texts = std::map<std::string, std::string>;

    std::string plan_file() const { return out_ / "fleet.plan"; }

    bgp_rehearse::Plan planned(bgp_rehearse::PlanOptions options) const
    {
        options.output = plan_file();
        options.library = BGP_UPDATE_LIBRARY;
        return bgp_rehearse::make_plan(options);
    }

    bgp_rehearse::Plan planned(std::vector<std::string> paths) const
    {
        bgp_rehearse::PlanOptions options;
        options.paths = std::move(paths);
        return planned(options);
    }

    // Why no plan was made of these paths; a plan's file would be a failure.
    std::string refusal_of(const std::vector<std::string>& paths) const
    {
        try {
            planned(paths);
        } catch (const bgp_rehearse::CommandError& error) {
            EXPECT_EQ(error.status(), bgp_rehearse::ExitStatus::BadInput);
            EXPECT_EQ(out_.names(), std::vector<std::string>());
            return error.what();
        }
        return "a plan was made";
    }

    // All inputs of the plan's file, by name.
    std::map<std::string, bgp_rehearse::PlannedInput> inputs() const
    {
        std::map<std::string, bgp_rehearse::PlannedInput> all;
        const bgp_rehearse::PlanReader reader(plan_file());
        for (std::size_t shard = 0; shard < reader.plan().shards.size(); ++shard) {
            reader.each_input(shard, [&](bgp_rehearse::PlannedInput input) {
                const std::string name = input.name;
                EXPECT_TRUE(all.emplace(name, std::move(input)).second) << name;
            });
        }
        return all;
    }

    // What a worker gets, shard by shard: the bytes of each input, or why it does not have them. Names are without the
    // folder that the test works in.
    Texts texts() const
    {
        Texts all;
        const bgp_rehearse::PlanReader reader(plan_file());
        for (std::size_t shard = 0; shard < reader.plan().shards.size(); ++shard) {
            bgp_rehearse::InputReader bytes(reader.plan().options.max_bytes);
            for (const bgp_rehearse::PlannedInput& input : reader.shard(shard)) {
                EXPECT_TRUE(all.emplace(short_name(input.name), text_of(input, &bytes)).second) << input.name;
            }
        }
        return all;
    }

    static std::string text_of(const bgp_rehearse::PlannedInput& input, bgp_rehearse::InputReader* reader)
    {
        try {
            return reader->read(input);
        } catch (const bgp_rehearse::InputError& error) {
            return std::string("refused: ") + error.what();
        }
    }

    std::string short_name(const std::string& name) const
    {
        const std::string folder = in_.path() + "/";
        return name.compare(0, folder.size(), folder) == 0 ? name.substr(folder.size()) : name;
    }

    static constexpr char kChanged[] = "refused: it has changed since the plan was made; make a new plan";

    const ScratchFolder in_;   // what the test plans
    const ScratchFolder out_;  // for the plan alone
};

}  // namespace bgp_test

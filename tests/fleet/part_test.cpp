// The file of a shard's results: whole or not there, and known when it is not what was written.
#include "fleet/shard/part.h"

#include <gmock/gmock.h>

#include "base/exit_status.h"
#include "support/scratch_folder.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

using bgp_rehearse::PartError;
using bgp_rehearse::PartHeader;
using bgp_rehearse::PartReader;
using bgp_rehearse::PartWriter;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string kOne = R"({"n":7,"name":"edge-7.xml"})";
const std::string kTwo = R"({"n":2,"name":"core-2.xml"})";

class Part : public testing::Test {
protected:
    std::string written(const Lines& lines, std::size_t inputs) const
    {
        PartWriter part("-o", folder_ / "part", PartHeader{"3f", 4, 16, inputs});
        for (const std::string& line : lines) {
            part.add(line);
        }
        part.finish();
        return folder_ / "part";
    }

    static Lines read(const std::string& file)
    {
        Lines lines;
        PartReader(file).each([&](std::string_view line, uint64_t) { lines.emplace_back(line); });
        return lines;
    }

    // A part of two results whose bytes were changed is known for it, whatever was read of it before.
    void expect_not_whole(const std::string& bytes) const
    {
        EXPECT_THROW(read(folder_.file("changed", bytes)), PartError) << bytes;
    }

    ScratchFolder folder_;
};

TEST_F(Part, Written_IsReadAsItWas)
{
    const std::string file = written({kOne, kTwo}, 2);
    const PartHeader header = PartReader(file).header();
    EXPECT_EQ(header.plan, "3f");
    EXPECT_EQ(header.shard, 4U);
    EXPECT_EQ(header.shards, 16U);
    EXPECT_EQ(header.inputs, 2U);
    EXPECT_THAT(read(file), ElementsAre(kOne, kTwo));
}

TEST_F(Part, OfAnEmptyShard_IsWhole)
{
    EXPECT_THAT(read(written({}, 0)), IsEmpty());
}

TEST_F(Part, LineIsFoundWhereTheReaderSaysItBegins)
{
    const std::string file = written({kOne, kTwo}, 2);
    const std::string bytes = content_of(file);
    PartReader(file).each([&](std::string_view line, uint64_t offset) {
        EXPECT_EQ(bytes.substr(offset, line.size() + 1), std::string(line) + "\n");
    });
}

TEST_F(Part, NotFinished_LeavesNothing)
{
    {
        PartWriter part("-o", folder_ / "part", PartHeader{"3f", 0, 1, 1});
        part.add(kOne);
    }
    EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_F(Part, CutAnywhere_IsNotWhole)
{
    const std::string bytes = content_of(written({kOne, kTwo}, 2));
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        expect_not_whole(bytes.substr(0, size));
    }
}

TEST_F(Part, AnyByteChanged_IsNotWhole)
{
    const std::string bytes = content_of(written({kOne, kTwo}, 2));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::string changed = bytes;
        changed[i] = changed[i] == 'x' ? 'y' : 'x';
        expect_not_whole(changed);
    }
}

TEST_F(Part, LineMissingTwiceOrBehindTheLast_IsNotWhole)
{
    const std::string bytes = content_of(written({kOne, kTwo}, 2));
    std::string without = bytes;
    without.erase(without.find(kTwo), kTwo.size() + 1);
    expect_not_whole(without);
    std::string twice = bytes;
    twice.insert(twice.find(kTwo), kTwo + "\n");
    expect_not_whole(twice);
    expect_not_whole(bytes + kTwo + "\n");
}

TEST_F(Part, OfFewerResultsThanInputs_IsNotWhole)
{
    EXPECT_THROW(read(written({kOne}, 2)), PartError);
}

TEST_F(Part, OfAnotherFormat_TellsWhichOne)
{
    const std::string file = folder_.file("later", R"({"part":3})"
                                                   "\n");
    try {
        PartReader reader(file);
        ADD_FAILURE() << "it was taken";
    } catch (const PartError& error) {
        EXPECT_STREQ(error.what(), "this is a part of format 3; this command knows 2");
    }
}

}  // namespace
}  // namespace bgp_test

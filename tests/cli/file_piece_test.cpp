// A piece of a file gets another text, shorter or longer than it was.
#include "base/file_piece.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/scratch_folder.h"

namespace bgp_test {
namespace {

// What a file holds when 5 bytes of it, behind a head, have been replaced.
std::string replaced(const std::string& head, const std::string& tail, const std::string& text)
{
    const ScratchFolder folder;
    const std::string name = folder.file("file", head + "piece" + tail);
    const int file = open(name.c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_TRUE(bgp_rehearse::replace_in_file(file, head.size(), 5, text));
    close(file);
    return content_of(name);
}

TEST(FilePiece, AnyLength_LeavesWhatIsAround)
{
    for (const std::string text : {"", "one", "equal", "a longer text than it was"}) {
        EXPECT_EQ(replaced("head ", " tail", text), "head " + text + " tail");
        EXPECT_EQ(replaced("", "", text), text);
    }
}

TEST(FilePiece, LongTail_IsMovedWhole)
{
    std::string tail;
    for (int i = 0; i < 30000; ++i) {
        tail += std::to_string(i) + " ";  // more than is moved at once
    }
    for (const std::string& text : {std::string(), std::string(100000, 'x')}) {
        EXPECT_TRUE(replaced("head", tail, text) == "head" + text + tail);
    }
}

TEST(FilePiece, FileThatCannotBeWritten_IsTold)
{
    const ScratchFolder folder;
    const int file = open(folder.file("file", "a piece").c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_FALSE(bgp_rehearse::replace_in_file(file, 2, 5, "longer than that"));
    close(file);
}

}  // namespace
}  // namespace bgp_test

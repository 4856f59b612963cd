// The set of pointers against std::set, with pointers that come and go as reads and releases make them.
#include "values/pointer_set.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>

namespace {

using bgp_platform::values::PointerSet;

void* pointer(std::uintptr_t number)
{
    return reinterpret_cast<void*>(number);
}

TEST(PointerSet, PointerInsertedTwice_CountsOnce)
{
    PointerSet set;
    set.insert(pointer(16));
    set.insert(pointer(16));
    EXPECT_EQ(set.size(), 1U);
    set.erase(pointer(16));
    EXPECT_EQ(set.size(), 0U);
}

TEST(PointerSet, PointerNotThere_IsNotMissed)
{
    PointerSet set;
    set.erase(pointer(16));
    set.insert(pointer(16));
    set.erase(pointer(32));
    set.erase(nullptr);
    EXPECT_EQ(set.size(), 1U);
}

TEST(PointerSet, ManyComingAndGoing_CountAsInASet)
{
    std::mt19937 draw(7);  // NOLINT(bugprone-random-generator-seed): the same pointers each time
    PointerSet set;
    std::set<std::uintptr_t> expected;
    for (int i = 0; i < 200000; ++i) {
        const std::uintptr_t number = 16 * (1 + draw() % 3000);
        if (draw() % 2 == 0) {
            set.insert(pointer(number));
            expected.insert(number);
        } else {
            set.erase(pointer(number));
            expected.erase(number);
        }
        ASSERT_EQ(set.size(), expected.size()) << "step " << i;
    }
    for (const std::uintptr_t number : expected) {
        set.erase(pointer(number));
    }
    EXPECT_EQ(set.size(), 0U);
}

}  // namespace

// What a configuration knows of the entries asked for last: no answer or write depends on it.
#include "store/last_entries.h"

#include <gtest/gtest.h>

#include <utility>

#include "store_schema.h"

namespace {

using bgp_platform::store::Configuration;
using bgp_platform::store::History;
using bgp_platform::store::List;
using bgp_platform::store::NodeValue;
using bgp_platform::store::Path;
using bgp_platform::store::Result;
using bgp_platform::store::RowRef;
using store_test::num;
using store_test::plant;
using store_test::PlantPath;
using store_test::rack;
using store_test::text;
using store_test::Value;
using store_test::with_racks;

class LastEntriesTest : public testing::Test {
protected:
    void set_note(Configuration* configuration, const char* note)
    {
        EXPECT_TRUE(configuration->set(south_.to("note"), text(note)) == Result::Ok);
    }

    Configuration configuration_ = with_racks();
    const PlantPath south_ = rack(1, "south");
};

TEST_F(LastEntriesTest, RowWrittenBeforeAndAfterACopy_ChangesInOneOnly)
{
    set_note(&configuration_, "before");
    Configuration copy = configuration_;
    set_note(&configuration_, "original");
    EXPECT_EQ(copy.get(south_.to("note")), text("before"));
    set_note(&copy, "copy");
    EXPECT_EQ(configuration_.get(south_.to("note")), text("original"));
    configuration_ = copy;
    set_note(&copy, "later");
    EXPECT_EQ(configuration_.get(south_.to("note")), text("copy"));
}

TEST_F(LastEntriesTest, RowThatAHistoryBeganWith_StaysAsItWas)
{
    set_note(&configuration_, "before");
    const History history(configuration_);
    set_note(&configuration_, "after");
    EXPECT_EQ(history.stored().list(south_.node().slot).at(1)->value(3), text("before"));
}

TEST_F(LastEntriesTest, EntryTakenAwayAndMadeAnew_HasNothingOfTheFirst)
{
    set_note(&configuration_, "first");
    EXPECT_TRUE(configuration_.remove(south_) == Result::Ok);
    EXPECT_FALSE(configuration_.exists(south_));
    EXPECT_TRUE(configuration_.create(south_) == Result::Ok);
    EXPECT_TRUE(configuration_.get(south_.to("note")).absent());
}

TEST_F(LastEntriesTest, EntryMovedAway_IsFoundByItsNewKeyOnly)
{
    set_note(&configuration_, "moved");
    EXPECT_TRUE(configuration_.move(south_, {num(5), text("west")}) == Result::Ok);
    EXPECT_FALSE(configuration_.exists(south_));
    EXPECT_EQ(configuration_.get(rack(5, "west").to("note")), text("moved"));
}

TEST_F(LastEntriesTest, LeafListGivenAnew_HasLostItsEntries)
{
    const PlantPath cold = south_.to("tag", {text("cold")});
    EXPECT_TRUE(configuration_.create(cold) == Result::Ok);
    set_note(&configuration_, "open");
    EXPECT_TRUE(configuration_.exists(cold));
    RowRef warm(*cold.node().entry);
    warm.edit().value(0) = text("warm");
    NodeValue given{&cold.node(), {}};
    given.entries.insert_new(std::move(warm));
    EXPECT_TRUE(configuration_.set_all(south_, {std::move(given)}) == Result::Ok);
    EXPECT_FALSE(configuration_.exists(cold));
    EXPECT_TRUE(configuration_.exists(south_.to("tag", {text("warm")})));
}

TEST_F(LastEntriesTest, SameKeyBelowAnotherEntry_IsAnotherEntry)
{
    const PlantPath feed = south_.to("power").to("feed", {num(7)});
    const PlantPath other = rack(2, "north").to("power").to("feed", {num(7)});
    EXPECT_TRUE(configuration_.exists(feed));
    EXPECT_FALSE(configuration_.exists(other));
    EXPECT_TRUE(configuration_.create(other) == Result::Ok);
    EXPECT_TRUE(configuration_.set(other.to("note"), text("B")) == Result::Ok);
    EXPECT_NE(configuration_.get(feed.to("note")), text("B"));
}

}  // namespace

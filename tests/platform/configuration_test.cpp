// Configurations: every operation and each of its results, and what copies share.
#include "store/configuration.h"

#include <gtest/gtest.h>

#include <string>

#include "heap_meter.h"
#include "store_schema.h"

namespace bgp_platform::store {

// Names results in failure messages.
void PrintTo(Result result, std::ostream* out)
{
    static const char* const kNames[] = {"Ok",           "NotFound",   "AlreadyExists", "NotDeletable",
                                         "NotCreatable", "NotMovable", "NotWritable"};
    *out << kNames[static_cast<std::size_t>(result)];
}

}  // namespace bgp_platform::store

namespace {

using bgp_platform::store::Configuration;
using bgp_platform::store::List;
using bgp_platform::store::Path;
using bgp_platform::store::Result;
using bgp_platform::store::Row;
using store_test::num;
using store_test::plant;
using store_test::plant_schema;
using store_test::PlantPath;
using store_test::rack;
using store_test::text;
using store_test::Value;
using store_test::with_racks;

class ConfigurationTest : public testing::Test {
protected:
    static void expect_ok(Result result) { ASSERT_EQ(result, Result::Ok); }

    Configuration configuration_ = with_racks();
    const PlantPath missing_ = rack(9, "nowhere");
};

// Says that an operation gives a result, changes nothing, and takes no memory that stays.
#define EXPECT_REFUSED(operation, result)                                            \
    do {                                                                             \
        const Configuration before = configuration_;                                 \
        const std::size_t bytes = heap_meter::bytes;                                 \
        EXPECT_EQ(operation, result);                                                \
        EXPECT_EQ(heap_meter::bytes, bytes);                                         \
        EXPECT_EQ(&before.root(), &configuration_.root()) << "written, or unshared"; \
    } while (false)

// Reads.

TEST_F(ConfigurationTest, NewConfiguration_HoldsNothingButItsRoot)
{
    const Configuration empty(plant_schema());
    EXPECT_EQ(&empty.schema(), plant_schema().get());
    EXPECT_EQ(empty.find_row(Path()), &empty.root());
    EXPECT_EQ(empty.count(plant().to("rack")), 0U);
    EXPECT_FALSE(empty.exists(plant().to("rack")));
    EXPECT_FALSE(empty.exists(plant().to("label")));
    EXPECT_TRUE(empty.exists(plant()));
    EXPECT_TRUE(empty.exists(Path()));
}

TEST_F(ConfigurationTest, FindRow_LeadsToTheEntryOrTheRowAroundTheNode)
{
    const Row* south = configuration_.find_row(rack(1, "south"));
    ASSERT_NE(south, nullptr);
    EXPECT_EQ(south->value(1), text("south"));
    EXPECT_EQ(configuration_.find_row(rack(1, "south").to("power").to("watts")), south);
    EXPECT_EQ(configuration_.find_row(plant().to("rack")), &configuration_.root());
    EXPECT_EQ(configuration_.find_row(rack(1, "south").to("power").to("feed", {num(7)}))->value(0), num(7));
    EXPECT_EQ(configuration_.find_row(missing_), nullptr);
    EXPECT_EQ(configuration_.find_row(missing_.to("power").to("feed", {num(7)})), nullptr);
    EXPECT_EQ(configuration_.find_row(rack(1, "south").to("power").to("feed", {num(8)})), nullptr);
}

TEST_F(ConfigurationTest, Position_PicksTheEntryInKeyOrder)
{
    EXPECT_EQ(configuration_.find_row(plant().to_nth("rack", 1)), configuration_.find_row(rack(1, "south")));
    EXPECT_EQ(configuration_.get(plant().to_nth("rack", 1).to("note")), text("by the door"));
    EXPECT_EQ(configuration_.get(plant().to_nth("rack", 2).to("row")), num(2));
    EXPECT_EQ(configuration_.find_row(plant().to_nth("rack", 3)), nullptr);
    EXPECT_FALSE(configuration_.exists(plant().to_nth("rack", 3)));
    EXPECT_TRUE(configuration_.exists(plant().to_nth("rack", 0)));
}

TEST_F(ConfigurationTest, Get_AnswersTheValueThenTheDefaultThenAbsent)
{
    EXPECT_EQ(configuration_.get(rack(1, "south").to("note")), text("by the door"));
    EXPECT_EQ(configuration_.get(rack(1, "south").to("row")), num(1));
    EXPECT_EQ(configuration_.get(rack(1, "south").to("width")), num(19));
    expect_ok(configuration_.set(rack(1, "south").to("width"), num(21)));
    EXPECT_EQ(configuration_.get(rack(1, "south").to("width")), num(21));
    EXPECT_TRUE(configuration_.get(rack(1, "north").to("note")).absent());
    EXPECT_EQ(configuration_.get(plant().to("office").to("floor")), num(3));
}

TEST_F(ConfigurationTest, DefaultBelowWhatIsNotThere_IsAbsent)
{
    EXPECT_TRUE(configuration_.get(missing_.to("width")).absent());
    EXPECT_FALSE(configuration_.exists(missing_.to("width")));
    EXPECT_TRUE(configuration_.get(plant().to("alarm").to("delay")).absent());
    expect_ok(configuration_.create(plant().to("alarm")));
    EXPECT_EQ(configuration_.get(plant().to("alarm").to("delay")), num(7));
}

TEST_F(ConfigurationTest, Get_OfWhatIsNoLeaf_IsAbsent)
{
    EXPECT_TRUE(configuration_.get(Path()).absent());
    EXPECT_TRUE(configuration_.get(plant()).absent());
    EXPECT_TRUE(configuration_.get(plant().to("rack")).absent());
    EXPECT_TRUE(configuration_.get(rack(1, "south")).absent());
}

TEST_F(ConfigurationTest, FindList_IsNullOnlyBelowAMissingEntry)
{
    EXPECT_EQ(configuration_.find_list(plant().to("rack"))->size(), 3U);
    EXPECT_EQ(configuration_.find_list(rack(1, "south").to("power").to("feed"))->size(), 1U);
    const List* none = configuration_.find_list(rack(1, "north").to("tag"));
    ASSERT_NE(none, nullptr);
    EXPECT_TRUE(none->empty());
    EXPECT_EQ(configuration_.find_list(missing_.to("tag")), nullptr);
    EXPECT_EQ(configuration_.find_list(plant().to("label")), nullptr);
    EXPECT_EQ(configuration_.count(missing_.to("tag")), 0U);
    EXPECT_EQ(configuration_.count(plant().to("rack")), 3U);
}

TEST_F(ConfigurationTest, Exists_FollowsTheKindOfTheNode)
{
    EXPECT_TRUE(configuration_.exists(rack(1, "south")));
    EXPECT_FALSE(configuration_.exists(missing_));
    EXPECT_TRUE(configuration_.exists(plant().to("rack")));
    EXPECT_TRUE(configuration_.exists(rack(1, "south").to("power").to("feed")));
    EXPECT_FALSE(configuration_.exists(rack(1, "north").to("power").to("feed")));
    EXPECT_TRUE(configuration_.exists(rack(1, "south").to("note")));
    EXPECT_FALSE(configuration_.exists(rack(1, "north").to("note")));
    EXPECT_TRUE(configuration_.exists(rack(1, "north").to("width")));
    EXPECT_TRUE(configuration_.exists(rack(1, "north").to("power")));
    EXPECT_FALSE(configuration_.exists(missing_.to("power")));
    EXPECT_FALSE(configuration_.exists(plant().to("alarm")));
    EXPECT_FALSE(configuration_.exists(rack(1, "north").to("power").to("backup")));
}

// create

TEST_F(ConfigurationTest, CreatedEntry_HasItsKeyAndNothingElse)
{
    EXPECT_EQ(configuration_.create(rack(3, "east")), Result::Ok);
    const Row* row = configuration_.find_row(rack(3, "east"));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->value(0), num(3));
    EXPECT_EQ(row->value(1), text("east"));
    for (uint16_t slot = 2; slot < row->record().values.size(); ++slot) {
        EXPECT_TRUE(row->value(slot).absent()) << slot;
    }
    for (uint16_t slot = 0; slot < row->record().lists.size(); ++slot) {
        EXPECT_TRUE(row->list(slot).empty()) << slot;
    }
    EXPECT_EQ(configuration_.count(plant().to("rack")), 4U);
}

TEST_F(ConfigurationTest, CreatedLeafListEntry_IsCounted)
{
    EXPECT_EQ(configuration_.create(rack(1, "north").to("tag", {text("cold")})), Result::Ok);
    EXPECT_EQ(configuration_.create(rack(1, "north").to("tag", {text("bright")})), Result::Ok);
    EXPECT_EQ(configuration_.count(rack(1, "north").to("tag")), 2U);
    EXPECT_EQ(configuration_.find_list(rack(1, "north").to("tag"))->at(0)->value(0), text("bright"));
    EXPECT_TRUE(configuration_.exists(rack(1, "north").to("tag", {text("cold")})));
    EXPECT_EQ(configuration_.create(plant().to("office").to("phone", {num(42)})), Result::Ok);
    EXPECT_REFUSED(configuration_.create(plant().to("office").to("phone", {num(42)})), Result::AlreadyExists);
}

TEST_F(ConfigurationTest, CreatedPresenceContainer_IsThere)
{
    EXPECT_EQ(configuration_.create(plant().to("alarm")), Result::Ok);
    EXPECT_TRUE(configuration_.exists(plant().to("alarm")));
    EXPECT_EQ(configuration_.create(plant().to("alarm").to("sensor", {num(1)})), Result::Ok);
    EXPECT_REFUSED(configuration_.create(plant().to("alarm")), Result::AlreadyExists);
}

TEST_F(ConfigurationTest, CreateOfWhatIsThere_AlreadyExists)
{
    EXPECT_REFUSED(configuration_.create(rack(1, "south")), Result::AlreadyExists);
    EXPECT_REFUSED(configuration_.create(plant().to_nth("rack", 0)), Result::AlreadyExists);
    EXPECT_EQ(configuration_.get(rack(1, "south").to("note")), text("by the door"));
}

TEST_F(ConfigurationTest, CreateBelowWhatIsNotThere_IsNotFound)
{
    EXPECT_REFUSED(configuration_.create(missing_.to("power").to("feed", {num(1)})), Result::NotFound);
    EXPECT_REFUSED(configuration_.create(missing_.to("tag", {text("x")})), Result::NotFound);
    EXPECT_REFUSED(configuration_.create(missing_.to("power").to("backup")), Result::NotFound);
    EXPECT_REFUSED(configuration_.create(plant().to("alarm").to("sensor", {num(1)})), Result::NotFound);
}

TEST_F(ConfigurationTest, CreateOfOtherNodes_IsNotPossible)
{
    EXPECT_REFUSED(configuration_.create(rack(1, "south").to("width")), Result::NotCreatable);
    EXPECT_REFUSED(configuration_.create(rack(1, "south").to("power")), Result::NotCreatable);
    EXPECT_REFUSED(configuration_.create(plant().to("rack")), Result::NotCreatable);
    EXPECT_REFUSED(configuration_.create(Path()), Result::NotCreatable);
    EXPECT_REFUSED(configuration_.create(plant().to("rack", {num(4)})), Result::NotCreatable);
    EXPECT_REFUSED(configuration_.create(plant().to_nth("rack", 3)), Result::NotCreatable);
}

// set

TEST_F(ConfigurationTest, Set_WritesLeavesOfRootEntriesAndContainers)
{
    EXPECT_EQ(configuration_.set(plant().to("label"), text("works")), Result::Ok);
    EXPECT_EQ(configuration_.set(rack(1, "north").to("power").to("watts"), num(900)), Result::Ok);
    EXPECT_EQ(configuration_.set(rack(1, "south").to("power").to("feed", {num(7)}).to("note"), text("A")), Result::Ok);
    EXPECT_EQ(configuration_.set(plant().to_nth("rack", 2).to("note"), text("third")), Result::Ok);
    EXPECT_EQ(configuration_.get(plant().to("label")), text("works"));
    EXPECT_EQ(configuration_.get(rack(1, "north").to("power").to("watts")), num(900));
    EXPECT_EQ(configuration_.get(rack(1, "south").to("power").to("feed", {num(7)}).to("note")), text("A"));
    EXPECT_EQ(configuration_.get(rack(2, "north").to("note")), text("third"));
}

TEST_F(ConfigurationTest, SetBelowWhatIsNotThere_IsNotFoundAndCreatesNothing)
{
    EXPECT_REFUSED(configuration_.set(missing_.to("note"), text("x")), Result::NotFound);
    EXPECT_REFUSED(configuration_.set(missing_.to("row"), num(9)), Result::NotFound);
    EXPECT_REFUSED(configuration_.set(plant().to("alarm").to("delay"), num(1)), Result::NotFound);
    EXPECT_REFUSED(configuration_.set(rack(1, "north").to("power").to("backup").to("minutes"), num(1)),
                   Result::NotFound);
    EXPECT_FALSE(configuration_.exists(missing_));
}

TEST_F(ConfigurationTest, KeyLeaf_TakesItsOwnValueOnly)
{
    EXPECT_REFUSED(configuration_.set(rack(1, "south").to("name"), text("south")), Result::Ok);
    EXPECT_REFUSED(configuration_.set(rack(1, "south").to("name"), text("west")), Result::NotWritable);
    EXPECT_REFUSED(configuration_.set(rack(1, "south").to("row"), num(2)), Result::NotWritable);
}

TEST_F(ConfigurationTest, SetOfTheSameValue_UnsharesNothing)
{
    EXPECT_REFUSED(configuration_.set(rack(1, "south").to("note"), text("by the door")), Result::Ok);
}

TEST_F(ConfigurationTest, DefaultSetAsAValue_StaysAValue)
{
    EXPECT_EQ(configuration_.set(rack(1, "south").to("width"), num(19)), Result::Ok);
    EXPECT_EQ(configuration_.remove(rack(1, "south").to("width")), Result::Ok);
}

TEST_F(ConfigurationTest, SetOfWhatIsNoLeaf_IsNotWritable)
{
    EXPECT_REFUSED(configuration_.set(rack(1, "south"), num(1)), Result::NotWritable);
    EXPECT_REFUSED(configuration_.set(rack(1, "south").to("power"), num(1)), Result::NotWritable);
    EXPECT_REFUSED(configuration_.set(plant().to("alarm"), num(1)), Result::NotWritable);
    EXPECT_REFUSED(configuration_.set(rack(1, "south").to("tag"), text("x")), Result::NotWritable);
    EXPECT_REFUSED(configuration_.set(Path(), num(1)), Result::NotWritable);
    EXPECT_REFUSED(configuration_.set(rack(1, "south").to("note"), Value()), Result::NotWritable);
}

// remove

TEST_F(ConfigurationTest, SetAll_GivesTheRowItsValuesAndTakesAbsentOnesAway)
{
    const PlantPath south = rack(1, "south");
    EXPECT_EQ(configuration_.set_all(south, {{&south.to("note").node(), Value()},
                                             {&south.to("power").to("watts").node(), num(900)},
                                             {&south.to("power").to("backup").node(), Value::present()},
                                             {&south.to("power").to("backup").to("minutes").node(), num(5)}}),
              Result::Ok);
    EXPECT_EQ(configuration_.get(south.to("note")), Value());
    EXPECT_EQ(configuration_.get(south.to("power").to("watts")), num(900));
    EXPECT_EQ(configuration_.get(south.to("power").to("backup").to("minutes")), num(5));
}

TEST_F(ConfigurationTest, SetAllOfWhatIsThere_UnsharesNothing)
{
    const PlantPath south = rack(1, "south");
    EXPECT_REFUSED(configuration_.set_all(south, {{&south.to("note").node(), text("by the door")},
                                                  {&south.to("name").node(), text("south")},
                                                  {&south.to("width").node(), Value()},
                                                  {&south.to("power").to("backup").to("minutes").node(), Value()}}),
                   Result::Ok);
    EXPECT_REFUSED(configuration_.set_all(missing_, {{&missing_.to("note").node(), text("x")}}), Result::NotFound);
}

TEST_F(ConfigurationTest, SetAll_EndsAtTheFirstThatIsRefused)
{
    const PlantPath south = rack(1, "south");
    const bgp_platform::schema::Node* const watts = &south.to("power").to("watts").node();
    const bgp_platform::schema::Node* const minutes = &south.to("power").to("backup").to("minutes").node();
    EXPECT_EQ(configuration_.set_all(south, {{watts, num(800)}, {minutes, num(1)}, {watts, num(900)}}),
              Result::NotFound);
    EXPECT_EQ(configuration_.set_all(south, {{&south.to("name").node(), text("west")}, {watts, num(900)}}),
              Result::NotWritable);
    EXPECT_EQ(configuration_.get(south.to("power").to("watts")), num(800));
}

TEST_F(ConfigurationTest, RemovedEntry_IsGoneWithAllBelowIt)
{
    EXPECT_EQ(configuration_.remove(rack(1, "south")), Result::Ok);
    EXPECT_FALSE(configuration_.exists(rack(1, "south")));
    EXPECT_EQ(configuration_.count(plant().to("rack")), 2U);
    expect_ok(configuration_.create(rack(1, "south")));
    EXPECT_EQ(configuration_.count(rack(1, "south").to("power").to("feed")), 0U);
    EXPECT_TRUE(configuration_.get(rack(1, "south").to("note")).absent());
}

TEST_F(ConfigurationTest, EntryRemovedByPosition_IsTheOneThere)
{
    EXPECT_EQ(configuration_.remove(plant().to_nth("rack", 1)), Result::Ok);
    EXPECT_FALSE(configuration_.exists(rack(1, "south")));
    EXPECT_REFUSED(configuration_.remove(plant().to_nth("rack", 2)), Result::NotFound);
}

TEST_F(ConfigurationTest, RemovedLeafListEntry_LeavesTheOthers)
{
    expect_ok(configuration_.create(rack(1, "north").to("tag", {text("cold")})));
    expect_ok(configuration_.create(rack(1, "north").to("tag", {text("dry")})));
    EXPECT_EQ(configuration_.remove(rack(1, "north").to("tag", {text("cold")})), Result::Ok);
    EXPECT_EQ(configuration_.count(rack(1, "north").to("tag")), 1U);
    EXPECT_REFUSED(configuration_.remove(rack(1, "north").to("tag", {text("cold")})), Result::NotFound);
}

TEST_F(ConfigurationTest, RemovedLeaf_ReadsAsItsDefaultAgain)
{
    expect_ok(configuration_.set(rack(1, "south").to("width"), num(21)));
    EXPECT_EQ(configuration_.remove(rack(1, "south").to("width")), Result::Ok);
    EXPECT_EQ(configuration_.get(rack(1, "south").to("width")), num(19));
    EXPECT_REFUSED(configuration_.remove(rack(1, "south").to("width")), Result::NotFound);
}

TEST_F(ConfigurationTest, RemoveOfWhatIsNotThere_IsNotFound)
{
    EXPECT_REFUSED(configuration_.remove(missing_), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(missing_.to("note")), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(missing_.to("tag")), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(missing_.to("power").to("feed", {num(1)})), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(rack(1, "north").to("note")), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(rack(1, "north").to("tag")), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(rack(1, "north").to("power")), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(plant().to("alarm")), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(plant().to("office")), Result::NotFound);
}

TEST_F(ConfigurationTest, KeyLeafAndRoot_AreNotDeletable)
{
    EXPECT_REFUSED(configuration_.remove(rack(1, "south").to("name")), Result::NotDeletable);
    EXPECT_REFUSED(configuration_.remove(missing_.to("name")), Result::NotFound);
    EXPECT_REFUSED(configuration_.remove(Path()), Result::NotDeletable);
}

TEST_F(ConfigurationTest, RemovedList_LosesEveryEntry)
{
    EXPECT_EQ(configuration_.remove(plant().to("rack")), Result::Ok);
    EXPECT_EQ(configuration_.count(plant().to("rack")), 0U);
    EXPECT_REFUSED(configuration_.remove(plant().to("rack")), Result::NotFound);
}

TEST_F(ConfigurationTest, RemovedContainer_LosesItsContentAndNothingBeside)
{
    const PlantPath power = rack(1, "south").to("power");
    expect_ok(configuration_.set(power.to("watts"), num(900)));
    expect_ok(configuration_.create(power.to("backup")));
    expect_ok(configuration_.set(power.to("backup").to("minutes"), num(5)));
    EXPECT_EQ(configuration_.remove(power), Result::Ok);
    EXPECT_FALSE(configuration_.exists(power.to("watts")));
    EXPECT_FALSE(configuration_.exists(power.to("backup")));
    EXPECT_EQ(configuration_.count(power.to("feed")), 0U);
    EXPECT_EQ(configuration_.get(rack(1, "south").to("note")), text("by the door"));
    expect_ok(configuration_.create(power.to("backup")));
    EXPECT_FALSE(configuration_.exists(power.to("backup").to("minutes")));
}

TEST_F(ConfigurationTest, RemovedPresenceContainer_IsGoneWithItsContent)
{
    const PlantPath alarm = plant().to("alarm");
    expect_ok(configuration_.create(alarm));
    expect_ok(configuration_.set(alarm.to("delay"), num(30)));
    expect_ok(configuration_.create(alarm.to("sensor", {num(1)})));
    EXPECT_EQ(configuration_.remove(alarm), Result::Ok);
    EXPECT_FALSE(configuration_.exists(alarm));
    expect_ok(configuration_.create(alarm));
    EXPECT_EQ(configuration_.get(alarm.to("delay")), num(7));
    EXPECT_EQ(configuration_.count(alarm.to("sensor")), 0U);
}

// move

TEST_F(ConfigurationTest, MovedEntry_KeepsAllBelowItUnderTheNewKey)
{
    EXPECT_EQ(configuration_.move(rack(1, "south"), {num(5), text("west")}), Result::Ok);
    EXPECT_FALSE(configuration_.exists(rack(1, "south")));
    EXPECT_EQ(configuration_.get(rack(5, "west").to("name")), text("west"));
    EXPECT_EQ(configuration_.get(rack(5, "west").to("note")), text("by the door"));
    EXPECT_TRUE(configuration_.exists(rack(5, "west").to("power").to("feed", {num(7)})));
    EXPECT_EQ(configuration_.find_list(plant().to("rack"))->at(2), configuration_.find_row(rack(5, "west")));
    EXPECT_EQ(configuration_.count(plant().to("rack")), 3U);
}

TEST_F(ConfigurationTest, MovedNestedEntry_StaysInItsList)
{
    const PlantPath power = rack(1, "south").to("power");
    EXPECT_EQ(configuration_.move(power.to("feed", {num(7)}), {num(3)}), Result::Ok);
    EXPECT_TRUE(configuration_.exists(power.to("feed", {num(3)})));
    EXPECT_EQ(configuration_.count(power.to("feed")), 1U);
    EXPECT_EQ(configuration_.move(plant().to_nth("rack", 0), {num(8), text("north")}), Result::Ok);
    EXPECT_TRUE(configuration_.exists(rack(8, "north")));
}

TEST_F(ConfigurationTest, MoveOntoItsOwnKey_ChangesNothing)
{
    EXPECT_REFUSED(configuration_.move(rack(1, "south"), {num(1), text("south")}), Result::Ok);
}

TEST_F(ConfigurationTest, RefusedMoves_SayWhy)
{
    EXPECT_REFUSED(configuration_.move(rack(1, "south"), {num(2), text("north")}), Result::AlreadyExists);
    EXPECT_REFUSED(configuration_.move(missing_, {num(2), text("north")}), Result::NotFound);
    EXPECT_REFUSED(configuration_.move(missing_, {num(9), text("nowhere")}), Result::NotFound);
    EXPECT_REFUSED(configuration_.move(missing_.to("power").to("feed", {num(7)}), {num(8)}), Result::NotFound);
    EXPECT_REFUSED(configuration_.move(plant().to("rack"), {num(2), text("x")}), Result::NotMovable);
    EXPECT_REFUSED(configuration_.move(rack(1, "south").to("note"), {num(2), text("x")}), Result::NotMovable);
    EXPECT_REFUSED(configuration_.move(rack(1, "south"), {num(2)}), Result::NotMovable);
    expect_ok(configuration_.create(rack(1, "south").to("tag", {text("cold")})));
    EXPECT_REFUSED(configuration_.move(rack(1, "south").to("tag", {text("cold")}), {text("dry")}), Result::NotMovable);
}

TEST_F(ConfigurationTest, MoveInACopy_LeavesTheEntryInTheOriginal)
{
    Configuration copy = configuration_;
    EXPECT_EQ(copy.move(rack(1, "south"), {num(5), text("west")}), Result::Ok);
    EXPECT_EQ(configuration_.get(rack(1, "south").to("name")), text("south"));
    EXPECT_FALSE(configuration_.exists(rack(5, "west")));
}

// Rows for writing, and sharing.

TEST_F(ConfigurationTest, EditRow_HandsOutAnUnsharedRow)
{
    const Configuration copy = configuration_;
    Row* row = configuration_.edit_row(rack(1, "south"));
    ASSERT_NE(row, nullptr);
    EXPECT_NE(row, copy.find_row(rack(1, "south")));
    EXPECT_EQ(row, configuration_.find_row(rack(1, "south")));
    EXPECT_EQ(configuration_.edit_row(rack(1, "south")), row);
    EXPECT_EQ(configuration_.find_row(rack(1, "north")), copy.find_row(rack(1, "north")));
    EXPECT_EQ(configuration_.edit_row(Path()), &configuration_.root());
    EXPECT_EQ(&configuration_.edit_root(), &configuration_.root());
}

TEST_F(ConfigurationTest, EditRowOfAMissingEntry_UnsharesNothing)
{
    EXPECT_REFUSED(configuration_.edit_row(missing_), nullptr);
    EXPECT_REFUSED(configuration_.edit_row(missing_.to("power").to("feed", {num(7)})), nullptr);
}

TEST_F(ConfigurationTest, EveryWriteInACopy_LeavesTheOriginalAsItWas)
{
    const Configuration& original = configuration_;
    Configuration copy = original;
    const PlantPath south = rack(1, "south");
    expect_ok(copy.set(plant().to("label"), text("other")));
    expect_ok(copy.set(south.to("note"), text("moved")));
    expect_ok(copy.set(south.to("power").to("feed", {num(7)}).to("note"), text("A")));
    expect_ok(copy.create(south.to("power").to("feed", {num(8)})));
    expect_ok(copy.create(south.to("tag", {text("cold")})));
    expect_ok(copy.create(plant().to("alarm")));
    expect_ok(copy.remove(rack(1, "north")));
    EXPECT_FALSE(original.exists(plant().to("label")));
    EXPECT_FALSE(original.exists(plant().to("alarm")));
    EXPECT_EQ(original.get(south.to("note")), text("by the door"));
    EXPECT_FALSE(original.exists(south.to("power").to("feed", {num(7)}).to("note")));
    EXPECT_EQ(original.count(south.to("power").to("feed")), 1U);
    EXPECT_EQ(original.count(south.to("tag")), 0U);
    EXPECT_TRUE(original.exists(rack(1, "north")));
    expect_ok(copy.remove(plant()));
    EXPECT_EQ(original.count(plant().to("rack")), 3U);
}

TEST_F(ConfigurationTest, WritesInTheOriginal_LeaveACopyAsItWas)
{
    const Configuration copy = configuration_;
    expect_ok(configuration_.set(rack(1, "south").to("note"), text("moved")));
    expect_ok(configuration_.remove(rack(2, "north")));
    EXPECT_EQ(copy.get(rack(1, "south").to("note")), text("by the door"));
    EXPECT_TRUE(copy.exists(rack(2, "north")));
}

TEST(ConfigurationSharingTest, OneChangedEntryOfAHundredThousand_IsAllThatIsCopied)
{
    Configuration configuration(plant_schema());
    for (uint64_t row = 0; row < 100'000; ++row) {
        ASSERT_EQ(configuration.create(rack(row, "north")), Result::Ok);
    }
    Configuration copy = configuration;
    const std::size_t blocks = heap_meter::blocks;
    const std::size_t bytes = heap_meter::bytes;
    ASSERT_EQ(copy.set(rack(54'321, "north").to("width"), num(21)), Result::Ok);
    EXPECT_LE(heap_meter::blocks - blocks, 5U);  // the root, three nodes, the entry
    EXPECT_LE(heap_meter::bytes - bytes, 3000U);

    std::vector<const Row*> changed;
    List::walk_differences(*configuration.find_list(plant().to("rack")), *copy.find_list(plant().to("rack")),
                           [&](const Row*, const Row* after) { changed.push_back(after); });
    EXPECT_EQ(changed, std::vector<const Row*>{copy.find_row(rack(54'321, "north"))});
}

}  // namespace

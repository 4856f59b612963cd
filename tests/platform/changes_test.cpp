// The walk over what one configuration has that another has not, and the keypaths it is told in.
#include "store/changes.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "store_schema.h"

namespace {

using bgp_platform::schema::Node;
using bgp_platform::store::ChangeVisitor;
using bgp_platform::store::Configuration;
using bgp_platform::store::keypath;
using bgp_platform::store::Path;
using bgp_platform::store::Result;
using bgp_platform::store::Row;
using bgp_platform::store::Trail;
using store_test::num;
using store_test::plant;
using store_test::plant_schema;
using store_test::PlantPath;
using store_test::rack;
using store_test::text;
using store_test::Value;
using store_test::with_racks;

using Lines = std::vector<std::string>;

std::string shown(const Node& leaf, const Value& value)
{
    if (value.absent()) {
        return "-";
    }
    return leaf.type == nullptr ? "present" : leaf.type->text(value);
}

class ChangeLines : public ChangeVisitor {
public:
    void entry_created(const Trail& around, const Row& entry) override
    {
        lines.push_back("+ " + keypath(around, &entry));
    }
    void entry_deleted(const Trail& around, const Row& entry) override
    {
        lines.push_back("- " + keypath(around, &entry));
    }
    void leaf_changed(const Trail& row, const Node& leaf, const Value& before, const Value& after) override
    {
        lines.push_back("  " + keypath(row, leaf) + ": " + shown(leaf, before) + " -> " + shown(leaf, after));
    }

    Lines lines;
};

Lines changes(const Configuration& before, const Configuration& after)
{
    ChangeLines visitor;
    walk_changes(before, after, visitor);
    return visitor.lines;
}

class ChangesTest : public testing::Test {
protected:
    ChangesTest()
    {
        expect_ok(before_.create(rack(1, "south").to("tag", {text("cold")})));
        after_ = before_;
    }

    static void expect_ok(Result result) { ASSERT_EQ(result, Result::Ok); }

    Lines changes() const { return ::changes(before_, after_); }

    Configuration before_ = with_racks();
    Configuration after_{plant_schema()};
};

TEST_F(ChangesTest, CopyThatWasNotWritten_HasNoChanges)
{
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(ChangesTest, UnsharedButEqualRows_HaveNoChanges)
{
    after_.edit_row(rack(1, "south").to("power").to("feed", {num(7)}));
    after_.edit_row(rack(1, "south").to("tag", {text("cold")}));
    after_.edit_row(rack(2, "north"));
    EXPECT_NE(&before_.root(), &after_.root());
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(ChangesTest, ValueSetAndSetBack_IsNoChange)
{
    expect_ok(after_.set(rack(1, "south").to("note"), text("elsewhere")));
    expect_ok(after_.set(rack(1, "south").to("note"), text("by the door")));
    expect_ok(after_.remove(rack(2, "north")));
    expect_ok(after_.create(rack(2, "north")));
    EXPECT_EQ(changes(), Lines{});
}

TEST_F(ChangesTest, Leaves_AreToldWithBothValues)
{
    expect_ok(after_.set(plant().to("label"), text("works")));
    expect_ok(after_.set(rack(1, "south").to("note"), text("moved")));
    expect_ok(after_.set(rack(1, "south").to("power").to("feed", {num(7)}).to("note"), text("A")));
    EXPECT_EQ(changes(), (Lines{
                             "  /plant/label: - -> works",
                             "  /plant/rack{1 south}/note: by the door -> moved",
                             "  /plant/rack{1 south}/power/feed{7}/note: - -> A",
                         }));
}

TEST_F(ChangesTest, RemovedLeaf_IsToldAsAbsentAfter)
{
    expect_ok(after_.remove(rack(1, "south").to("note")));
    EXPECT_EQ(changes(), Lines{"  /plant/rack{1 south}/note: by the door -> -"});
}

TEST_F(ChangesTest, CreatedAndDeletedEntries_AreToldOnceForAllBelowThem)
{
    expect_ok(after_.remove(rack(1, "south")));
    expect_ok(after_.create(rack(3, "east")));
    expect_ok(after_.set(rack(3, "east").to("note"), text("new")));
    expect_ok(after_.create(rack(3, "east").to("power").to("feed", {num(1)})));
    EXPECT_EQ(changes(), (Lines{"- /plant/rack{1 south}", "+ /plant/rack{3 east}"}));
}

TEST_F(ChangesTest, NestedEntriesAndLeafLists_AreToldBelowTheirEntry)
{
    const PlantPath south = rack(1, "south");
    expect_ok(after_.create(south.to("tag", {text("bright")})));
    expect_ok(after_.remove(south.to("tag", {text("cold")})));
    expect_ok(after_.remove(south.to("power").to("feed")));
    expect_ok(after_.create(plant().to("office").to("phone", {num(42)})));
    EXPECT_EQ(changes(), (Lines{
                             "+ /plant/office/phone{42}",
                             "- /plant/rack{1 south}/power/feed{7}",
                             "+ /plant/rack{1 south}/tag{bright}",
                             "- /plant/rack{1 south}/tag{cold}",
                         }));
}

TEST_F(ChangesTest, PresenceContainers_AreToldLikeLeaves)
{
    expect_ok(after_.create(plant().to("alarm")));
    expect_ok(after_.set(plant().to("alarm").to("delay"), num(9)));
    EXPECT_EQ(changes(), (Lines{"  /plant/alarm: - -> present", "  /plant/alarm/delay: - -> 9"}));
    EXPECT_EQ(::changes(after_, before_), (Lines{"  /plant/alarm: present -> -", "  /plant/alarm/delay: 9 -> -"}));
}

TEST_F(ChangesTest, Changes_ComeInTheOrderOfSchemaAndKeys)
{
    expect_ok(after_.set(rack(2, "north").to("width"), num(21)));
    expect_ok(after_.create(rack(2, "north").to("tag", {text("dry")})));
    expect_ok(after_.set(rack(2, "north").to("power").to("watts"), num(900)));
    expect_ok(after_.set(rack(1, "north").to("note"), text("first")));
    expect_ok(after_.set(plant().to("office").to("floor"), num(4)));
    EXPECT_EQ(changes(), (Lines{
                             "  /plant/office/floor: - -> 4",
                             "  /plant/rack{1 north}/note: - -> first",
                             "  /plant/rack{2 north}/width: - -> 21",
                             "  /plant/rack{2 north}/power/watts: - -> 900",
                             "+ /plant/rack{2 north}/tag{dry}",
                         }));
}

TEST_F(ChangesTest, MovedEntry_IsToldAsDeletedAndCreated)
{
    expect_ok(after_.move(rack(1, "south"), {num(5), text("west")}));
    EXPECT_EQ(changes(), (Lines{"- /plant/rack{1 south}", "+ /plant/rack{5 west}"}));
}

TEST_F(ChangesTest, Trails_LeadThroughTheRowsOfAfter)
{
    class Rows : public ChangeVisitor {
    public:
        void entry_created(const Trail& around, const Row& /*entry*/) override { created_around = around; }
        void entry_deleted(const Trail& around, const Row& /*entry*/) override { deleted_around = around; }
        void leaf_changed(const Trail& row, const Node& /*leaf*/, const Value& /*b*/, const Value& /*a*/) override
        {
            leaf_row = row;
        }
        Trail created_around;
        Trail deleted_around;
        Trail leaf_row;
    };
    const PlantPath south = rack(1, "south");
    expect_ok(after_.set(south.to("power").to("feed", {num(7)}).to("note"), text("A")));
    expect_ok(after_.create(south.to("tag", {text("dry")})));
    expect_ok(after_.remove(rack(2, "north")));
    Rows rows;
    walk_changes(before_, after_, rows);
    const Row* rack_row = after_.find_row(south);
    EXPECT_EQ(rows.created_around, Trail{rack_row});
    EXPECT_EQ(rows.deleted_around, Trail{});
    EXPECT_EQ(rows.leaf_row, (Trail{rack_row, after_.find_row(south.to("power").to("feed", {num(7)}))}));
}

// Applies random writes to a copy; the walk must tell what a look at every leaf and entry of both tells.
class RandomChanges : public testing::TestWithParam<unsigned> {
protected:
    uint64_t pick(uint64_t below) { return std::uniform_int_distribution<uint64_t>(0, below - 1)(random_); }

    void write(Configuration& configuration)
    {
        const PlantPath row = rack(pick(300), pick(2) == 0 ? "north" : "south");
        const PlantPath feed = row.to("power").to("feed", {num(pick(3))});
        switch (pick(7)) {
            case 0:
            case 1:
                count(configuration.create(row));
                break;
            case 2:
                count(configuration.remove(row));
                break;
            case 3:
                count(configuration.set(row.to("width"), num(pick(3))));
                break;
            case 4:
                count(configuration.create(feed));
                break;
            case 5:
                count(configuration.set(feed.to("note"), text(pick(2) == 0 ? "A" : "B")));
                break;
            default:
                count(configuration.remove(feed));
        }
    }

    // Every leaf and entry of the configuration, by path: what is there, without order or sharing.
    static std::vector<std::pair<std::string, std::string>> everything(const Configuration& configuration)
    {
        std::vector<std::pair<std::string, std::string>> all;
        configuration.find_list(plant().to("rack"))->for_each([&](const Row& row) {
            add_row({}, row, &all);
            row.list(rack(0, "").to("power").to("feed").node().slot).for_each([&](const Row& feed) {
                add_row({&row}, feed, &all);
            });
        });
        return all;
    }

    static void add_row(Trail trail, const Row& row, std::vector<std::pair<std::string, std::string>>* all)
    {
        all->emplace_back(keypath(trail, &row), "entry");
        trail.push_back(&row);
        for (const Node* leaf : row.record().values) {
            if (row.value(leaf->slot)) {
                all->emplace_back(keypath(trail, *leaf), shown(*leaf, row.value(leaf->slot)));
            }
        }
    }

    void count(Result result) { done_ += result == Result::Ok ? 1U : 0U; }

    std::mt19937 random_{GetParam()};
    std::size_t done_ = 0;
};

// Carries the changes over to another configuration, entry by entry and leaf by leaf.
class Replay : public ChangeVisitor {
public:
    explicit Replay(Configuration configuration) : configuration_(std::move(configuration)) {}

    void entry_created(const Trail& around, const Row& entry) override
    {
        const Path path = path_of(around, &entry);
        EXPECT_EQ(configuration_.create(path), Result::Ok) << keypath(around, &entry);
        Row& row = *configuration_.edit_row(path);
        for (uint16_t slot = 0; slot < entry.record().values.size(); ++slot) {
            row.value(slot) = entry.value(slot);
        }
        for (uint16_t slot = 0; slot < entry.record().lists.size(); ++slot) {
            row.list(slot) = entry.list(slot);
        }
    }
    void entry_deleted(const Trail& around, const Row& entry) override
    {
        EXPECT_EQ(configuration_.remove(path_of(around, &entry)), Result::Ok) << keypath(around, &entry);
    }
    void leaf_changed(const Trail& row, const Node& leaf, const Value& before, const Value& after) override
    {
        Path path = path_of(row, nullptr);
        path.node = &leaf;
        EXPECT_EQ(configuration_.find_row(path)->value(leaf.slot), before) << keypath(row, leaf);
        EXPECT_EQ(after.absent() ? configuration_.remove(path) : configuration_.set(path, after), Result::Ok);
    }

    const Configuration& configuration() const { return configuration_; }

private:
    static Path path_of(const Trail& around, const Row* entry)
    {
        Trail rows = around;
        if (entry != nullptr) {
            rows.push_back(entry);
        }
        Path path;
        for (const Row* row : rows) {
            path.node = row->record().owner;
            path.entries.push_back({path.node, {row->keys(), row->keys() + row->record().keys}, -1});
        }
        return path;
    }

    Configuration configuration_;
};

TEST_P(RandomChanges, WhatIsTold_TurnsOneConfigurationIntoTheOther)
{
    Configuration before(plant_schema());
    for (int i = 0; i < 3000; ++i) {
        write(before);
    }
    for (const int writes : {1, 10, 100, 2000}) {
        Configuration after = before;
        for (int i = 0; i < writes; ++i) {
            write(after);
        }
        Replay replay(before);
        walk_changes(before, after, replay);
        EXPECT_EQ(everything(replay.configuration()), everything(after));
        EXPECT_EQ(changes(replay.configuration(), after), Lines{});
    }
    EXPECT_GT(done_, 1000U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomChanges, testing::Range(0U, 5U));

// Keypaths.

class KeypathTest : public ChangesTest {
protected:
    static std::string key(const std::string& characters)
    {
        std::string written;
        bgp_platform::store::append_key(*rack(1, "").to("name").node().type, text(characters), &written);
        return written;
    }
};

TEST_F(KeypathTest, Root_IsEmpty)
{
    EXPECT_EQ(keypath({}, nullptr), "");
}

TEST_F(KeypathTest, RowsAndNodes_AreToldWithTheContainersOnTheWay)
{
    const Row* south = before_.find_row(rack(1, "south"));
    const PlantPath feed = rack(1, "south").to("power").to("feed", {num(7)});
    EXPECT_EQ(keypath({}, south), "/plant/rack{1 south}");
    EXPECT_EQ(keypath({south}, nullptr), "/plant/rack{1 south}");
    EXPECT_EQ(keypath({south}, before_.find_row(feed)), "/plant/rack{1 south}/power/feed{7}");
    EXPECT_EQ(keypath({south}, feed.node()), "/plant/rack{1 south}/power/feed");
    EXPECT_EQ(keypath({south}, rack(1, "").to("note").node()), "/plant/rack{1 south}/note");
    EXPECT_EQ(keypath({}, plant().to("office").to("floor").node()), "/plant/office/floor");
}

TEST_F(KeypathTest, KeyText_IsTheWholeTuple)
{
    EXPECT_EQ(key_text(*before_.find_row(rack(2, "north"))), "2 north");
    EXPECT_EQ(key_text(*before_.find_row(rack(1, "south").to("tag", {text("cold")}))), "cold");
    expect_ok(after_.create(rack(3, "far east")));
    EXPECT_EQ(keypath({}, after_.find_row(rack(3, "far east"))), "/plant/rack{3 \"far east\"}");
}

TEST_F(KeypathTest, PlainKeys_AreNotQuoted)
{
    EXPECT_EQ(key("red"), "red");
    EXPECT_EQ(key("ge-0/0/1.5:a[2]"), "ge-0/0/1.5:a[2]");
}

TEST_F(KeypathTest, KeysThatWouldBeReadOtherwise_AreQuoted)
{
    EXPECT_EQ(key(""), R"("")");
    EXPECT_EQ(key("a b"), R"("a b")");
    EXPECT_EQ(key("tab\there"), "\"tab\there\"");
    EXPECT_EQ(key("{"), R"("{")");
    EXPECT_EQ(key("a}"), R"("a}")");
    EXPECT_EQ(key(R"(say "hi")"), R"("say \"hi\"")");
    EXPECT_EQ(key(R"(a\b)"), R"("a\\b")");
}

}  // namespace

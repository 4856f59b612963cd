// The arrows between the rooms of platform and command, and of the contract: the includes against the drawing in ARCHITECTURE.md.
#include <gtest/gtest.h>
#include <regex.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/source_tree.h"

namespace {

namespace fs = std::filesystem;
using bgp_test::kHome;

// Whose files are checked. A folder in one of these is a room; so is a file that stands beside the folders, with its
// header.
const std::vector<std::string> kChecked = {"platform/embedded", "tools/bgp-rehearse"};

// Checked as one room.
const std::string kContract = "contract";

// Where an include is looked for after its file's own folder.
const std::vector<std::string> kRoots = {
    "tools/bgp-rehearse", "platform/embedded", "platform/include", "include", "src", ""};

// Paths from the source tree's top.
struct Include {
    std::string from;
    std::string to;  // empty: no file of the tree has the name
    std::string text;
};

using Includes = std::vector<Include>;
using Graph = std::map<std::string, std::set<std::string>>;

bool begins_with(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

// The room a file is in; empty for the device's interfaces, which everything may include.
std::string room_of(const std::string& file)
{
    if (begins_with(file, "platform/include/")) {
        return {};
    }
    for (const std::string& home : kChecked) {
        if (begins_with(file, home + "/")) {
            const fs::path inside = fs::path(file).lexically_relative(home);
            return inside.has_parent_path() ? inside.begin()->string() : inside.stem().string();
        }
    }
    return begins_with(file, "src/") || begins_with(file, "include/") ? "product" : fs::path(file).begin()->string();
}

std::string found_file(const fs::path& from, const std::string& name)
{
    std::vector<fs::path> places = {from.parent_path()};
    places.insert(places.end(), kRoots.begin(), kRoots.end());
    for (const fs::path& place : places) {
        const fs::path file = (place / name).lexically_normal();
        if (fs::is_regular_file(kHome / file)) {
            return file.string();
        }
    }
    return {};
}

// Headers of the system and of libraries are left out.
void add_includes(const fs::path& file, Includes* includes)
{
    regex_t include;
    ASSERT_EQ(regcomp(&include, "^[[:space:]]*#[[:space:]]*include[[:space:]]+([<\"])([^\">]+)[\">]", REG_EXTENDED), 0);
    std::ifstream stream(kHome / file);
    for (std::string line; std::getline(stream, line);) {
        regmatch_t match[3];
        if (regexec(&include, line.c_str(), 3, match, 0) != 0) {
            continue;
        }
        const auto start = static_cast<std::size_t>(match[2].rm_so);
        const std::string name = line.substr(start, static_cast<std::size_t>(match[2].rm_eo) - start);
        const bool quoted = line[static_cast<std::size_t>(match[1].rm_so)] == '"';
        const std::string to = found_file(file, name);
        if (quoted || !to.empty()) {
            includes->push_back({file.string(), to, name});
        }
    }
    regfree(&include);
}

Includes all_includes()
{
    Includes includes;
    std::vector<std::string> homes = kChecked;
    homes.push_back(kContract);
    for (const std::string& home : homes) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kHome / home)) {
            const fs::path extension = entry.path().extension();
            if (extension == ".h" || extension == ".cpp") {
                add_includes(fs::relative(entry.path(), kHome), &includes);
            }
        }
    }
    return includes;
}

// Lines "room -> room room" of the block that opens with ```arrows.
Graph drawn_arrows()
{
    Graph arrows;
    std::ifstream page(kHome / "ARCHITECTURE.md");
    bool inside = false;
    for (std::string line; std::getline(page, line);) {
        if (begins_with(line, "```")) {
            inside = line == "```arrows";
        } else if (inside && !line.empty()) {
            std::istringstream words(line);
            std::string room;
            std::string arrow;
            words >> room >> arrow;
            EXPECT_EQ(arrow, "->") << line;
            for (std::string below; words >> below;) {
                EXPECT_TRUE(arrows[room].insert(below).second) << room << " -> " << below << " is drawn twice";
            }
        }
    }
    return arrows;
}

// The includes that no drawn arrow allows.
std::string not_drawn(const Includes& includes, const Graph& drawn)
{
    std::ostringstream found;
    for (const Include& include : includes) {
        if (include.to.empty()) {
            found << include.from << ": " << include.text << " is not found\n";
            continue;
        }
        const std::string from = room_of(include.from);
        const std::string to = room_of(include.to);
        const auto arrows = drawn.find(from);
        if (!to.empty() && to != from && (arrows == drawn.end() || arrows->second.count(to) == 0)) {
            found << include.from << ": " << include.to << ": " << from << " -> " << to << " is not drawn\n";
        }
    }
    return found.str();
}

// The drawn arrows that no include takes.
std::string not_taken(const Includes& includes, const Graph& drawn)
{
    Graph taken;
    for (const Include& include : includes) {
        taken[room_of(include.from)].insert(room_of(include.to));
    }
    std::string found;
    for (const auto& [room, below] : drawn) {
        for (const std::string& to : below) {
            found += taken[room].count(to) == 0 ? room + " -> " + to + "\n" : "";
        }
    }
    return found;
}

Graph files_of(const Includes& includes)
{
    Graph files;
    for (const Include& include : includes) {
        files[include.from].insert(include.to);
    }
    return files;
}

// A way from `at` on that meets itself: "a -> b -> a"; empty when there is none. `done` are those that lead to none.
std::string circle_from(const Graph& graph, const std::string& at, std::vector<std::string>* way,
                        std::set<std::string>* done)
{
    const auto before = std::find(way->begin(), way->end(), at);
    if (before != way->end()) {
        std::string circle;
        for (auto step = before; step != way->end(); ++step) {
            circle += *step + " -> ";
        }
        return circle + at;
    }
    const auto below = graph.find(at);
    if (below == graph.end() || done->count(at) != 0) {
        return {};
    }
    way->push_back(at);
    for (const std::string& next : below->second) {
        if (const std::string circle = circle_from(graph, next, way, done); !circle.empty()) {
            return circle;
        }
    }
    way->pop_back();
    done->insert(at);
    return {};
}

std::string circle_in(const Graph& graph)
{
    std::set<std::string> done;
    for (const auto& node : graph) {
        std::vector<std::string> way;
        if (const std::string circle = circle_from(graph, node.first, &way, &done); !circle.empty()) {
            return circle;
        }
    }
    return {};
}

TEST(Arrows, EachInclude_FollowsADrawnOne)
{
    const Includes includes = all_includes();
    EXPECT_GT(includes.size(), 100U) << "the checks would find nothing wrong in nothing";
    EXPECT_EQ(not_drawn(includes, drawn_arrows()), "");
}

TEST(Arrows, EachDrawnOne_IsTaken)
{
    const Graph drawn = drawn_arrows();
    EXPECT_GT(drawn.size(), 5U);
    EXPECT_EQ(not_taken(all_includes(), drawn), "");
}

TEST(Arrows, Drawn_RunInNoCircle)
{
    EXPECT_EQ(circle_in(drawn_arrows()), "");
}

TEST(Arrows, Files_IncludeOneAnotherInNoCircle)
{
    EXPECT_EQ(circle_in(files_of(all_includes())), "");
}

TEST(ArrowsPlanted, IncludeThatRunsUp_IsReported)
{
    Includes includes = all_includes();
    includes.push_back({"platform/embedded/schema/type.cpp", "platform/embedded/capi/call.h", "capi/call.h"});
    includes.push_back({"platform/embedded/capi/call.h", "platform/embedded/device.h", "device.h"});
    includes.push_back({"platform/embedded/store/row.cpp", "include/bgp_update/name_hash.h", "name_hash.h"});
    includes.push_back({"platform/embedded/store/row.cpp", "", "rows.h"});
    includes.push_back({"tools/bgp-rehearse/base/child.cpp", "tools/bgp-rehearse/run/run.h", "run/run.h"});
    EXPECT_EQ(not_drawn(includes, drawn_arrows()),
              "platform/embedded/schema/type.cpp: platform/embedded/capi/call.h: schema -> capi is not drawn\n"
              "platform/embedded/capi/call.h: platform/embedded/device.h: capi -> device is not drawn\n"
              "platform/embedded/store/row.cpp: include/bgp_update/name_hash.h: store -> product is not drawn\n"
              "platform/embedded/store/row.cpp: rows.h is not found\n"
              "tools/bgp-rehearse/base/child.cpp: tools/bgp-rehearse/run/run.h: base -> run is not drawn\n");
}

TEST(ArrowsPlanted, ArrowThatNoIncludeTakes_IsReported)
{
    Graph drawn = drawn_arrows();
    drawn["values"].insert("schema");
    EXPECT_EQ(not_taken(all_includes(), drawn), "values -> schema\n");
    EXPECT_EQ(circle_in(drawn), "schema -> values -> schema");
}

TEST(ArrowsPlanted, FilesInACircle_AreReported)
{
    Includes includes = all_includes();
    includes.push_back({"platform/embedded/store/row.h", "platform/embedded/store/list.h", "store/list.h"});
    EXPECT_EQ(circle_in(files_of(includes)),
              "platform/embedded/store/row.h -> platform/embedded/store/list.h -> "
              "platform/embedded/store/list_node.h -> platform/embedded/store/row.h");
}

}  // namespace

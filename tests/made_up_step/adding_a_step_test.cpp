// docs/adding-a-step.md, followed. The files of a made-up step lie in tree/ as they would in the project. The step is added
// to a copy of the sources: with all its places no check speaks up; with one of them left out one does, and says what is
// missing. What a place does not change is not built again, it is taken from the build that this test belongs to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/run_command.h"
#include "support/scratch_folder.h"
#include "support/source_tree.h"
#include "support/text_lines.h"

namespace bgp_test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

const std::string kName = "ospf_pe_ce";

// As the guide numbers them. The description of the ABI is renewed by a command.
enum class Place { Step, Declaration, Call, Export, Promise, Lists, Test, Abi, None };

// A file of the step or, with a line, a file of the project in which that comes to stand before another.
struct Piece {
    Place place;
    const char* file;
    const char* line = nullptr;
    const char* before = nullptr;
};

constexpr Piece kPieces[] = {
    {Place::Step, "src/config_update/bgp_update_ospf_pe_ce.cpp"},
    {Place::Declaration, "include/bgp_update/ospf_pe_ce.h"},
    {Place::Call, "src/config_update/bgp_update.cpp", R"(#include "bgp_update/ospf_pe_ce.h")",
     R"(#include "bgp_update/prefix_list.h")"},
    {Place::Call, "src/config_update/bgp_update.cpp", "    update_ospf_pe_ce(maapi_socket, thandle, cdb_socket);",
     R"(    nzmw_log_debug(log, "Finishing BGP update\n");)"},
    {Place::Export, "contract/libbgp_update.map", R"x(            "update_ospf_pe_ce(int, int, int)";)x",
     R"x(            "update_ipv6(int, int, int)";)x"},
    {Place::Promise, "contract/steps/update_ospf_pe_ce.h"},
    {Place::Promise, "contract/steps.h", R"(#include "contract/steps/update_ospf_pe_ce.h")",
     R"(#include "contract/steps/update_prefix_list.h")"},
    {Place::Promise, "contract/steps.h", "    kUpdateOspfPeCe,", "};"},
    {Place::Lists, "contract/texts.txt", R"("src/config_update/bgp_update_ospf_pe_ce")", R"("src/daemon/bgp_utils")"},
    {Place::Lists, "contract/texts.txt", R"("Starting OSPF PE-CE update\n")", R"("Starting BGP update\n")"},
    {Place::Lists, "contract/texts.txt", R"("PE-CE support is %d already\n")", R"("Starting BGP update\n")"},
    {Place::Lists, "contract/texts.txt", R"("Failed to set the PE-CE support, err: %s\n")",
     R"("Starting BGP update\n")"},
    {Place::Lists, "contract/texts.txt", R"("Finishing OSPF PE-CE update\n")", R"("Starting BGP update\n")"},
    {Place::Lists, "contract/keypaths.txt", R"("/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry")", R"("/prefix-list")"},
    {Place::Lists, "contract/keypaths.txt",
     R"("/DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{%*x}/ospfPmEntVpnPeCeSupport")", R"("/prefix-list")"},
    {Place::Lists, "contract/asserted_types.txt", R"("(&stored)->type == C_ENUM_VALUE")",
     R"("(&temp)->type == C_ENUM_VALUE")"},
    {Place::Lists, "contract/signatures.txt", R"x("int32_t update_ospf_pe_ce(int32_t, int32_t, int32_t)")x",
     R"x("int update_vrf_ipv6(int, int, int, int)")x"},
    {Place::Test, "tests/unit/bgp_update_ospf_pe_ce_test.cpp"},
    {Place::Test, "tests/support/exported_functions.cpp", R"(#include "bgp_update/ospf_pe_ce.h")",
     R"(#include "bgp_update/prefix_list.h")"},
    {Place::Test, "tests/support/exported_functions.cpp",
     R"x(    {"update_ospf_pe_ce(int, int, int)", Memory::None, [](Workbench& on) { update_ospf_pe_ce(on.maapi, on.thandle, on.cdb); }},)x",
     R"x(    {"update_vrf_ipv6(int, int, int, int)", Memory::None,)x"},
    {Place::Abi, "contract/libbgp_update.abi", "    <elf-symbol name='_Z17update_ospf_pe_ceiii'/>",
     "  </elf-function-symbols>"},
};

// A call of each exported function, for the tests of what these do without memory.
constexpr char kCalls[] = "tests/support/exported_functions.cpp";

// OSPF entity 1 says that it supports the procedures, entity 2 says nothing.
constexpr char kStored[] = R"(<config xmlns="http://tail-f.com/ns/config/1.0">
<DC-OSPF-MIB xmlns="http://tail-f.com/ns/mibs/DC-OSPF-MIB"><ospfPmEntTable>
<ospfPmEntEntry><ospfPmEntIndex>1</ospfPmEntIndex><ospfPmEntVpnPeCeSupport>true</ospfPmEntVpnPeCeSupport></ospfPmEntEntry>
<ospfPmEntEntry><ospfPmEntIndex>2</ospfPmEntIndex></ospfPmEntEntry>
</ospfPmEntTable></DC-OSPF-MIB></config>
)";

std::vector<std::string> parts_of(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        if (!part.empty()) {
            parts.push_back(part);
        }
    }
    return parts;
}

bool ends_with(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// A copy of the sources with the made-up step in it, and what is built from that.
class Tree {
public:
    explicit Tree(Place left_out = Place::None)
    {
        for (const char* folder : {"src", "include", "contract"}) {
            fs::copy(kHome / folder, root() / folder, fs::copy_options::recursive | fs::copy_options::copy_symlinks);
        }
        for (const char* folder : {"lib", "bin", "tests/unit", "tests/support"}) {
            fs::create_directories(root() / folder);
        }
        fs::copy(kHome / kCalls, root() / kCalls);
        for (const Piece& piece : kPieces) {
            if (piece.place != left_out) {
                add(piece);
            }
        }
        folder_.file("stored.xml", kStored);
    }

    CommandResult build_library() const
    {
        std::vector<std::string> sources = {file("src/config_update/bgp_update.cpp")};
        if (fs::exists(file(kPieces[0].file))) {
            sources.emplace_back(file(kPieces[0].file));
        }
        for (const std::string& object : parts_of(BGP_UPDATE_OBJECTS, ':')) {
            if (!ends_with(object, "/bgp_update.cpp.o")) {
                sources.push_back(object);
            }
        }
        return compile("lib/libbgp_update.so", {file("include"), file("src")}, sources,
                       {"-fPIC", "-fvisibility=hidden", "-shared", "-Wl,-z,defs",
                        "-Wl,--version-script=" + file("contract/libbgp_update.map"), BGP_PLATFORM_LIBRARY});
    }

    // bgp-rehearse, with the sources anew that the contract is in.
    CommandResult build_command() const
    {
        std::vector<std::string> sources;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kHome / "tools/bgp-rehearse")) {
            const fs::path& source = entry.path();
            if (source.extension() == ".cpp" &&
                content_of(source).find("#include \"contract/steps.h\"") != std::string::npos) {
                sources.push_back(source);
            }
        }
        for (const std::string& object : parts_of(BGP_REHEARSE_OBJECTS, ':')) {
            sources.push_back(object);
        }
        return compile("bin/bgp-rehearse", {root(), kHome / "tools/bgp-rehearse"}, sources,
                       {BGP_REHEARSE_CORE, BGP_PLATFORM_LIBRARY, BGP_FMT_LIBRARY, "-lnettle", "-larchive", "-lsqlite3",
                        "-lz", "-ldl"});
    }

    CommandResult build_test() const
    {
        return compile(
            "bin/step_test", {file("include"), kHome / "tests", kHome / "src"},
            {file("tests/unit/bgp_update_ospf_pe_ce_test.cpp"), BGP_TEST_SUPPORT_LIBRARY},
            {file("lib/libbgp_update.so"), BGP_PLATFORM_LIBRARY, "-lgtest_main", "-lgmock", "-lgtest", "-lpthread"});
    }

    // The test that calls each exported function, without memory.
    CommandResult build_memory_test() const
    {
        return compile("bin/memory_test",
                       {file("include"), kHome / "tests", kHome / "src", kHome / "tools/bgp-rehearse"},
                       {file(kCalls), kHome / "tests/unit/exported_functions_memory_test.cpp",
                        kHome / "tools/bgp-rehearse/sweep/failing_allocations.cpp", BGP_TEST_SUPPORT_LIBRARY},
                       {R"(-DBGP_UPDATE_LIBRARY="lib/libbgp_update.so")", R"(-DBGP_REHEARSE="bin/bgp-rehearse")",
                        file("lib/libbgp_update.so"), BGP_PLATFORM_LIBRARY, "-lgtest_main", "-lgmock", "-lgtest",
                        "-lpthread", "-ldl"});
    }

    CommandResult run_memory_test() const
    {
        return run_command(
            {"env", "-C", root(), file("bin/memory_test"), "--gtest_filter=ExportedFunctionCalls.*:*ospf_pe_ce*"});
    }

    CommandResult run_test() const { return run_command({file("bin/step_test")}); }

    // Those of the lists, the reported positions and the exported symbols, which look at the folder that they run in.
    CommandResult run_checks() const { return run_command({"env", "-C", root(), BGP_STEP_CHECKS}); }

    // With the command as it is, or as it was built here.
    CommandResult sweep(const std::string& command) const
    {
        return run_command(
            {command, "sweep", "--all-sites", file("stored.xml"), "--library", file("lib/libbgp_update.so")});
    }
    CommandResult report() const
    {
        return run_command({own_command(), "run", file("stored.xml"), "--library", file("lib/libbgp_update.so")});
    }
    std::string own_command() const { return file("bin/bgp-rehearse"); }

private:
    fs::path root() const { return folder_.path(); }
    std::string file(const char* name) const { return root() / name; }

    void add(const Piece& piece) const
    {
        if (piece.line == nullptr) {
            fs::copy(kHome / "tests/made_up_step/tree" / piece.file, root() / piece.file);
            return;
        }
        std::string text = content_of(file(piece.file));
        const std::string before = std::string("\n") + piece.before + "\n";
        const std::size_t place = text.find(before);
        ASSERT_NE(place, std::string::npos) << piece.file << " has no line " << piece.before;
        text.insert(place + 1, std::string(piece.line) + "\n");
        folder_.file(piece.file, text);
    }

    CommandResult compile(const char* output, const std::vector<std::string>& folders,
                          const std::vector<std::string>& sources, const std::vector<std::string>& options) const
    {
        std::vector<std::string> command = {BGP_CXX_COMPILER, "-std=c++17", "-O0", "-o", file(output)};
        for (const std::string& flag : parts_of(BGP_CXX_FLAGS, ' ')) {
            command.push_back(flag);
        }
        for (const std::string& folder : folders) {
            command.push_back("-I" + folder);
        }
        for (const char* folder : {"platform/include", "platform/embedded"}) {
            command.push_back("-I" + (kHome / folder).string());
        }
        command.insert(command.end(), sources.begin(), sources.end());
        command.insert(command.end(), options.begin(), options.end());
        // An object of a library may hold further sources beside one that is built anew here, which comes first.
        command.emplace_back("-Wl,--allow-multiple-definition");
        command.push_back("-Wl,-rpath," + fs::path(BGP_PLATFORM_LIBRARY).parent_path().string());
        return run_command(command);
    }

    ScratchFolder folder_;
};

void expect_success(const CommandResult& result)
{
    EXPECT_EQ(result.status, 0) << result.out << result.err;
}

// The files that the guide's places name, of this step.
std::set<std::string> files_of(const std::string& place)
{
    static const std::regex path("`((src|include|contract|tests)/[^`]+\\.[a-z]+)`");
    std::set<std::string> files;
    for (auto found = std::sregex_iterator(place.begin(), place.end(), path); found != std::sregex_iterator();
         ++found) {
        files.insert(std::regex_replace((*found)[1].str(), std::regex("NAME"), kName));
    }
    return files;
}

TEST(AddingAStep, PlacesOfTheGuide_AreThoseOfTheStep)
{
    const std::string guide = content_of(kHome / "docs/adding-a-step.md");
    static const std::regex item("\n([0-9])\\. ([^\n]*(\n   [^\n]*)*)");
    std::vector<std::set<std::string>> places;
    for (auto found = std::sregex_iterator(guide.begin(), guide.end(), item); found != std::sregex_iterator();
         ++found) {
        places.push_back(files_of((*found)[2]));
    }
    ASSERT_EQ(places.size(), static_cast<std::size_t>(Place::Abi)) << "at most seven";
    std::vector<std::set<std::string>> expected(places.size());
    for (const Piece& piece : kPieces) {
        if (piece.place != Place::Abi) {
            expected[static_cast<std::size_t>(piece.place)].insert(piece.file);
        }
    }
    EXPECT_THAT(places, testing::ContainerEq(expected));
}

TEST(AddingAStep, AllPlaces_NoCheckSpeaksUp)
{
    const Tree tree;
    expect_success(tree.build_library());
    expect_success(tree.run_checks());
    expect_success(tree.build_test());
    expect_success(tree.run_test());
    expect_success(tree.build_memory_test());
    expect_success(tree.run_memory_test());
    expect_success(tree.build_command());
    EXPECT_THAT(tree.report().out, testing::ContainsRegex("update_ospf_pe_ce [^\n]* ran"));
    const std::string swept = tree.sweep(tree.own_command()).out;
    EXPECT_THAT(swept, HasSubstr(" 0 contract breaks"));
    EXPECT_THAT(swept,
                HasSubstr("  maapi_set_elem /DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry{}/ospfPmEntVpnPeCeSupport"));
    EXPECT_THAT(swept, Not(HasSubstr("Not reached: update_ospf_pe_ce")));
}

TEST(AddingAStep, NoSource_TheLibraryDoesNotLink)
{
    EXPECT_THAT(Tree(Place::Step).build_library().err,
                HasSubstr("undefined reference to `update_ospf_pe_ce(int, int, int)'"));
}

TEST(AddingAStep, NoDeclaration_TheLibraryDoesNotCompile)
{
    EXPECT_THAT(Tree(Place::Declaration).build_library().err, HasSubstr("bgp_update/ospf_pe_ce.h: No such file"));
}

TEST(AddingAStep, NoCall_TheReportAndTheSweepMissTheStep)
{
    const Tree tree(Place::Call);
    expect_success(tree.build_library());
    expect_success(tree.build_command());
    EXPECT_THAT(tree.report().out, testing::ContainsRegex("update_ospf_pe_ce [^\n]*did not run: "));
    EXPECT_THAT(tree.sweep(tree.own_command()).out, HasSubstr("Not reached: update_ospf_pe_ce: maapi_init_cursor "));
}

TEST(AddingAStep, NoExport_ItsTestDoesNotLink)
{
    const Tree tree(Place::Export);
    expect_success(tree.build_library());
    EXPECT_THAT(tree.build_test().err, HasSubstr("undefined reference to `update_ospf_pe_ce(int, int, int)'"));
}

TEST(AddingAStep, NoPromise_TheSweepMeetsCallSitesThatItDoesNotKnow)
{
    const Tree tree(Place::Promise);
    expect_success(tree.build_library());
    EXPECT_THAT(tree.sweep(BGP_REHEARSE).out,
                HasSubstr("maapi_init_cursor /DC-OSPF-MIB/ospfPmEntTable/ospfPmEntEntry: a "
                          "call site that the contract does not know"));
}

// The text that a line of a list has in quotes.
std::string as_googletest_shows(const std::string& line)
{
    const std::size_t quote = line.find('"') + 1;
    return std::regex_replace(line.substr(quote, line.size() - 1 - quote), std::regex(R"(\\)"), R"(\\)");
}

// A library built with assertions holds signatures beyond those listed, so that none that is missing can be told.
bool tells_when_missing(const Piece& piece)
{
#ifdef NDEBUG
    return piece.place == Place::Lists;
#else
    return piece.place == Place::Lists && piece.file != std::string("contract/signatures.txt");
#endif
}

TEST(AddingAStep, NotInTheLists_EachMissingTextIsTold)
{
    const Tree tree(Place::Lists);
    expect_success(tree.build_library());
    const CommandResult checks = tree.run_checks();
    EXPECT_EQ(checks.status, 1);
    for (const Piece& piece : kPieces) {
        if (tells_when_missing(piece)) {
            EXPECT_THAT(checks.out, HasSubstr("in the library, not listed: " + as_googletest_shows(piece.line)));
        }
    }
}

TEST(AddingAStep, NoTest_TheMissingCallIsTold)
{
    const Tree tree(Place::Test);
    expect_success(tree.build_library());
    expect_success(tree.build_memory_test());
    EXPECT_THAT(tree.run_memory_test().out,
                HasSubstr(R"x(which doesn't have these expected elements: "update_ospf_pe_ce(int, int, int)")x"));
}

TEST(AddingAStep, AbiNotRenewed_TheSymbolIsTold)
{
    const Tree tree(Place::Abi);
    expect_success(tree.build_library());
    EXPECT_THAT(tree.run_checks().out, HasSubstr("_Z17update_ospf_pe_ceiii"));
}

}  // namespace
}  // namespace bgp_test

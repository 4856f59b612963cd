// The library builds against a device SDK: a folder with the headers and some libraries, and nothing of this project's
// own platform. The SDK made here has our interface headers, and libraries that have every symbol the library asks for.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "cli/run_command.h"
#include "cli/scratch_folder.h"
#include "confd_lib.h"
#include "support/text_lines.h"

namespace {

namespace fs = std::filesystem;
using bgp_test::CommandResult;
using bgp_test::run_command;

const std::string kZlogCall = "zlog";

// The dynamic symbols of a library, defined or undefined.
std::vector<std::string> symbols(const std::string& library, const std::string& which)
{
    const CommandResult nm = run_command({"nm", "-D", "-j", which, library});
    EXPECT_EQ(nm.status, 0) << nm.err;
    std::vector<std::string> names = bgp_test::lines_of(nm.out);
    std::sort(names.begin(), names.end());
    return names;
}

// The embedded platform's library, which this program runs with.
std::string platform_library()
{
    Dl_info info{};
    EXPECT_NE(dladdr(reinterpret_cast<const void*>(&confd_lasterr), &info), 0);
    return info.dli_fname;
}

// What the library takes from the platform.
std::vector<std::string> platform_symbols()
{
    const std::vector<std::string> wanted = symbols(BGP_UPDATE_LIBRARY, "--undefined-only");
    const std::vector<std::string> offered = symbols(platform_library(), "--defined-only");
    std::vector<std::string> both;
    std::set_intersection(wanted.begin(), wanted.end(), offered.begin(), offered.end(), std::back_inserter(both));
    if (!std::binary_search(both.begin(), both.end(), kZlogCall)) {
        both.push_back(kZlogCall);  // the platform was built over the system's zlog
    }
    return both;
}

class DeviceSdk : public testing::Test {
protected:
    void SetUp() override
    {
        fs::create_directories(sdk() / "lib");
        fs::copy(fs::path(BGP_SOURCE_DIR) / "platform/include", sdk() / "include");
    }

    fs::path sdk() const { return fs::path(folder_.path()) / "sdk"; }
    fs::path build() const { return fs::path(folder_.path()) / "build"; }

    // A shared library that has these symbols; what they do does not matter to a linker.
    void makeLibrary(const std::string& name, const std::vector<std::string>& names)
    {
        std::string assembly = ".section .note.GNU-stack,\"\"\n.data\n";
        for (const std::string& symbol : names) {
            assembly += ".globl " + symbol + "\n.type " + symbol + ", @object\n.size " + symbol + ", 8\n" + symbol +
                        ": .quad 0\n";
        }
        const std::string file = "lib" + name + ".so";
        const CommandResult compiled = run_command({BGP_CXX_COMPILER, "-shared", "-nostdlib", "-Wl,-soname," + file,
                                                    "-o", sdk() / "lib" / file, folder_.file(name + ".s", assembly)});
        ASSERT_EQ(compiled.status, 0) << compiled.err;
    }

    // Configures and builds the library alone against the SDK.
    CommandResult buildLibrary()
    {
        const CommandResult configured = run_command({BGP_CMAKE, "-S", BGP_SOURCE_DIR, "-B", build(), "-DBGP_WERROR=ON",
                                                      std::string("-DCMAKE_CXX_COMPILER=") + BGP_CXX_COMPILER,
                                                      "-DBGP_PLATFORM_DIR=" + sdk().string()});
        return configured.status != 0 ? configured : run_command({BGP_CMAKE, "--build", build()});
    }

    std::string library() const { return (build() / "lib/libbgp_update.so").string(); }

    void expectEntryPoints()
    {
        const std::vector<std::string> exported = symbols(library(), "--defined-only");
        for (const char* name : {"update", "update_router_bgp"}) {
            EXPECT_TRUE(std::binary_search(exported.begin(), exported.end(), name)) << name << " is not exported";
        }
    }

    std::string neededLibraries()
    {
        const CommandResult dynamic = run_command({"objdump", "-p", library()});
        EXPECT_EQ(dynamic.status, 0) << dynamic.err;
        return dynamic.out;
    }

private:
    bgp_test::ScratchFolder folder_;
};

TEST_F(DeviceSdk, OneLibrary_IsEnoughToBuildAgainst)
{
    makeLibrary("device", platform_symbols());
    const CommandResult built = buildLibrary();
    ASSERT_EQ(built.status, 0) << built.out << built.err;
    expectEntryPoints();
    EXPECT_NE(neededLibraries().find("libdevice.so"), std::string::npos);
    EXPECT_EQ(neededLibraries().find("libbgp_platform"), std::string::npos);
}

TEST_F(DeviceSdk, ZlogOfItsOwn_IsTakenFromItsLibFolder)
{
    std::vector<std::string> others = platform_symbols();
    others.erase(std::remove(others.begin(), others.end(), kZlogCall), others.end());
    makeLibrary("device", others);
    makeLibrary("zlog", {kZlogCall});
    const CommandResult built = buildLibrary();
    ASSERT_EQ(built.status, 0) << built.out << built.err;
    expectEntryPoints();
    EXPECT_NE(neededLibraries().find("libzlog.so"), std::string::npos);
}

TEST_F(DeviceSdk, SymbolThatNoLibraryHas_FailsTheBuildNamingIt)
{
    std::vector<std::string> others = platform_symbols();
    others.erase(std::remove(others.begin(), others.end(), "maapi_create"), others.end());
    makeLibrary("device", others);
    const CommandResult built = buildLibrary();
    EXPECT_NE(built.status, 0);
    EXPECT_NE((built.out + built.err).find("maapi_create"), std::string::npos) << built.out << built.err;
}

TEST_F(DeviceSdk, FolderWithoutLib_IsRefusedByName)
{
    fs::remove(sdk() / "lib");
    const CommandResult built = buildLibrary();
    EXPECT_NE(built.status, 0);
    EXPECT_NE((built.out + built.err).find(sdk().string()), std::string::npos) << built.out << built.err;
}

}  // namespace

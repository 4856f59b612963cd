// The library builds against a device SDK: a folder with the headers and some libraries, and nothing of this project's
// own platform. The SDK made here has our interface headers, and libraries that have every symbol the library asks for.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "confd_lib.h"
#include "support/run_command.h"
#include "support/scratch_folder.h"
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

std::vector<std::string> platform_symbols_but(const std::string& left_out)
{
    std::vector<std::string> others = platform_symbols();
    others.erase(std::remove(others.begin(), others.end(), left_out), others.end());
    return others;
}

class DeviceSdk : public testing::Test {
protected:
    void SetUp() override
    {
        fs::create_directories(sdk() / "lib");
        fs::copy(fs::path(BGP_SOURCE_DIR) / "platform/include", sdk() / "include");
    }

    fs::path sdk() const { return fs::path(folder_.path()) / "sdk"; }
    fs::path installed() const { return fs::path(folder_.path()) / "installed"; }
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
        const CommandResult configured =
            run_command({BGP_CMAKE, "-S", BGP_SOURCE_DIR, "-B", build(), "-DBGP_WERROR=ON",
                         std::string("-DCMAKE_CXX_COMPILER=") + BGP_CXX_COMPILER, "-DCMAKE_BUILD_TYPE=Debug",
                         "-DCMAKE_INSTALL_PREFIX=" + installed().string(), "-DBGP_PLATFORM_DIR=" + sdk().string()});
        return configured.status != 0 ? configured : run_command({BGP_CMAKE, "--build", build(), "--parallel", "2"});
    }

    void installLibrary()
    {
        const CommandResult done = run_command({BGP_CMAKE, "--install", build()});
        ASSERT_EQ(done.status, 0) << done.out << done.err;
    }

    // An SDK whose library lacks a symbol that is called.
    void expectMissingSymbolIsNamed()
    {
        makeLibrary("device", platform_symbols_but("maapi_create"));
        const CommandResult built = buildLibrary();
        EXPECT_NE(built.status, 0);
        EXPECT_NE((built.out + built.err).find("maapi_create"), std::string::npos) << built.out << built.err;
    }

    void expectZlogOfItsOwnIsTaken()
    {
        makeLibrary("device", platform_symbols_but(kZlogCall));
        makeLibrary("zlog", {kZlogCall});
        const CommandResult built = buildLibrary();
        ASSERT_EQ(built.status, 0) << built.out << built.err;
        expectEntryPoints();
        EXPECT_NE(neededLibraries().find("libzlog.so"), std::string::npos);
        fs::remove(sdk() / "lib/libzlog.so");
    }

    void expectOneLibraryIsEnough()
    {
        makeLibrary("device", platform_symbols());
        const CommandResult built = buildLibrary();
        ASSERT_EQ(built.status, 0) << built.out << built.err;
        expectEntryPoints();
        const std::string needed = neededLibraries();
        EXPECT_NE(needed.find("libdevice.so"), std::string::npos);
        EXPECT_EQ(needed.find("libzlog"), std::string::npos);
        EXPECT_EQ(needed.find("libbgp_platform"), std::string::npos);
    }

    // A program that calls the library; the SDK's own symbols are the device's to give.
    std::string callerSource()
    {
        return folder_.file("caller.cpp",
                            "#include <bgp_update/update.h>\nint main() { return update(-1, -1, -1); }\n");
    }

    void expectCallerBuildsByCMake()
    {
        callerSource();
        folder_.file("CMakeLists.txt",
                     "cmake_minimum_required(VERSION 3.25)\nproject(caller LANGUAGES CXX)\n"
                     "find_package(bgp_update 0.1 REQUIRED)\nadd_executable(caller caller.cpp)\n"
                     "target_link_libraries(caller bgp::bgp_update)\n"
                     "target_link_options(caller PRIVATE -Wl,--allow-shlib-undefined)\n");
        const std::string build_folder = (fs::path(folder_.path()) / "caller").string();
        const CommandResult configured = run_command({BGP_CMAKE, "-S", folder_.path(), "-B", build_folder,
                                                      std::string("-DCMAKE_CXX_COMPILER=") + BGP_CXX_COMPILER,
                                                      "-DCMAKE_PREFIX_PATH=" + installed().string()});
        ASSERT_EQ(configured.status, 0) << configured.out << configured.err;
        const CommandResult built = run_command({BGP_CMAKE, "--build", build_folder});
        EXPECT_EQ(built.status, 0) << built.out << built.err;
    }

    void expectCallerBuildsByPkgConfig()
    {
        const std::string search = "PKG_CONFIG_PATH=" + pkgConfigFolder();
        const CommandResult flags = run_command({"pkg-config", "--cflags", "--libs", "bgp_update"}, {search});
        ASSERT_EQ(flags.status, 0) << flags.err;
        std::vector<std::string> command = {BGP_CXX_COMPILER,
                                            "-std=c++17",
                                            callerSource(),
                                            "-o",
                                            (fs::path(folder_.path()) / "by-pkg-config").string(),
                                            "-Wl,--allow-shlib-undefined"};
        std::istringstream words(flags.out);
        command.insert(command.end(), std::istream_iterator<std::string>(words), {});
        const CommandResult built = run_command(command);
        EXPECT_EQ(built.status, 0) << built.err;
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
    // Where the library lies below the prefix differs from system to system.
    std::string pkgConfigFolder() const
    {
        for (const auto& entry : fs::recursive_directory_iterator(installed())) {
            if (entry.path().extension() == ".pc") {
                return entry.path().parent_path().string();
            }
        }
        return {};
    }

    bgp_test::ScratchFolder folder_;
};

// In one case, so that the sources are compiled once: what differs is what they are linked with.
TEST_F(DeviceSdk, LibraryIsBuiltWithWhatTheLibFolderHas)
{
    expectMissingSymbolIsNamed();
    expectZlogOfItsOwnIsTaken();
    expectOneLibraryIsEnough();
    installLibrary();
    expectCallerBuildsByCMake();
    expectCallerBuildsByPkgConfig();
}

TEST_F(DeviceSdk, FolderWithoutLib_IsRefusedByName)
{
    fs::remove(sdk() / "lib");
    const CommandResult built = buildLibrary();
    EXPECT_NE(built.status, 0);
    EXPECT_NE((built.out + built.err).find(sdk().string()), std::string::npos) << built.out << built.err;
}

}  // namespace

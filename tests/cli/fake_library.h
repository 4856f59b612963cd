// Upgrade libraries made for a test: the body of update(), compiled into a library of its own.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/run_command.h"
#include "support/scratch_folder.h"

namespace bgp_test {

// Compiles a library whose update(maapi_socket, thandle, cdb_socket) has that body, and returns its path. The body may
// call the device's interfaces and, as log(...), write to the upgrade log.
inline std::string fake_library(const ScratchFolder& folder, const std::string& body)
{
    // Those of the C++ library take longer to compile than all the rest.
    const bool of_cpp = body.find("std::") != std::string::npos;
    const std::string headers = of_cpp ? "#include <fstream>\n#include <stdexcept>" : "";
    const std::string source = folder.file("fake_library.cpp", headers + R"(
#include <arpa/inet.h>
#include <ifaddrs.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
#include <cassert>
#include <initializer_list>
#include "conf_updt_log.h"
#include "confd_cdb.h"
#include "confd_maapi.h"
#include "fwd_resources.h"
#include "nzmw_fault.h"
#define log(...) nzmw_log_debug(get_conf_updt_log_handle(), __VA_ARGS__)

extern "C" int update([[maybe_unused]] int maapi, [[maybe_unused]] int th, [[maybe_unused]] int cdb)
{
)" + body + "\n}\n");
    const std::string library = folder / "libfake.so";
    const CommandResult compiled = run_command({BGP_CXX_COMPILER, "-std=c++17", "-shared", "-fPIC", "-UNDEBUG",
                                                "-I" BGP_SOURCE_DIR "/platform/include", "-o", library, source});
    EXPECT_EQ(compiled.status, 0) << compiled.err;
    return library;
}

// A stored configuration of one router, AS 65010, with its router id and two prefix lists, "a" and "b".
inline std::string small_configuration(const ScratchFolder& folder)
{
    return folder.file("small.xml", R"(<config xmlns="http://tail-f.com/ns/config/1.0">
  <router xmlns="urn:bgp-update:yang:router">
    <bgp>
      <as-number>65010</as-number>
      <router-id>192.0.2.1</router-id>
    </bgp>
  </router>
  <prefix-list xmlns="urn:bgp-update:yang:prefix-list">
    <name>a</name>
    <seq><number>10</number><address>192.0.2.0/24</address><action>permit</action></seq>
  </prefix-list>
  <prefix-list xmlns="urn:bgp-update:yang:prefix-list">
    <name>b</name>
  </prefix-list>
</config>
)");
}

// What the tests of the command share: a scratch folder with a small configuration in it.
class RehearseTest : public testing::Test {
protected:
    ScratchFolder folder;
    const std::string config = small_configuration(folder);
};

}  // namespace bgp_test

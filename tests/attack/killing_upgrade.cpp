// The upgrade library with a killer at its side: after a chosen call of the ConfD API the process of the upgrade, or the
// command that waits for it, is killed. From the environment:
//
//   BGP_KILL_LIBRARY  the upgrade library
//   BGP_KILL_AFTER    the number of the call, 1 the first; 0: before any call
//   BGP_KILL_WHOM     "upgrade", "command", or "nobody"
//   BGP_KILL_COUNT    a file that gets the number of calls when the upgrade has returned
#include <dlfcn.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include "registry.h"

namespace {

std::string setting(const char* name)
{
    const char* const value = std::getenv(name);
    if (value == nullptr) {
        throw std::runtime_error(std::string(name) + " is not set");
    }
    return value;
}

void strike()
{
    const std::string whom = setting("BGP_KILL_WHOM");
    if (whom == "nobody") {
        return;
    }
    kill(whom == "upgrade" ? getpid() : getppid(), SIGKILL);
    for (;;) {
        pause();  // dies with the command
    }
}

}  // namespace

extern "C" int update(int maapi_socket, int thandle, int cdb_socket)
{
    void* const library = dlopen(setting("BGP_KILL_LIBRARY").c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        throw std::runtime_error(dlerror());
    }
    const auto upgrade = reinterpret_cast<int (*)(int, int, int)>(dlsym(library, "update"));
    const std::size_t due = std::stoul(setting("BGP_KILL_AFTER"));
    std::size_t calls = 0;
    if (due == 0) {
        strike();
    }
    bgp_platform::DeviceState& device = *bgp_platform::Registry::instance().current();
    device.recorder.after_call = [&] {
        if (++calls == due) {
            strike();
        }
    };
    const int result = upgrade(maapi_socket, thandle, cdb_socket);
    device.recorder.after_call = nullptr;
    std::ofstream(setting("BGP_KILL_COUNT")) << calls;
    return result;
}

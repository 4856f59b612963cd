#include "run/library.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <link.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "base/exit_status.h"
#include "base/text_escape.h"

namespace bgp_rehearse {

namespace {

namespace fs = std::filesystem;
constexpr char kLibrary[] = "libbgp_update.so";

std::string asked_library(const std::string& asked)
{
    if (fs::is_directory(asked)) {
        throw CommandError(ExitStatus::BadInput, fmt::format("--library {}: this is a folder", escaped(asked)));
    }
    if (access(asked.c_str(), R_OK) != 0) {
        throw CommandError(ExitStatus::BadInput, fmt::format("--library {}: {}", escaped(asked), std::strerror(errno)));
    }
    return fs::absolute(asked);
}

// What the loader says last, for a library that cannot be used.
[[noreturn]] void refuse(const std::string& file)
{
    const char* reason = dlerror();
    throw CommandError(ExitStatus::BadInput,
                       fmt::format("the upgrade library {} cannot be used: {}\nname another one with --library PATH",
                                   escaped(file), escaped(reason == nullptr ? "no reason given" : reason)));
}

}  // namespace

std::string find_library(const std::string& asked)
{
    if (!asked.empty()) {
        return asked_library(asked);
    }
    std::error_code failed;
    const fs::path folder = fs::read_symlink("/proc/self/exe", failed).parent_path();
    for (const char* place : {"", BGP_REHEARSE_INSTALLED_LIBRARY_FOLDER, BGP_REHEARSE_BUILD_LIBRARY_FOLDER}) {
        const fs::path candidate = (folder / place / kLibrary).lexically_normal();
        if (!failed && fs::exists(candidate, failed)) {
            return candidate;
        }
        failed.clear();
    }
    return kLibrary;
}

UpgradeLibrary::UpgradeLibrary(const std::string& file) : path_(file)
{
    void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        refuse(file);
    }
    void* entry = dlsym(handle, "update");
    if (entry == nullptr) {
        refuse(file);
    }
    update_ = reinterpret_cast<int (*)(int, int, int)>(entry);
    link_map* loaded = nullptr;
    if (dlinfo(handle, RTLD_DI_LINKMAP, &loaded) == 0 && loaded->l_name[0] != '\0') {
        path_ = loaded->l_name;
    }
}

}  // namespace bgp_rehearse

// The upgrade library: where it is found, and how it is opened.
#pragma once

#include <string>

namespace bgp_rehearse {

// The file to open. A path that was asked for must be a readable file (else CommandError). Without one, the library
// that lies beside the executable or, seen from there, where an installation or this build puts it; and when there is
// none, the bare name, which leaves the search to the loader.
std::string find_library(const std::string& asked);

// An upgrade library, opened as the update framework opens it. It stays open as long as the process lives.
class UpgradeLibrary {
public:
    // Throws CommandError when the file cannot be opened or does not export update().
    explicit UpgradeLibrary(const std::string& file);

    const std::string& path() const noexcept { return path_; }  // of the file that the loader took
    int update(int maapi_socket, int thandle, int cdb_socket) const
    {
        return update_(maapi_socket, thandle, cdb_socket);
    }

private:
    std::string path_;
    int (*update_)(int, int, int);
};

}  // namespace bgp_rehearse

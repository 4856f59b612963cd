// A git repository: the files of its newest commit (of HEAD), and their bytes. Both come from git itself, which must be
// installed where a fleet has repositories.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "fleet/plan/git_process.h"
#include "fleet/plan/input_error.h"

namespace bgp_rehearse {

// Whether a folder is a bare repository, or the working folder of one.
bool is_repository(const std::string& folder);

struct RepositoryFile {
    enum class Kind { File, Link, Submodule };

    Kind kind = Kind::File;
    std::string path;
    std::string object;
    uint64_t bytes = 0;
};

// Throws InputError with git's own words.
void each_file_of(const std::string& repository, const std::function<void(const RepositoryFile&)>& take);

// Gives the content of objects, all from one git process.
class ObjectReader {
public:
    explicit ObjectReader(const std::string& repository);

    // Throws InputError where the repository does not have the object, or it has more than so many bytes.
    std::string read(const std::string& object, uint64_t max_bytes);

private:
    void skip(uint64_t bytes);

    GitProcess git_;
};

}  // namespace bgp_rehearse

// What is gathered while inputs are looked for, from whatever they are found in.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "base/sha256.h"
#include "fleet/plan/found.h"
#include "fleet/plan/input_error.h"
#include "fleet/plan/stored_file.h"

namespace bgp_rehearse {

// Why something is no input.
inline constexpr char kOtherName[] = "another name";
inline constexpr char kReachedTwice[] = "reached twice";
inline constexpr char kSpecial[] = "device, pipe or socket";

// A path as people write it: without "./" and "a/../", and without a slash at the end.
std::string tidy_path(const std::string& path);

class Collection {
public:
    Collection(bool all_names, uint64_t max_bytes);

    bool wants(std::string_view name) const;
    uint64_t max_bytes() const noexcept { return max_bytes_; }
    std::string absolute(const std::string& path) const;  // tidy, too

    uint32_t add_place(FoundPlace place);
    FoundPlace& place(uint32_t place) { return found_.places[place]; }

    // False: this archive or repository was looked into before.
    bool enter(const std::string& path);

    void pass_over(const std::string& why, std::size_t count = 1);
    void remark(std::string text) { found_.remarks.push_back(std::move(text)); }

    // Adds a file of the system.
    void add_file(uint32_t place, std::string name, const std::string& path);

    // Adds an input whose bytes `read` hands over; what it throws makes the input one that a worker refuses.
    void add(FoundInput input, const std::function<void(const TakePiece&)>& read);

    std::size_t size() const noexcept { return found_.inputs.size(); }

    // Of the inputs from the first on that have one name, the one with the highest index stays.
    void drop_older(std::size_t first);

    // Takes out what was reached twice, and puts all in the order of their names. Throws CommandError (BadInput) for two
    // inputs with one name.
    Found settled();

private:
    // A file of the system by its identity, which all its names share.
    struct Identity {
        dev_t device;
        ino_t inode;
        std::size_t input;
    };
    using Identities = std::vector<Identity>::const_iterator;

    void refuse_input(const std::string& why, FoundInput* input);
    void drop_files_reached_twice();
    void note_all_but_one(Identities first, Identities end, std::vector<std::size_t>* dropped) const;
    void sort();

    bool all_names_;
    uint64_t max_bytes_;
    std::string here_;
    Found found_;
    Sha256 hash_;
    std::vector<Identity> identities_;
    std::set<std::string> containers_;
    ProgressLine progress_;
};

}  // namespace bgp_rehearse

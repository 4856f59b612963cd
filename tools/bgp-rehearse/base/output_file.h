// A file that appears whole or not at all: it is written under another name in the same folder and renamed when it is
// done.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace bgp_rehearse {

// The file that a name of the command line stands for: a symbolic link is followed, also one whose target is not there.
// Throws CommandError, naming the option, when it could not be replaced: its folder is missing or not writable, or it
// is there and is no ordinary file or is write-protected.
std::string replaceable_file(const std::string& option, const std::string& name);

// Throws CommandError when the two names stand for one file, whatever links lead to it: writing the one would lose the
// other.
void refuse_same_file(const std::string& option, const std::string& name, const std::string& what,
                      const std::string& other);

// Who may read and write a file besides its owner.
struct Readers {
    mode_t mode = 0066;          // the bits of group and others
    std::optional<gid_t> group;  // whom those of the group are for; none: any group
};

// Those of a file, whom what is made of it is for; nobody where that cannot be told.
Readers readers_of(const std::string& file);

class OutputFile {
public:
    // Makes the temporary file, empty, with the mode of the file that it will replace, else as the umask says; either way
    // for nobody besides its owner and `most`. `target` comes from replaceable_file(). Throws CommandError (BadInput).
    OutputFile(const std::string& option, std::string target, const Readers& most = {});

    // Removes the temporary file when it was not put in place.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    int descriptor() const noexcept { return descriptor_; }
    const std::string& target() const noexcept { return target_; }
    const std::string& temporary() const noexcept { return temporary_; }  // its name until it is in place

    // Writes all of the text behind what was written before. Throws CommandError (NotWritten).
    void write(std::string_view text) const;

    // Puts the file in place: content, then name, both on the disk when this returns. Throws CommandError (NotWritten)
    // with the old file untouched, or telling that the new one is there but its name not yet on the disk.
    void put_in_place();

private:
    void make_temporary(const std::string& option);
    void sync_folder() const;

    std::string target_;
    std::string folder_;
    std::string temporary_;  // empty once it is in place
    int descriptor_ = -1;
};

// Writes all of the text to a descriptor. False: it failed, and errno says why.
[[nodiscard]] bool write_all(int descriptor, const char* text, std::size_t size) noexcept;

}  // namespace bgp_rehearse

// A file of the system, read piece by piece.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "fleet/plan/input_error.h"
#include "xml/source.h"

namespace bgp_rehearse {

using TakePiece = std::function<void(std::string_view)>;

class StoredFileSource : public bgp_platform::xml::Source {
public:
    // Throws InputError for what cannot be opened, and for what is no ordinary file.
    explicit StoredFileSource(const std::string& path, uint64_t offset = 0);
    ~StoredFileSource() override;

    // Throws InputError.
    std::size_t read(char* buffer, std::size_t size) override;

    uint64_t bytes() const noexcept { return bytes_; }
    dev_t device() const noexcept { return device_; }
    ino_t inode() const noexcept { return inode_; }

private:
    int descriptor_;
    uint64_t bytes_ = 0;
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

// Hands over all bytes of a source. Throws InputError where there are more than so many.
void read_all(bgp_platform::xml::Source* source, uint64_t max_bytes, const TakePiece& take);

}  // namespace bgp_rehearse

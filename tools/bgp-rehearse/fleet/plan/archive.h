// An archive of files, read forward, entry by entry. Nothing of it is ever put on a disk: names are only names.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "fleet/plan/stored_file.h"

namespace bgp_rehearse {

struct ArchiveEntry {
    enum class Kind { File, Folder, Link, Special };

    std::size_t index = 0;  // among all entries, from 0
    std::string name;       // its bytes
    Kind kind = Kind::File;
    std::optional<uint64_t> offset;  // of its header in the file; none where that is compressed
};

class ArchiveReader {
public:
    // Throws InputError for what cannot be read. With an offset (ArchiveEntry::offset) the entry there is the first.
    explicit ArchiveReader(const std::string& path, std::optional<uint64_t> offset = std::nullopt);
    ~ArchiveReader();
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    // False: the file is no archive, but a file that is perhaps compressed.
    bool has_entries() const noexcept { return has_entries_; }

    // Whether entries can be read alone, by their offsets.
    bool has_offsets() const noexcept { return has_offsets_; }

    // The entry that follows; none at the end. Throws InputError for an archive that is damaged or cut off.
    std::optional<ArchiveEntry> next();

    // The bytes of the entry that next() gave last. Throws InputError, likewise, and when it has more than so many.
    void read(uint64_t max_bytes, const TakePiece& take);

private:
    struct Stream;
    int next_header();

    std::unique_ptr<Stream> stream_;
    bool gzip_ = false;
    bool has_entries_ = false;
    bool has_offsets_ = false;
    uint64_t start_ = 0;
    bool ended_ = false;
    bool peeked_ = true;  // the first header has been read, and not been given
    std::size_t index_ = 0;
};

}  // namespace bgp_rehearse

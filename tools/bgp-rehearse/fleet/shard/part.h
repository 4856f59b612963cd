// The results of a shard in a file: a line that says of what, a line for each input, and a line that says that this is all.
//
//     {"part":1,"plan":"3f…","shard":4,"shards":16,"inputs":2}
//     {"n":17,"name":"edge-17.xml",…}
//     {"n":3,"name":"core-1.xml",…}
//     {"results":2,"sha256":"9a…"}          of all bytes before this line
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "base/output_file.h"
#include "base/sha256.h"

namespace bgp_rehearse {

struct PartHeader {
    std::string plan;       // its id
    std::size_t shard = 0;  // from 0
    std::size_t shards = 0;
    std::size_t inputs = 0;
};

// Appears whole or not at all.
class PartWriter {
public:
    // `option` names the file in messages. Throws CommandError (BadInput) where no file can be made.
    PartWriter(const std::string& option, const std::string& file, const PartHeader& header);

    // A result's line, without its line end. Throws CommandError (NotWritten), as does finish().
    void add(std::string_view line);

    // Puts the file in place.
    void finish();

private:
    void put(std::string_view line);
    void write();

    OutputFile file_;
    std::string pending_;
    Sha256 sha256_;
    std::size_t results_ = 0;
};

// A file that is no part, or not a whole one. The text says what is wrong, without the file's name.
class PartError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class PartReader {
public:
    // Reads the first line. Throws PartError.
    explicit PartReader(std::string file);

    const PartHeader& header() const noexcept { return header_; }

    // Gives each result's line and where in the file it begins, in their order. Throws PartError when they have been given
    // and the part turns out to be cut off or changed: what came of them must then be dropped.
    void each(const std::function<void(std::string_view line, uint64_t offset)>& take) const;

private:
    std::string file_;
    PartHeader header_;
};

}  // namespace bgp_rehearse

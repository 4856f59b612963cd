#include "fleet/merge/indexed_part.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

namespace bgp_rehearse {

IndexedPart::IndexedPart(const std::string& file) : file_(file)
{
    const PartReader reader(file);
    header_ = reader.header();
    starts_.reserve(header_.inputs + 1);
    uint64_t end = 0;
    reader.each([&](std::string_view line, uint64_t offset) {
        starts_.push_back(offset);
        end = offset + line.size() + 1;
    });
    starts_.push_back(end);
    descriptor_ = open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor_ < 0) {
        throw PartError(std::strerror(errno));
    }
}

IndexedPart::~IndexedPart()
{
    close(descriptor_);
}

std::string IndexedPart::line(std::size_t result) const
{
    const uint64_t start = starts_[result];
    std::string text(starts_[result + 1] - start - 1, '\0');
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t size =
            pread(descriptor_, text.data() + done, text.size() - done, static_cast<off_t>(start + done));
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size <= 0) {
            throw PartError(size < 0 ? std::strerror(errno) : "it was cut while it was read");
        }
        done += static_cast<std::size_t>(size);
    }
    return text;
}

}  // namespace bgp_rehearse

#include "fleet/plan/stored_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace bgp_rehearse {

namespace {

InputError unreadable(const char* why)
{
    return InputError(std::string("it cannot be read: ") + why);
}

}  // namespace

StoredFileSource::StoredFileSource(const std::string& path, uint64_t offset)
    : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK))
{
    if (descriptor_ < 0) {
        throw unreadable(std::strerror(errno));
    }
    struct stat status {};
    const bool known = fstat(descriptor_, &status) == 0;
    const bool there =
        known && S_ISREG(status.st_mode) && lseek(descriptor_, static_cast<off_t>(offset), SEEK_SET) >= 0;
    if (!there) {
        const int error = errno;
        close(descriptor_);
        throw unreadable(known && !S_ISREG(status.st_mode) ? "it is no ordinary file" : std::strerror(error));
    }
    bytes_ = static_cast<uint64_t>(status.st_size);
    device_ = status.st_dev;
    inode_ = status.st_ino;
}

StoredFileSource::~StoredFileSource()
{
    close(descriptor_);
}

std::size_t StoredFileSource::read(char* buffer, std::size_t size)
{
    ssize_t count = 0;
    do {
        count = ::read(descriptor_, buffer, size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) {
        throw unreadable(std::strerror(errno));
    }
    return static_cast<std::size_t>(count);
}

void read_all(bgp_platform::xml::Source* source, uint64_t max_bytes, const TakePiece& take)
{
    std::array<char, 1 << 16> piece;
    uint64_t bytes = 0;
    while (const std::size_t size = source->read(piece.data(), piece.size())) {
        bytes += size;
        if (bytes > max_bytes) {
            throw TooManyBytes(bytes, max_bytes);
        }
        take({piece.data(), size});
    }
}

}  // namespace bgp_rehearse

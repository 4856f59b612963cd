#include "base/sha256.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace bgp_rehearse {

namespace {

std::string sha256_of_open(int file)
{
    Sha256 hash;
    std::vector<char> piece(1 << 18);
    ssize_t size = 0;
    while ((size = read(file, piece.data(), piece.size())) > 0) {
        hash.add({piece.data(), static_cast<std::size_t>(size)});
    }
    return size < 0 ? std::string() : hash.hex();
}

}  // namespace

Sha256::Sha256()
{
    sha256_init(&context_);
}

void Sha256::add(std::string_view piece)
{
    sha256_update(&context_, piece.size(), reinterpret_cast<const uint8_t*>(piece.data()));
}

Sha256::Digest Sha256::digest()
{
    Digest digest;
    sha256_digest(&context_, digest.size(), digest.data());
    return digest;
}

std::string Sha256::hex()
{
    return hex_of(digest());
}

std::string hex_of(const Sha256::Digest& digest)
{
    return fmt::format("{:02x}", fmt::join(digest, ""));
}

std::string sha256_of(std::string_view bytes)
{
    Sha256 hash;
    hash.add(bytes);
    return hash.hex();
}

std::string sha256_of_file(const std::string& name)
{
    const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        return {};
    }
    struct stat status {};
    const bool ordinary = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    std::string digest = ordinary ? sha256_of_open(file) : std::string();
    close(file);
    return digest;
}

}  // namespace bgp_rehearse

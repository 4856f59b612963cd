#include "base/sha256.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <vector>

namespace bgp_rehearse {

namespace {

struct Freed {
    void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
};

std::string sha256_of(int file)
{
    const std::unique_ptr<EVP_MD_CTX, Freed> context(EVP_MD_CTX_new());
    if (!context || EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) != 1) {
        return {};
    }
    std::vector<char> piece(1 << 18);
    ssize_t size = 0;
    while ((size = read(file, piece.data(), piece.size())) > 0) {
        EVP_DigestUpdate(context.get(), piece.data(), static_cast<std::size_t>(size));
    }
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (size < 0 || EVP_DigestFinal_ex(context.get(), digest, &length) != 1) {
        return {};
    }
    return fmt::format("{:02x}", fmt::join(digest, digest + length, ""));
}

}  // namespace

std::string sha256_of_file(const std::string& name)
{
    const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        return {};
    }
    struct stat status {};
    const bool ordinary = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    std::string digest = ordinary ? sha256_of(file) : std::string();
    close(file);
    return digest;
}

}  // namespace bgp_rehearse

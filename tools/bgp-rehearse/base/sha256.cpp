#include "base/sha256.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

namespace bgp_rehearse {

namespace {

void check(int succeeded)
{
    if (succeeded != 1) {
        throw std::runtime_error("SHA-256 cannot be computed here");
    }
}

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

void Sha256::Freed::operator()(evp_md_ctx_st* context) const noexcept
{
    EVP_MD_CTX_free(context);
}

Sha256::Sha256() : context_(EVP_MD_CTX_new())
{
    check(context_ ? EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) : 0);
}

void Sha256::add(std::string_view piece)
{
    check(EVP_DigestUpdate(context_.get(), piece.data(), piece.size()));
}

Sha256::Digest Sha256::digest()
{
    Digest digest;
    check(EVP_DigestFinal_ex(context_.get(), digest.data(), nullptr));
    check(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
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

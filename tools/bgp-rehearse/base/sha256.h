// What a file or a text is known by.
#pragma once

#include <nettle/sha2.h>

#include <array>
#include <string>
#include <string_view>

namespace bgp_rehearse {

// The SHA-256 of bytes that come piece by piece.
class Sha256 {
public:
    using Digest = std::array<unsigned char, SHA256_DIGEST_SIZE>;

    Sha256();

    void add(std::string_view piece);

    // Of all pieces; then it begins anew.
    Digest digest();
    std::string hex();

private:
    sha256_ctx context_{};
};

std::string hex_of(const Sha256::Digest& digest);

std::string sha256_of(std::string_view bytes);

// The SHA-256 of a file's bytes, in hexadecimal; empty when they cannot be read, or the file is no ordinary one.
std::string sha256_of_file(const std::string& name);

}  // namespace bgp_rehearse

// ConfD's number for a name. ConfD gives every node name its tag, and every module namespace its number, by one hash of
// the name's (or URI's) text; the tagged values of its C API and `cdb_set_namespace` speak in these numbers.
#pragma once

#include <cstdint>
#include <string_view>

namespace bgp_update {

namespace name_hash_detail {

struct Words {
    uint32_t a, b, c;
};

constexpr Words mix(Words w)
{
    w.a = (w.a - w.b - w.c) ^ (w.c >> 13);
    w.b = (w.b - w.c - w.a) ^ (w.a << 8);
    w.c = (w.c - w.a - w.b) ^ (w.b >> 13);
    w.a = (w.a - w.b - w.c) ^ (w.c >> 12);
    w.b = (w.b - w.c - w.a) ^ (w.a << 16);
    w.c = (w.c - w.a - w.b) ^ (w.b >> 5);
    w.a = (w.a - w.b - w.c) ^ (w.c >> 3);
    w.b = (w.b - w.c - w.a) ^ (w.a << 10);
    w.c = (w.c - w.a - w.b) ^ (w.b >> 15);
    return w;
}

// Up to four bytes from `at` as a little-endian word, the lowest `shift` bytes of the word left free.
constexpr uint32_t word(std::string_view text, std::size_t at, std::size_t shift = 0)
{
    uint32_t value = 0;
    for (std::size_t i = shift; i < 4 && at + i - shift < text.size(); ++i) {
        value |= static_cast<uint32_t>(static_cast<unsigned char>(text[at + i - shift])) << (8 * i);
    }
    return value;
}

}  // namespace name_hash_detail

// The hash of a node name or namespace URI: Bob Jenkins' 32-bit block hash of 1996 with ConfD's starting values,
// reduced modulo 2^31 - 1. Usable at compile time. Never fails; the empty text has a hash too.
constexpr uint32_t name_hash(std::string_view text)
{
    using name_hash_detail::word;
    name_hash_detail::Words w{0x9E3779B9, 0x9E3779B9, 0x08D12E65};
    std::size_t at = 0;
    for (; text.size() - at >= 12; at += 12) {
        w = name_hash_detail::mix({w.a + word(text, at), w.b + word(text, at + 4), w.c + word(text, at + 8)});
    }
    const auto length = static_cast<uint32_t>(text.size());
    w = name_hash_detail::mix({w.a + word(text, at), w.b + word(text, at + 4), w.c + length + word(text, at + 8, 1)});
    return w.c % 0x7FFFFFFF;
}

}  // namespace bgp_update

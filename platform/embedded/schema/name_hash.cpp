#include "schema/name_hash.h"

#include <array>
#include <cstddef>

namespace bgp_platform::schema {

namespace {

using Words = std::array<uint32_t, 3>;

constexpr std::size_t kBlock = 12;  // bytes of a round: three words, the lowest byte first

// Nine turns, each on the next word: it loses the two others and is crossed with the one before it, shifted to the
// left where the number is negative.
void stir(Words* words) noexcept
{
    static constexpr int kShifts[] = {13, -8, 13, 12, -16, 5, 3, -10, 15};
    std::size_t turn = 0;
    for (const int shift : kShifts) {
        const uint32_t before = (*words)[(turn + 2) % 3];
        uint32_t& word = (*words)[turn % 3];
        word -= (*words)[(turn + 1) % 3] + before;
        word ^= shift < 0 ? before << static_cast<unsigned>(-shift) : before >> static_cast<unsigned>(shift);
        ++turn;
    }
}

}  // namespace

uint32_t name_hash(std::string_view name) noexcept
{
    Words words{0x9E3779B9, 0x9E3779B9, 0x08D12E65};
    const std::size_t last_round = name.size() - name.size() % kBlock;
    for (std::size_t i = 0; i < name.size(); ++i) {
        std::size_t place = i % kBlock;
        if (i >= last_round && place >= 8) {
            ++place;  // the last word's lowest byte is left to the length
        }
        words[place / 4] += static_cast<uint32_t>(static_cast<unsigned char>(name[i])) << (place % 4 * 8);
        if (i < last_round && place == kBlock - 1) {
            stir(&words);
        }
    }
    words[2] += static_cast<uint32_t>(name.size());
    stir(&words);
    return words[2] % 0x7FFFFFFF;
}

}  // namespace bgp_platform::schema

#include "support/rekeying_model.h"

#include <set>

namespace bgp_test {

namespace {

using bgp_contract::Carries;

// The key that a row is to have when the entity's index goes from `old_index` to the global one.
Key new_key(Carries carries, const RowText& row, uint32_t old_index)
{
    const std::string index = std::to_string(kGlobalIndex);
    const auto shifted = [&] { return std::to_string(number(row.key[1]) + kGlobalIndex - old_index); };
    Key key = row.key;
    switch (carries) {
        case Carries::First:
            key[0] = index;
            break;
        case Carries::Partner:
            key[1] = key[2] == "ariPrtnrBgp" ? index : key[1];
            break;
        case Carries::Redistributed:
            key[1] = find(row.leaves, "rtmRedistInfoDest") == "bgp" ? shifted() : key[1];
            break;
        case Carries::Protocol:
            key[1] = find(row.leaves, "protocol-xmltag") == "555337807" ? shifted() : key[1];
            break;
        case Carries::Listen:
            key[1] = std::to_string(key[0] == key[1] ? kGlobalIndex : kGlobalIndex + 1);
            key[0] = index;
            break;
    }
    return key;
}

}  // namespace

std::map<Key, Key> places(Carries carries, const Table& rows, uint32_t old_index)
{
    std::set<Key> taken;
    for (const RowText& row : rows) {
        taken.insert(row.key);
    }
    std::map<Key, Key> places;
    for (const RowText& row : rows) {
        Key key = new_key(carries, row, old_index);
        if (key != row.key && !taken.insert(key).second) {
            key = row.key;
        } else if (key != row.key) {
            taken.erase(row.key);
        }
        places[row.key] = key;
    }
    return places;
}

std::map<Key, Key> at_home(const Table& rows)
{
    std::map<Key, Key> places;
    for (const RowText& row : rows) {
        places[row.key] = row.key;
    }
    return places;
}

}  // namespace bgp_test

#include "judge/words.h"

#include <arpa/inet.h>
#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "calls/recorder.h"
#include "store/changes.h"

namespace bgp_rehearse {

using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Value;
using bgp_platform::store::Row;
using bgp_platform::store::RowRef;
using bgp_platform::store::Selector;
using bgp_platform::store::Trail;

namespace {

// Names of enumerations that stand for something else than their text says.
constexpr std::pair<std::string_view, std::string_view> kNames[] = {
    {"ipv4", "IPv4"},
    {"ipv6", "IPv6"},
    {"l2vpn", "L2VPN"},
    {"labeled", "labelled unicast"},
    {"mplsBgpVpn", "VPN"},
    {"vpls", "VPLS"},
    {"evpn", "EVPN"},
    {"ariPrtnrBgp", "router entity"},
    {"ariPrtnrRtm", "routing table"},
};

// The octets of "0a:00:00:01"; none where the text is no such list.
std::string octets_of(std::string_view text)
{
    constexpr std::size_t kWidth = 3;
    constexpr int kHex = 16;
    std::string octets;
    if (text.size() % kWidth != 2) {
        return {};
    }
    for (std::size_t at = 0; at < text.size(); at += kWidth) {
        const std::string octet(text.substr(at, 2));
        const bool separated = at + 2 == text.size() || text[at + 2] == ':';
        if (!separated || octet.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
            return {};
        }
        octets += static_cast<char>(std::stoi(octet, nullptr, kHex));
    }
    return octets;
}

bool is_address(std::string_view octets)
{
    return octets.size() == sizeof(in_addr) || octets.size() == sizeof(in6_addr);
}

// A text with what are octets of an address in it as addresses: that of a neighbour's hidden keys.
std::string with_addresses(std::string_view text)
{
    std::string words;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string octets = octets_of(text.substr(0, end));
        words += is_address(octets) ? address_words(octets) : std::string(text.substr(0, end));
        words.append(end < text.size() ? " " : "");
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return words;
}

std::string value_text(const Node& leaf, const Value& value)
{
    return value.is_octets() && is_address(value.bytes()) ? address_words(std::string(value.bytes()))
                                                          : leaf.type->text(value);
}

std::string key_word(const Row& row, uint16_t key)
{
    const std::string text = value_text(*row.record().values[key], row.value(key));
    if (row.value(key).kind() == Value::Kind::Enum) {
        const auto* const found = std::find_if(std::begin(kNames), std::end(kNames),
                                               [&text](const auto& name) { return name.first == text; });
        return found == std::end(kNames) ? text : std::string(found->second);
    }
    return text.empty() ? "\"\"" : text;
}

bool is_zero(std::string_view octets)
{
    return octets.find_first_not_of('\0') == std::string_view::npos;
}

std::string with_port(std::string address, const Value& port)
{
    return port.as_uint() == 0 ? address : fmt::format("{} port {}", address, port.as_uint());
}

// "192.0.2.2", "192.0.2.2 port 1790 from 10.0.0.1", "fe80::1%3": what is not told is any.
std::string peer_words(const Row& row)
{
    enum Key : uint16_t { LocalAddress = 2, LocalPort = 3, RemoteAddress = 5, RemotePort = 6, Scope = 7 };
    std::string words = key_word(row, RemoteAddress);
    if (row.value(Scope).as_uint() != 0) {
        words += fmt::format("%{}", row.value(Scope).as_uint());
    }
    words = with_port(words, row.value(RemotePort));
    const Value& local = row.value(LocalAddress);
    if (local.is_octets() && !is_zero(local.bytes())) {
        words += " from " + with_port(key_word(row, LocalAddress), row.value(LocalPort));
    } else if (row.value(LocalPort).as_uint() != 0) {
        words = with_port(words + " from", row.value(LocalPort));
    }
    return words;
}

// " of VRF red"; the global instance has none.
std::string served_words(const Row& row)
{
    for (const char* const name : {"bgpRmEntVrfName", "bgpNmEntVrfName"}) {
        const Node* const leaf = row.record().owner->child(name);
        if (leaf != nullptr && row.value(leaf->slot).is_text() && !row.value(leaf->slot).bytes().empty()) {
            return fmt::format(" of VRF {}", row.value(leaf->slot).bytes());
        }
    }
    return {};
}

// The words of a placeholder, "peer" or "family8".
std::string placeholder_words(std::string_view name, const Trail& around, const Row& row)
{
    if (name == "peer") {
        return peer_words(row);
    }
    if (name == "served") {
        return served_words(row);
    }
    if (name == "around") {
        return around.empty() ? std::string() : key_word(*around.back(), 0);
    }
    const auto key = static_cast<uint16_t>(name.back() - '0');
    if (name.size() == 1) {
        return key_word(row, key);
    }
    if (name.front() == 'a') {
        const std::string words = key_word(row, key);
        const std::string octets = octets_of(words);
        return is_address(octets) ? address_words(octets) : words;
    }
    return key_word(row, key) + " " + key_word(row, static_cast<uint16_t>(key + 1));
}

// A list that has no words of its own: its name and the key.
std::string plain_words(const Row& row)
{
    return row.record().owner->name + " " + words_of_key(row);
}

}  // namespace

std::string grouped(std::size_t number)
{
    std::string text = std::to_string(number);
    for (std::size_t place = text.size(); place > 3; place -= 3) {
        text.insert(place - 3, ",");
    }
    return text;
}

std::string counted(std::size_t number, const Noun& noun)
{
    return fmt::format("{} {}", grouped(number), number == 1 ? noun.one : noun.many);
}

std::string words_of_row(const Trail& around, const Row& row)
{
    if (row.record().owner == nullptr) {
        return {};
    }
    const ListWords* const words = find_words(*row.record().owner);
    if (words == nullptr) {
        return plain_words(row);
    }
    constexpr std::string_view kOfPlaceholders = "abcdefghijklmnopqrstuvwxyz";
    constexpr std::string_view kDigits = "0123456789";
    std::string text;
    for (std::string_view rest = words->row; !rest.empty();) {
        const std::size_t placeholder = std::min(rest.find('$'), rest.size());
        text += rest.substr(0, placeholder);
        rest.remove_prefix(placeholder);
        if (!rest.empty()) {
            rest.remove_prefix(1);
            std::size_t end = std::min(rest.find_first_not_of(kOfPlaceholders), rest.size());
            end += end < rest.size() && kDigits.find(rest[end]) != std::string_view::npos ? 1 : 0;
            text += placeholder_words(rest.substr(0, end), around, row);
            rest.remove_prefix(end);
        }
    }
    return text;
}

std::string words_of_path(const bgp_platform::store::Path& path)
{
    if (path.node != nullptr && path.node->kind == NodeKind::List && !path.names_entry()) {
        const ListWords* const words = find_words(*path.node);
        return words == nullptr ? std::string() : fmt::format("the {}", words->noun.many);
    }
    std::vector<RowRef> rows;  // with their keys alone
    Trail around;
    for (const Selector& selector : path.entries) {
        if (selector.list->kind != NodeKind::List || selector.keys.empty()) {
            return {};
        }
        RowRef& row = rows.emplace_back(*selector.list->entry);
        for (std::size_t key = 0; key < selector.keys.size(); ++key) {
            row.edit().value(static_cast<uint16_t>(key)) = selector.keys[key];
        }
        around.push_back(row.get());
    }
    if (rows.empty()) {
        return {};
    }
    around.pop_back();
    return words_of_row(around, *rows.back());
}

std::string words_of_value(const Node& leaf, const Value* value)
{
    if (value == nullptr) {
        return "(not set)";
    }
    if (is_secret(leaf)) {
        return bgp_platform::capi::kMasked;
    }
    if (value->kind() == Value::Kind::Present) {
        return "(present)";
    }
    const std::string text = value_text(leaf, *value);
    if (text.empty()) {
        return "(empty)";
    }
    return leaf.name == "keys" ? with_addresses(text) : text;
}

std::string words_of_key(const Row& row)
{
    std::string text;
    for (uint16_t key = 0; key < row.record().keys; ++key) {
        const Node& leaf = *row.record().values[key];
        const Value& value = row.value(key);
        text.append(key == 0 ? "" : " ");
        if (value.is_octets() && is_address(value.bytes())) {
            text += address_words(std::string(value.bytes()));
        } else {
            bgp_platform::store::append_key(*leaf.type, value, &text);
        }
    }
    return text;
}

std::string words_of_keys(const Row& row, uint16_t first)
{
    std::string text;
    for (uint16_t key = first; key < row.record().keys; ++key) {
        text += (key == first ? "" : " ") + key_word(row, key);
    }
    return text;
}

std::string address_words(const std::string& octets)
{
    char text[INET6_ADDRSTRLEN] = {};
    if (is_address(octets)) {
        inet_ntop(octets.size() == sizeof(in_addr) ? AF_INET : AF_INET6, octets.data(), text, sizeof text);
        return text;
    }
    const std::vector<unsigned char> numbers(octets.begin(), octets.end());
    return fmt::format("{:02x}", fmt::join(numbers, ":"));
}

}  // namespace bgp_rehearse

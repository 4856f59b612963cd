// The memory behind values, and their order.
#include "schema/value.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace bgp_platform::schema {

// The bytes lie right behind the head.
struct Value::Block {
    uint32_t references;
    uint32_t size;

    unsigned char* bytes() noexcept { return reinterpret_cast<unsigned char*>(this + 1); }

    static Block* make(const void* bytes, std::size_t size)
    {
        if (size > std::numeric_limits<uint32_t>::max()) {
            throw std::length_error("a value of more than 4 GiB");
        }
        auto* const block = new (::operator new(sizeof(Block) + size)) Block{1, static_cast<uint32_t>(size)};
        std::memcpy(block->bytes(), bytes, size);
        return block;
    }
};

void Value::share_block() const noexcept
{
    ++block()->references;
}

void Value::drop_block() noexcept
{
    Block* const shared = block();
    if (--shared->references == 0) {
        ::operator delete(shared);
    }
}

Value Value::of_bytes(Kind in_place, Kind long_kind, std::string_view bytes)
{
    if (bytes.size() > kInPlace) {
        // cppcheck-suppress invalidLifetime ; the bytes are a caller's, copied while it waits
        return scalar(long_kind, Block::make(bytes.data(), bytes.size()));
    }
    Value value;
    if (!bytes.empty()) {
        std::memcpy(value.bytes_, bytes.data(), bytes.size());
    }
    value.meta_ = static_cast<uint8_t>(static_cast<unsigned>(in_place) << 4 | bytes.size());
    return value;
}

Value Value::of_ipv6(const in6_addr& address)
{
    return scalar(Kind::Ipv6, Block::make(&address, sizeof address));
}

Value Value::of_ipv4_prefix(in_addr address, uint8_t length) noexcept
{
    Value value = scalar(Kind::Ipv4Prefix, address);
    value.bytes_[sizeof address] = length;
    return value;
}

Value Value::of_text(std::string_view text)
{
    return of_bytes(Kind::Text, Kind::LongText, text);
}

Value Value::of_octets(std::string_view octets)
{
    return of_bytes(Kind::Octets, Kind::LongOctets, octets);
}

in6_addr Value::as_ipv6() const noexcept
{
    in6_addr address;
    std::memcpy(&address, block()->bytes(), sizeof address);
    return address;
}

std::string_view Value::bytes() const noexcept
{
    if (has_block()) {
        return {reinterpret_cast<const char*>(block()->bytes()), block()->size};
    }
    return {reinterpret_cast<const char*>(bytes_), meta_ & 0x0FU};
}

void Value::flatten_block(Flat* flat) const noexcept
{
    const std::string_view all = bytes();
    all.copy(flat->bytes, Flat::kMost);
    flat->size = static_cast<uint8_t>(std::min(all.size(), Flat::kMost + 1));
}

Value Value::of_flat(const Flat& flat)
{
    Value value;
    value.meta_ = flat.value[kInPlace];
    const Kind kind = value.kind();
    value.meta_ = 0;  // a block of another process is none here
    const std::string_view block(flat.bytes, std::min<std::size_t>(flat.size, Flat::kMost));
    if (kind == Kind::Ipv6) {
        in6_addr address{};
        block.copy(reinterpret_cast<char*>(&address), sizeof address);
        return of_ipv6(address);
    }
    if (kind == Kind::LongText || kind == Kind::LongOctets) {
        return kind == Kind::LongText ? of_text(block) : of_octets(block);
    }
    if (kind <= Kind::Octets) {
        std::memcpy(value.bytes_, flat.value, kInPlace);
        value.meta_ = flat.value[kInPlace];
    }
    return value;
}

std::size_t Value::hash() const noexcept
{
    if (absent()) {
        return 0;
    }
    if (has_block()) {
        return std::hash<std::string_view>()(bytes());
    }
    // Behind the content all is zero.
    const uint64_t product = (front() ^ back() * 0xFF51AFD7ED558CCDU) * 0x9E3779B97F4A7C15U;
    return product ^ product >> 32U;
}

std::size_t Value::block_bytes() const noexcept
{
    return has_block() ? sizeof(Block) + block()->size : 0;
}

namespace {

int order_bytes(std::string_view left, std::string_view right) noexcept
{
    const int by_bytes = left.compare(right);
    return order(by_bytes, 0);
}

// Where a value's bytes lie does not tell its place among others.
Value::Kind order_kind(const Value& value) noexcept
{
    switch (value.kind()) {
        case Value::Kind::LongText:
            return Value::Kind::Text;
        case Value::Kind::LongOctets:
            return Value::Kind::Octets;
        default:
            return value.kind();
    }
}

int order_ipv4(const Value& left, const Value& right) noexcept
{
    return order(ntohl(left.as_ipv4().s_addr), ntohl(right.as_ipv4().s_addr));
}

int order_ipv4_prefix(const Value& left, const Value& right) noexcept
{
    const int by_address = order_ipv4(left, right);
    return by_address != 0 ? by_address : order(left.prefix_length(), right.prefix_length());
}

}  // namespace

int Value::compare_any(const Value& right) const noexcept
{
    const Value& left = *this;
    const Kind order_as = order_kind(left);
    if (order_as != order_kind(right)) {
        return order(order_as, order_kind(right));
    }
    switch (order_as) {
        case Kind::Int:
            return order(left.as_int(), right.as_int());
        case Kind::Uint:
            return order(left.as_uint(), right.as_uint());
        case Kind::Enum:
            return order(left.as_enum(), right.as_enum());
        case Kind::Bool:
            return order(left.as_bool(), right.as_bool());
        case Kind::Ipv4:
            return order_ipv4(left, right);
        case Kind::Ipv4Prefix:
            return order_ipv4_prefix(left, right);
        case Kind::Ipv6:
        case Kind::Text:
        case Kind::Octets:
            return order_bytes(left.bytes(), right.bytes());
        default:
            return 0;
    }
}

}  // namespace bgp_platform::schema

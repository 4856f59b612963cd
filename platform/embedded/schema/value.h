// One stored value in sixteen bytes: what a leaf of the configuration holds.
//
// A value does not carry its ConfD type; the leaf's schema::Type gives it its meaning (type.h). Text and octets up to
// fifteen bytes lie in place, longer ones and IPv6 addresses in a shared, immutable block, so that copying a value never
// copies bytes. Values belong to one thread: the reference counts are plain integers.
#pragma once

#include <endian.h>
#include <netinet/in.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>

namespace bgp_platform::schema {

inline constexpr uint8_t kIpv4Bits = 32;  // of an address, and the most that a prefix has

template <typename T>
int order(T left, T right) noexcept
{
    return static_cast<int>(left > right) - static_cast<int>(left < right);
}

class Value {
public:
    enum class Kind : uint8_t {
        Absent,      // nothing is set
        Present,     // a presence container that is there, or a leaf of YANG type empty
        Int,         // signed number of any width
        Uint,        // unsigned number of any width
        Enum,        // the integer of an enumeration
        Bool,        //
        Ipv4,        // four octets, network order
        Ipv6,        // sixteen octets, in a block
        Ipv4Prefix,  // four octets and a length
        Text,        // up to 15 bytes in place
        LongText,    // in a block
        Octets,      // up to 15 bytes in place
        LongOctets,  // in a block
    };

    static constexpr std::size_t kInPlace = 15;

    Value() noexcept = default;
    Value(const Value& other) noexcept : meta_(other.meta_)
    {
        std::memcpy(bytes_, other.bytes_, sizeof bytes_);
        if (has_block()) {
            share_block();
        }
    }
    Value(Value&& other) noexcept : meta_(std::exchange(other.meta_, uint8_t{0}))
    {
        std::memcpy(bytes_, other.bytes_, sizeof bytes_);
    }
    Value& operator=(const Value& other) noexcept { return *this = Value(other); }
    Value& operator=(Value&& other) noexcept
    {
        if (this != &other) {
            release();
            std::memcpy(bytes_, other.bytes_, sizeof bytes_);
            meta_ = std::exchange(other.meta_, uint8_t{0});
        }
        return *this;
    }
    ~Value() { release(); }

    static Value present() noexcept { return scalar(Kind::Present, '\0'); }
    static Value of_int(int64_t number) noexcept { return scalar(Kind::Int, number); }
    static Value of_uint(uint64_t number) noexcept { return scalar(Kind::Uint, number); }
    static Value of_enum(int32_t number) noexcept { return scalar(Kind::Enum, number); }
    static Value of_bool(bool flag) noexcept { return scalar(Kind::Bool, static_cast<unsigned char>(flag ? 1 : 0)); }
    static Value of_ipv4(in_addr address) noexcept { return scalar(Kind::Ipv4, address); }
    static Value of_ipv6(const in6_addr& address);
    static Value of_ipv4_prefix(in_addr address, uint8_t length) noexcept;
    static Value of_text(std::string_view text);
    static Value of_octets(std::string_view octets);

    Kind kind() const noexcept { return static_cast<Kind>(meta_ >> 4); }
    bool absent() const noexcept { return meta_ == 0; }
    explicit operator bool() const noexcept { return !absent(); }
    bool is_text() const noexcept { return kind() == Kind::Text || kind() == Kind::LongText; }
    bool is_octets() const noexcept { return kind() == Kind::Octets || kind() == Kind::LongOctets; }

    // Each accessor is for the kind it names; the caller knows the kind from the type or has asked kind().
    int64_t as_int() const noexcept { return load<int64_t>(); }
    uint64_t as_uint() const noexcept { return load<uint64_t>(); }
    int32_t as_enum() const noexcept { return load<int32_t>(); }
    bool as_bool() const noexcept { return bytes_[0] != 0; }
    in_addr as_ipv4() const noexcept { return load<in_addr>(); }  // of an Ipv4Prefix too
    in6_addr as_ipv6() const noexcept;
    uint8_t prefix_length() const noexcept { return bytes_[sizeof(in_addr)]; }

    // Whether it is an Ipv4Prefix with bits set that do not belong to the prefix.
    bool has_host_bits() const noexcept
    {
        return kind() == Kind::Ipv4Prefix &&
               (static_cast<uint64_t>(be32toh(as_ipv4().s_addr)) << prefix_length() & 0xFFFFFFFFU) != 0;
    }
    std::string_view bytes()
        const noexcept;  // of text and octets; valid while a copy of this value lives and stays put

    // A copy as plain bytes, without a block, for memory that another process reads. Of longer text and octets it has the
    // first.
    struct Flat {
        static constexpr std::size_t kMost = 44;
        unsigned char value[16];  // as it lies in memory; of a block, only the kind counts
        uint8_t size;             // of a block, kMost + 1 where it is longer
        char bytes[kMost];        // of a block

        bool cut() const noexcept { return has_block(static_cast<Kind>(value[kInPlace] >> 4)) && size > kMost; }
    };
    void flatten(Flat* flat) const noexcept
    {
        std::memcpy(flat->value, bytes_, kInPlace);
        flat->value[kInPlace] = meta_;
        if (has_block()) {
            flatten_block(flat);
        }
    }
    static Value of_flat(const Flat& flat);  // absent for bytes that are no value

    std::size_t hash() const noexcept;  // the same for equal values

    // The bytes of memory that the value's block takes, 0 for a value in place (shared blocks count for each holder).
    std::size_t block_bytes() const noexcept;

    // What compare() gives; at once for the kinds that keys mostly have.
    int compared_to(const Value& right) const noexcept
    {
        if (kind() != right.kind()) {
            return compare_any(right);
        }
        switch (kind()) {
            case Kind::Uint:
                return order(as_uint(), right.as_uint());
            case Kind::Enum:
                return order(as_enum(), right.as_enum());
            case Kind::Text:
            case Kind::Octets: {
                // Zero behind the content, and the length last: it tells texts apart that end in zeros.
                const int by_front = order(front(), right.front());
                return by_front != 0 ? by_front : order(back(), right.back());
            }
            default:
                return compare_any(right);
        }
    }

private:
    struct Block;  // reference count, size, bytes

    // Eight of the sixteen bytes as a number that orders as they do, byte by byte.
    uint64_t front() const noexcept { return be64toh(load<uint64_t>()); }
    uint64_t back() const noexcept
    {
        uint64_t rest = 0;
        std::memcpy(&rest, bytes_ + sizeof rest, kInPlace - sizeof rest);
        return be64toh(rest) | meta_;
    }
    int compare_any(const Value& right) const noexcept;

    template <typename T>
    T load() const noexcept
    {
        T number;
        std::memcpy(&number, bytes_, sizeof number);
        return number;
    }
    template <typename T>
    static Value scalar(Kind kind, const T& content) noexcept
    {
        static_assert(sizeof content <= kInPlace);
        Value value;
        std::memcpy(value.bytes_, &content, sizeof content);
        value.meta_ = static_cast<uint8_t>(static_cast<unsigned>(kind) << 4);
        return value;
    }
    static Value of_bytes(Kind in_place, Kind long_kind, std::string_view bytes);
    Block* block() const noexcept { return load<Block*>(); }
    static bool has_block(Kind kind) noexcept
    {
        return kind == Kind::LongText || kind == Kind::LongOctets || kind == Kind::Ipv6;
    }
    bool has_block() const noexcept { return has_block(kind()); }
    void release() noexcept
    {
        if (has_block()) {
            drop_block();
        }
    }
    void flatten_block(Flat* flat) const noexcept;
    void share_block() const noexcept;
    void drop_block() noexcept;

    alignas(8) unsigned char bytes_[kInPlace] = {};
    uint8_t meta_ = 0;  // kind in the high half, the length of text and octets in place in the low half
};

static_assert(sizeof(Value) == 16);

// The order of list keys: numbers by value, enumerations by their integer, text and octets by bytes (a prefix first),
// addresses by their octets; values of different kinds (a union's members) in the order of the kinds. Negative, 0, positive.
inline int compare(const Value& left, const Value& right) noexcept
{
    return left.compared_to(right);
}

inline bool operator==(const Value& left, const Value& right) noexcept
{
    return compare(left, right) == 0;
}
inline bool operator!=(const Value& left, const Value& right) noexcept
{
    return compare(left, right) != 0;
}
inline bool operator<(const Value& left, const Value& right) noexcept
{
    return compare(left, right) < 0;
}

}  // namespace bgp_platform::schema

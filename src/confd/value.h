// Values that a read fills, and arrays of them, which give back what they own at the end of their scope.
#pragma once

#include <cstddef>
#include <vector>

#include "confd_cdb.h"
#include "confd_lib.h"

namespace confd {

// A value for cdb_get() and its kin: it is a confd_value_t, so that its address can be handed to every call. Not for
// values that borrow what they point to.
class Value : public confd_value_t {
public:
    Value() : confd_value_t{} { type = C_NOEXISTS; }
    ~Value() { confd_free_value(this); }
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    // Gives back what the value owns, so that it can be read into again.
    void release()
    {
        confd_free_value(this);
        type = C_NOEXISTS;
    }
};

// Consecutive values for a batch of rows. What a read that succeeded left in them is given back; a read that failed owns
// what it left, and the array goes alone.
class ValueArray {
public:
    explicit ValueArray(std::size_t count) : values_(count, absent()) {}
    ~ValueArray()
    {
        if (!read_) {
            return;
        }
        for (confd_value_t& value : values_) {
            confd_free_value(&value);
        }
    }
    ValueArray(const ValueArray&) = delete;
    ValueArray& operator=(const ValueArray&) = delete;

    // Reads the first n values of `count` rows from row `start` on, once in an array's life. Gives what
    // cdb_get_objects() gives.
    template <typename... Keys>
    int read_objects(int cdb_socket, int n, int start, int count, const char* path, Keys... keys)
    {
        const int result = cdb_get_objects(cdb_socket, values_.data(), n, start, count, path, keys...);
        read_ = result >= 0;
        return result;
    }

    confd_value_t* values() { return values_.data(); }
    confd_value_t& operator[](std::size_t position) { return values_[position]; }

private:
    static confd_value_t absent()
    {
        confd_value_t value{};
        value.type = C_NOEXISTS;
        return value;
    }

    std::vector<confd_value_t> values_;
    bool read_ = false;
};

// Consecutive tagged values for cdb_get_values(), with which leaves are read by their tags. They are the program's
// whatever the read gave: it goes on with what the array holds, and gives that back.
class TaggedValueArray {
public:
    explicit TaggedValueArray(std::size_t count) : values_(count) {}
    ~TaggedValueArray()
    {
        for (confd_tag_value_t& value : values_) {
            confd_free_value(&value.v);
        }
    }
    TaggedValueArray(const TaggedValueArray&) = delete;
    TaggedValueArray& operator=(const TaggedValueArray&) = delete;

    confd_tag_value_t* values() { return values_.data(); }
    int count() const { return static_cast<int>(values_.size()); }

private:
    std::vector<confd_tag_value_t> values_;
};

}  // namespace confd

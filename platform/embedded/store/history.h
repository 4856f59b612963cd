// What became of the rows of a configuration while it was written: which stored row each of them came from, and who wrote
// what.
//
// A row that was moved is known by the move itself: its number leads to a record, and so does the number of the stored row
// that it came from. A row that nobody wrote has no number and costs nothing; one that was written costs a record of 24
// bytes, however often it was. Only writes that were carried out leave something here.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "store/row.h"

namespace bgp_platform::store {

class Configuration;
struct Selector;

// Who writes at a time, a number from 1 to 15 that the user of a history gives its meaning; 0: not known.
using Writer = uint8_t;

// A configuration has one history at a time, and one that is written has its own.
class History {
public:
    static constexpr std::size_t kWriters = 16;

    // Of a configuration that was made as a copy of this one.
    explicit History(const Configuration& stored);

    const Row& stored() const noexcept { return *stored_; }  // the root that all began with

    // Who writes from now on.
    void set_writer(Writer writer) noexcept { writer_ = writer; }

    // The stored row that a row of the written configuration came from by a move; null when it was not moved. Of two moves
    // the first counts: a row that was moved back came from itself.
    const Row* origin(const Row& row) const noexcept;
    bool is_new(const Row& row) const noexcept;  // made since: no stored row

    // The number of a row's record, the same for a moved row and the stored one that it came from; none for a row that was
    // never moved, made, taken away or given a value.
    static constexpr std::size_t kNone = SIZE_MAX;
    std::size_t number(const Row& row) const noexcept;
    std::size_t size() const noexcept { return size_; }  // numbers are below this

    // Who made, moved or took away the row last, and who wrote a leaf, presence container or leaf-list of it last.
    Writer writer_of(const Row& row) const noexcept;
    Writer writer_of(const Row& row, const schema::Node& node) const noexcept;

    // For the configuration that is written. room_for() fetches the memory for so many records more, so that what follows
    // cannot fail; the others note what has been done. `stored` is the row that it came from, null for a new one.
    void room_for(std::size_t rows);
    void note_made(const Row& row) noexcept;
    void note_written(const Row& row, const schema::Node& node) noexcept;
    void note_left(const Row& row, const Row* stored) noexcept;  // its key, by a move, or the configuration

    // The stored row of the entry that selectors lead to in the written configuration, wherever it and those around it have
    // been moved since; null when it has none.
    const Row* stored_row(const Configuration& written, const std::vector<Selector>& entries) const noexcept;

    // The stored row of an entry of a written list; `stored_list` are the entries that the list had, null when it is new.
    const Row* stored_entry(const Row& entry, const List* stored_list) const noexcept;

private:
    struct Record {
        const Row* origin = nullptr;  // the stored row of one that was moved or taken away
        bool made = false;
        std::array<uint8_t, 15> writers{};  // two to an octet: the row's, then one for each slot behind the key
    };
    static_assert(sizeof(Record) == 24);

    static constexpr std::size_t kChunk = 1024;

    std::size_t position(const Row& row, const schema::Node& node) const noexcept;
    Record& record(const Row& row) noexcept;  // made when there is none yet, for which there is room
    const Record* find(const Row& row) const noexcept;
    Record& at(std::size_t number) const noexcept { return chunks_[number / kChunk][number % kChunk]; }

    RowRef stored_;
    uint32_t first_;  // the mark in a row of the record with number 0
    std::size_t size_ = 0;
    std::vector<std::unique_ptr<Record[]>> chunks_;
    Writer writer_ = 0;
};

}  // namespace bgp_platform::store

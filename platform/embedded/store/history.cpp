#include "store/history.h"

#include "store/configuration.h"

namespace bgp_platform::store {

namespace {

// Marks of rows, never given twice in a process: a row may have one of a history that has ended.
uint32_t& next_mark() noexcept
{
    static uint32_t next = 1;
    return next;
}

constexpr std::size_t kNotKept = SIZE_MAX;

uint8_t half(uint8_t octet, std::size_t position) noexcept
{
    return position % 2 == 0 ? octet & 0x0FU : octet >> 4U;
}

uint8_t with_half(uint8_t octet, std::size_t position, uint8_t value) noexcept
{
    return static_cast<uint8_t>(position % 2 == 0 ? (octet & 0xF0U) | value : (octet & 0x0FU) | unsigned{value} << 4U);
}

}  // namespace

History::History(const Configuration& stored) : stored_(stored.root_ref()), first_(next_mark()) {}

std::size_t History::number(const Row& row) const noexcept
{
    const uint32_t mark = row.mark();
    return mark >= first_ && mark - first_ < size_ ? mark - first_ : kNone;
}

const History::Record* History::find(const Row& row) const noexcept
{
    const std::size_t known = number(row);
    return known == kNone ? nullptr : &at(known);
}

const Row* History::origin(const Row& row) const noexcept
{
    const Record* const known = find(row);
    return known == nullptr ? nullptr : known->origin;
}

bool History::is_new(const Row& row) const noexcept
{
    const Record* const known = find(row);
    return known != nullptr && known->made;
}

// Where a record has the writer of a node: the row's own comes first, then those of the values behind the key, then those
// of lists. A row of more slots than a record has room for keeps no writers of the last ones.
std::size_t History::position(const Row& row, const schema::Node& node) const noexcept
{
    const schema::Record& shape = row.record();
    const std::size_t slot = node.is_list() ? shape.values.size() + node.slot : node.slot;
    const std::size_t place = slot < shape.keys ? 0 : slot - shape.keys + 1;
    return place < 2 * Record().writers.size() ? place : kNotKept;
}

Writer History::writer_of(const Row& row) const noexcept
{
    const Record* const known = find(row);
    return known == nullptr ? Writer{} : half(known->writers[0], 0);
}

Writer History::writer_of(const Row& row, const schema::Node& node) const noexcept
{
    const Record* const known = find(row);
    const std::size_t place = position(row, node);
    return known == nullptr || place == kNotKept ? Writer{} : half(known->writers[place / 2], place);
}

void History::room_for(std::size_t rows)
{
    const std::size_t wanted = next_mark() - first_ + rows;
    while (chunks_.size() * kChunk < wanted) {
        chunks_.reserve(chunks_.size() + 1);
        chunks_.push_back(std::make_unique<Record[]>(kChunk));
    }
}

History::Record& History::record(const Row& row) noexcept
{
    std::size_t known = number(row);
    if (known == kNone) {
        row.set_mark(next_mark()++);
        known = row.mark() - first_;
        size_ = known + 1;
    }
    return at(known);
}

void History::note_made(const Row& row) noexcept
{
    Record& made = record(row);
    made.made = true;
    made.writers[0] = with_half(made.writers[0], 0, writer_);
}

void History::note_written(const Row& row, const schema::Node& node) noexcept
{
    Record& written = record(row);
    const std::size_t place = position(row, node);
    if (place != kNotKept) {
        written.writers[place / 2] = with_half(written.writers[place / 2], place, writer_);
    }
}

void History::note_left(const Row& row, const Row* stored) noexcept
{
    Record& known = record(row);
    known.writers[0] = with_half(known.writers[0], 0, writer_);
    if (!known.made && known.origin == nullptr && stored != nullptr) {
        known.origin = stored;
        stored->set_mark(row.mark());
    }
}

const Row* History::stored_entry(const Row& entry, const List* stored_list) const noexcept
{
    const Record* const known = find(entry);
    if (known != nullptr && (known->made || known->origin != nullptr)) {
        return known->origin;
    }
    return stored_list == nullptr ? nullptr : stored_list->find(entry.keys(), entry.record().keys);
}

const Row* History::stored_row(const Configuration& written, const std::vector<Selector>& entries) const noexcept
{
    const Row* row = &written.root();
    const Row* before = stored_.get();
    for (std::size_t depth = 0; depth < entries.size(); ++depth) {
        const uint16_t slot = entries[depth].list->slot;
        row = written.find_entry(row->list(slot), entries[depth], depth);
        if (row == nullptr) {
            return nullptr;
        }
        before = stored_entry(*row, before == nullptr ? nullptr : &before->list(slot));
    }
    return before;
}

}  // namespace bgp_platform::store

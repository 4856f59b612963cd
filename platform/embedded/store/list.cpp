// Look-ups and writes of a list's tree. A write goes down by recursion, unsharing each node on its road, and puts
// sizes, lowest rows and splits right on its way back.
#include "store/list.h"

#include <algorithm>
#include <new>

namespace bgp_platform::store {
namespace {

constexpr std::size_t kFanOut = ListNode::kFanOut;
constexpr std::size_t kFirstRoom = 2;
constexpr std::size_t kMergedMost = kFanOut / 2;  // neighbours are merged when they hold no more than that together

// One search for a key tuple, from the root down to a leaf node.
//
// Every row asked about lies between the last one that the tuple was behind and the last one that it was not. What both
// of these have in common with the tuple, in leading keys, the rows between them have too: it is not compared again.
class Search {
public:
    Search(const schema::Value* keys, std::size_t count) noexcept : keys_(keys), count_(count) {}
    explicit Search(const Row& row) noexcept : Search(row.keys(), row.record().keys) {}

    bool behind(const Row& row) noexcept { return narrow(compare(row) < 0); }
    bool at_or_behind(const Row& row) noexcept { return narrow(compare(row) <= 0); }

    // Whether the last row that the tuple was not behind has all of the tuple in its key.
    bool found() const noexcept { return in_upper_ == count_; }

private:
    // As compare_key(); leaves in `common_` how many leading keys are the same.
    int compare(const Row& row) noexcept
    {
        const std::size_t own = row.record().keys;
        for (common_ = std::min(in_lower_, in_upper_); common_ < std::min(own, count_); ++common_) {
            if (const int order = schema::compare(row.keys()[common_], keys_[common_]); order != 0) {
                return order;
            }
        }
        return own > count_ ? 1 : 0;
    }

    bool narrow(bool passed) noexcept
    {
        (passed ? in_lower_ : in_upper_) = common_;
        return passed;
    }

    const schema::Value* keys_;
    std::size_t count_;
    std::size_t common_ = 0;
    std::size_t in_lower_ = 0;  // leading keys that the row before the gap has in common with the tuple
    std::size_t in_upper_ = 0;  // and the row behind it
};

// How many references of the node, from the left, begin with a row that passes; those that pass come first. Who goes
// through a table is mostly near the place of the last time: the search begins there, in steps that double.
template <typename Passes>
std::size_t count_passing(const ListNode& node, Passes passes) noexcept
{
    std::size_t low = 0;
    std::size_t high = node.count;
    std::size_t probe = std::min<std::size_t>(node.last_place, high - std::min<std::size_t>(high, 1));
    for (std::size_t step = 1; probe < high; step *= 2) {
        if (passes(node.lowest_at(probe))) {
            low = probe + 1;
            probe += step;
        } else {
            high = probe;
            probe = std::max(low, probe - std::min(probe, step));
        }
    }
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        if (passes(node.lowest_at(middle))) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    node.last_place = static_cast<uint8_t>(low);
    return low;
}

// The first row of the tree that does not pass; those that pass come first.
template <typename Passes>
const Row* first_not_passing(const ListNode* node, Passes passes) noexcept
{
    const Row* next = nullptr;  // the first row to the right of `node`
    while (node != nullptr) {
        const std::size_t passing = count_passing(*node, passes);
        if (passing < node->count) {
            next = &node->lowest_at(passing);
        }
        if (node->leaf || passing == 0) {
            return next;
        }
        node = node->children()[passing - 1].get();
    }
    return nullptr;
}

// The reference of a node below which the tuple's row is or belongs.
std::size_t position_of(const ListNode& node, Search* search) noexcept
{
    const std::size_t passing = count_passing(node, [=](const Row& row) { return search->at_or_behind(row); });
    return passing == 0 ? 0 : passing - 1;
}

void count_rows(ListNode* node) noexcept
{
    node->size = node->leaf ? node->count : 0;
    for (std::size_t i = 0; !node->leaf && i < node->count; ++i) {
        node->size += node->children()[i]->size;
    }
    node->lowest = node->count == 0 ? nullptr : &node->lowest_at(0);
}

RowRef* references(ListNode* node, const RowRef& /*kind*/) noexcept
{
    return node->rows();
}

ListNodeRef* references(ListNode* node, const ListNodeRef& /*kind*/) noexcept
{
    return node->children();
}

// Moves the references of `from` behind position `first` to the end of `to`, which has room for them.
void move_references(ListNode* from, std::size_t first, ListNode* to) noexcept
{
    const auto move_to_end = [&](auto* source, auto* target) {
        std::move(source + first, source + from->count, target + to->count);
    };
    if (from->leaf) {
        move_to_end(from->rows(), to->rows());
    } else {
        move_to_end(from->children(), to->children());
    }
    to->count = static_cast<uint8_t>(to->count + from->count - first);
    from->count = static_cast<uint8_t>(first);
}

// Gives an unshared node room for `wanted` references.
void make_room(ListNodeRef* node, std::size_t wanted)
{
    if (wanted <= (*node)->room) {
        return;
    }
    ListNodeRef roomier(
        ListNode::make((*node)->leaf, std::min(kFanOut, std::max(wanted, std::size_t{2} * (*node)->room))));
    move_references(&node->edit(), 0, &roomier.edit());
    *node = std::move(roomier);
}

// Puts a reference into an unshared node that is not full.
template <typename Reference>
void put(ListNodeRef* place, std::size_t position, Reference reference)
{
    make_room(place, (*place)->count + std::size_t{1});
    ListNode& node = place->edit();
    Reference* all = references(&node, reference);
    std::move_backward(all + position, all + node.count, all + node.count + 1);
    all[position] = std::move(reference);
    ++node.count;
    count_rows(&node);
}

// Puts a reference into an unshared node that is full, and counts its rows anew: what comes behind the middle moves to
// `right`, an empty node. At the node's right end it is left full, so that rows that come in order fill the tree.
template <typename Reference>
void split_and_put(ListNodeRef* place, std::size_t position, Reference reference, ListNodeRef* right)
{
    if (position == kFanOut) {
        put(right, 0, std::move(reference));
        count_rows(&place->edit());
        return;
    }
    move_references(&place->edit(), kFanOut / 2, &right->edit());
    const bool left = position <= kFanOut / 2;
    put(left ? place : right, left ? position : position - kFanOut / 2, std::move(reference));
    count_rows(&(left ? right : place)->edit());
}

// The road of a row that is inserted, from the root to a leaf node, unshared. All memory that the insertion needs is
// fetched before anything is changed.
class Insertion {
public:
    Insertion(ListNodeRef* root, const Row& row)
    {
        Search search(row);
        go_down(root, [&search](const ListNode& node) {
            return node.leaf ? count_passing(node, [&search](const Row& other) { return search.behind(other); })
                             : position_of(node, &search) + 1;
        });
        key_is_there_ = search.found();
    }
    explicit Insertion(ListNodeRef* root)  // of a row that lies behind all others
    {
        go_down(root, [](const ListNode& node) { return std::size_t{node.count}; });
    }

    bool key_is_there() const noexcept { return key_is_there_; }  // so that nothing may be inserted

    // Fetches the memory; without it, nothing has been changed. True when the root will be split.
    bool prepare()
    {
        std::size_t at = depth_;
        while ((*levels_[at].place)->count == kFanOut) {
            Level& full = levels_[at];
            full.right = ListNodeRef(ListNode::make((*full.place)->leaf, room_of_right(full)));
            if (at == 0) {
                return true;
            }
            --at;
        }
        make_room(levels_[at].place, (*levels_[at].place)->count + std::size_t{1});
        if (at < depth_) {  // its references may have moved
            levels_[at + 1].place = &levels_[at].place->edit().children()[levels_[at].position - 1];
        }
        return false;
    }

    // Returns what was split off from the root, if anything.
    ListNodeRef insert(RowRef row) noexcept
    {
        ListNodeRef split = put_at(&levels_[depth_], std::move(row));
        while (depth_ > 0) {
            Level& level = levels_[--depth_];
            if (split) {
                split = put_at(&level, std::move(split));
            } else {
                ListNode& node = level.place->edit();
                ++node.size;
                node.lowest = &node.lowest_at(0);
            }
        }
        return split;
    }

private:
    struct Level {
        ListNodeRef* place = nullptr;
        std::size_t position = 0;  // where a reference is put; the one before it is the road's
        ListNodeRef right;         // for a full node: what it will be split into
    };

    static std::size_t room_of_right(const Level& level) { return level.position == kFanOut ? kFirstRoom : kFanOut; }

    // `position` tells where in a node a reference to the row, or to a node with it, is put.
    template <typename Position>
    void go_down(ListNodeRef* root, Position&& position)
    {
        for (ListNodeRef* place = root;; ++depth_) {
            ListNode& node = place->edit();
            levels_[depth_].place = place;
            levels_[depth_].position = position(node);
            if (node.leaf) {
                break;
            }
            place = &node.children()[levels_[depth_].position - 1];
        }
    }

    template <typename Reference>
    static ListNodeRef put_at(Level* level, Reference reference) noexcept
    {
        if (level->right) {
            split_and_put(level->place, level->position, std::move(reference), &level->right);
        } else {
            put(level->place, level->position, std::move(reference));
        }
        return std::move(level->right);
    }

    std::array<Level, ListNode::kDeepest> levels_;
    std::size_t depth_ = 0;
    bool key_is_there_ = false;
};

// Puts a row into a tree that has some; the tree grows by a node at the top when its root is split.
void put_in(ListNodeRef* root, Insertion* insertion, RowRef row)
{
    ListNodeRef top;
    if (insertion->prepare()) {
        top = ListNodeRef(ListNode::make(false, kFirstRoom));
    }
    ListNodeRef split = insertion->insert(std::move(row));
    if (split) {
        put(&top, 0, std::move(*root));
        put(&top, 1, std::move(split));
        *root = std::move(top);
    }
}

// Takes a reference out of an unshared node, which may be empty then; its size is not counted anew.
template <typename Reference>
Reference pull(ListNode* node, Reference* all, std::size_t position) noexcept
{
    Reference pulled = std::move(all[position]);
    std::move(all + position + 1, all + node->count, all + position);
    --node->count;
    return pulled;
}

// Merges the child at `position` with its right neighbour when both are small. That only saves memory: where there is
// none for it, they stay two.
bool merge_with_next(ListNode* parent, std::size_t position) noexcept
{
    if (position + 1 >= parent->count) {
        return false;
    }
    ListNodeRef* children = parent->children();
    if (children[position]->count + children[position + 1]->count > static_cast<int>(kMergedMost)) {
        return false;
    }
    try {
        children[position].edit();
        make_room(&children[position], kMergedMost);
        children[position + 1].edit();
    } catch (const std::bad_alloc&) {
        return false;
    }
    move_references(&children[position + 1].edit(), 0, &children[position].edit());
    count_rows(&children[position].edit());
    pull(parent, children, position + 1);
    return true;
}

// Takes out the row with that key, which is there.
RowRef take_below(ListNodeRef* place, Search* search)
{
    ListNode& node = place->edit();
    const std::size_t position = position_of(node, search);
    RowRef taken;
    if (node.leaf) {
        taken = pull(&node, node.rows(), position);
    } else {
        taken = take_below(&node.children()[position], search);
        if (node.children()[position]->count == 0) {
            pull(&node, node.children(), position);
        } else if (!merge_with_next(&node, position) && position > 0) {
            merge_with_next(&node, position - 1);
        }
    }
    --node.size;
    node.lowest = node.count == 0 ? nullptr : &node.lowest_at(0);
    return taken;
}

// Unshares the road to the row with that key, which is there.
Row& edit_below(ListNodeRef* place, Search* search)
{
    ListNode& node = place->edit();
    const std::size_t position = position_of(node, search);
    Row& row = node.leaf ? node.rows()[position].edit() : edit_below(&node.children()[position], search);
    node.lowest = &node.lowest_at(0);
    return row;  // cppcheck-suppress returnTempReference ; both branches give references
}

std::size_t bytes_below(const ListNode& node) noexcept
{
    std::size_t bytes = node.block_bytes();
    for (std::size_t i = 0; !node.leaf && i < node.count; ++i) {
        bytes += bytes_below(*node.children()[i]);
    }
    return bytes;
}

}  // namespace

const Row* List::find(const schema::Value* keys, std::size_t count) const noexcept
{
    Search search(keys, count);
    const Row* row = first_not_passing(root_.get(), [&](const Row& other) { return search.behind(other); });
    return row != nullptr && search.found() && row->record().keys == count ? row : nullptr;
}

const Row* List::at(std::size_t position) const noexcept
{
    if (position >= size()) {
        return nullptr;
    }
    const ListNode* node = root_.get();
    while (!node->leaf) {
        const ListNodeRef* child = node->children();
        for (; position >= (*child)->size; ++child) {
            position -= (*child)->size;
        }
        node = child->get();
    }
    return node->rows()[position].get();
}

const Row* List::find_from(const schema::Value* keys, std::size_t count) const noexcept
{
    Search search(keys, count);
    return first_not_passing(root_.get(), [&](const Row& row) { return search.behind(row); });
}

const Row* List::find_after(const schema::Value* keys, std::size_t count) const noexcept
{
    Search search(keys, count);
    return first_not_passing(root_.get(), [&](const Row& row) { return search.at_or_behind(row); });
}

List::Iterator List::iterate_after(const schema::Value* keys, std::size_t count) const noexcept
{
    Search search(keys, count);
    Iterator entry;
    for (const ListNode* node = root_.get(); node != nullptr;) {
        const std::size_t passing = count_passing(*node, [&](const Row& row) { return search.at_or_behind(row); });
        Iterator::Level& level = entry.levels_[entry.depth_++];
        if (node->leaf) {
            // One back when it lies in the next leaf node, which the step then finds.
            level = {node, passing < node->count ? passing : node->count - std::size_t{1}};
            if (passing == node->count) {
                ++entry;
            }
            return entry;
        }
        level = {node, passing == 0 ? 0 : passing - 1};
        node = node->children()[level.index].get();
    }
    return entry;
}

Row* List::edit(const schema::Value* keys, std::size_t count)
{
    return find(keys, count) == nullptr ? nullptr : &edit_known(keys, count);
}

Row& List::edit_known(const schema::Value* keys, std::size_t count)
{
    Search search(keys, count);
    return edit_below(&root_, &search);
}

// Whether all entries, of which there are some, lie before the tuple.
bool List::ends_before(const schema::Value* keys, std::size_t count) const noexcept
{
    const ListNode* node = root_.get();
    while (!node->leaf) {
        node = node->children()[node->count - 1].get();
    }
    return compare_key(*node->rows()[node->count - 1], keys, count) < 0;
}

bool List::insert(RowRef row)
{
    if (!root_) {
        insert_new(std::move(row));
        return true;
    }
    Insertion insertion = ends_before(row->keys(), row->record().keys) ? Insertion(&root_) : Insertion(&root_, *row);
    if (insertion.key_is_there()) {
        return false;
    }
    put_in(&root_, &insertion, std::move(row));
    return true;
}

void List::insert_new(RowRef row)
{
    if (!root_) {
        ListNodeRef first(ListNode::make(true, kFirstRoom));
        put(&first, 0, std::move(row));
        root_ = std::move(first);
        return;
    }
    Insertion insertion(&root_, *row);
    put_in(&root_, &insertion, std::move(row));
}

RowRef List::take(const schema::Value* keys, std::size_t count)
{
    return find(keys, count) == nullptr ? RowRef() : take_known(keys, count);
}

RowRef List::take_known(const schema::Value* keys, std::size_t count)
{
    Search search(keys, count);
    RowRef taken = take_below(&root_, &search);
    if (root_->count == 0) {
        clear();
    }
    while (root_ && !root_->leaf && root_->count == 1) {
        root_ = ListNodeRef(root_->children()[0]);
    }
    return taken;
}

std::size_t List::node_bytes() const noexcept
{
    return root_ ? bytes_below(*root_) : 0;
}

}  // namespace bgp_platform::store

// Reads that CDB and MAAPI share: the same rule on the call's own view.
#pragma once

#include "capi/call.h"

namespace bgp_platform::capi {

// A leaf, or a leaf-list as C_LIST; NOEXISTS, BADPATH.
int read_value(Call& call, const store::Path& path, confd_value_t* value);

// A leaf of one type only, which owns nothing: BADTYPE when the leaf is of another.
int read_typed(Call& call, const store::Path& path, confd_vtype type, confd_value_t* value);

// The work of a typed read: what `member` takes out of a value of that type goes to *result.
template <confd_vtype type, typename Number, typename Member>
auto typed_read(Number* result, Member member)
{
    return [result, member](Call& call, const store::Path& path) {
        confd_value_t value;
        const int code = read_typed(call, path, type, &value);
        if (code == CONFD_OK) {
            *result = member(value);
        }
        return code;
    };
}

// Fails a read of a leaf-list without entries; null: an entry on the way to it is not there.
int fail_no_entries(Call& call, const store::List* leaf_list);

int read_exists(Call& call, const store::Path& path);  // 1, 0
int read_count(Call& call, const store::Path& path);   // entries of a list or leaf-list

// The values that a batch read has filled so far. A batch that fails gives them back: of it the program has nothing to
// release.
class FilledValues {
public:
    FilledValues() = default;
    ~FilledValues();
    FilledValues(const FilledValues&) = delete;
    FilledValues& operator=(const FilledValues&) = delete;

    confd_value_t& add(confd_value_t* value);  // about to be filled; C_NOEXISTS until then
    void keep() noexcept { values_.clear(); }  // the batch succeeded

private:
    std::vector<confd_value_t*> values_;
};

// The values of a leaf-list, in order, as a C_LIST.
void read_leaf_list(const schema::Node& node, const store::List& list, confd_value_t* value);

// Whether a node's place in a row is there: no presence container around the node is missing.
bool place_is_there(const store::Row& row, const schema::Node& node);

// A leaf or leaf-list of a row as a batch read hands it out: its value or default, C_LIST, else C_NOEXISTS.
void read_slot(Call& call, const store::Row& row, const schema::Node& node, confd_value_t* value);

}  // namespace bgp_platform::capi

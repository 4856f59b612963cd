// MAAPI cursors: a walk of a list by its keys, in the transaction as it is at each step.
#include <algorithm>
#include <memory>
#include <new>

#include "capi/call.h"
#include "confd_maapi.h"
#include "registry.h"

using namespace bgp_platform;
using namespace bgp_platform::capi;

namespace {

// Where a cursor stands, behind maapi_cursor::position.
struct Position {
    DeviceState* device;
    store::Path list;
    std::string path;                 // the list's, for messages
    std::vector<schema::Value> keys;  // of the entry at hand
    bool started = false;
    bool ended = false;

    // The entry at hand in the tree, for steps between which nothing is written.
    store::List::Iterator entry;
    uint64_t openings = 0;  // of the transaction when `entry` was found

    bool stays(const Call& call) const noexcept { return entry && openings == call.transaction().openings(); }
};

Position* position_of(const maapi_cursor& cursor)
{
    return static_cast<Position*>(cursor.position);
}

void release(confd_value_t* keys, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        confd_free_value(&keys[i]);
    }
}

void release_keys(maapi_cursor* cursor)
{
    release(cursor->keys, static_cast<std::size_t>(cursor->n));
    cursor->n = 0;
}

// Hands out the row's key, or no key at the end; no schema has a list of more keys than a cursor holds. Without memory
// for them the cursor stays where it is.
int arrive(maapi_cursor* cursor, Position* position, const store::Row* row)
{
    const std::size_t count = row == nullptr ? 0 : row->record().keys;
    confd_value_t keys[MAXKEYLEN];
    std::size_t made = 0;
    try {
        for (; made < count; ++made) {
            row->record().values[made]->type->to_confd(row->keys()[made], &keys[made]);
        }
    } catch (const std::bad_alloc&) {
        release(keys, made);
        position->entry = {};  // the next step looks for its place anew
        throw;
    }
    release_keys(cursor);
    std::copy_n(keys, count, cursor->keys);
    cursor->n = static_cast<int>(count);
    position->started = true;
    position->ended = row == nullptr;
    position->keys.clear();  // which keeps the room that it has had from the beginning
    if (row != nullptr) {
        position->keys.assign(row->keys(), row->keys() + count);
    }
    return CONFD_OK;
}

int step(Call& call, maapi_cursor* cursor, Position* position)
{
    if (position->stays(call)) {
        ++position->entry;
        return arrive(cursor, position, position->entry ? *position->entry : nullptr);
    }
    const store::List* const list = call.transaction().find_list(position->list);
    if (list != nullptr && !position->ended) {
        position->entry =
            position->started ? list->iterate_after(position->keys.data(), position->keys.size()) : list->begin();
        position->openings = call.transaction().openings();
    } else {
        position->entry = {};
    }
    return arrive(cursor, position, position->entry ? *position->entry : nullptr);
}

int find(Call& call, maapi_cursor* cursor, Position* position, confd_find_next_type type, const confd_value_t* inkeys,
         int n)
{
    std::vector<schema::Value> keys;
    if (const PathError error = read_keys(*position->list.node, inkeys, n, &keys)) {
        return call.fail(error.code, error.detail);
    }
    if (call.recorded()) {
        call.arguments((type == CONFD_FIND_NEXT ? "after " : "from ") + key_tuple_text(*position->list.node, keys));
    }
    position->entry = {};
    const store::List* const list = call.transaction().find_list(position->list);
    const store::Row* row = nullptr;
    if (list != nullptr) {
        row = type == CONFD_FIND_NEXT ? list->find_after(keys.data(), keys.size())
                                      : list->find_from(keys.data(), keys.size());
    }
    return arrive(cursor, position, row);
}

// A call on an open cursor.
template <typename Work>
int cursor_call(Function function, maapi_cursor* cursor, Work&& work)
{
    Position* const position = position_of(*cursor);
    if (position == nullptr) {
        return fail_call(name_of(function), CONFD_ERR_PROTOUSAGE, {}, "the cursor is not initialised");
    }
    return run_call(function, {cursor->sock, cursor->thandle}, position->path, [&](Call& call) {
        const int result = work(call, position);
        call.go_to(position->list, position->keys);
        return result;
    });
}

}  // namespace

int maapi_init_cursor(int sock, int thandle, struct maapi_cursor* mc, const char* fmt, ...)
{
    *mc = maapi_cursor{};
    mc->sock = sock;
    mc->thandle = thandle;
    BGP_PLATFORM_PATH_CALL(maapi_init_cursor, (Handle{sock, thandle}), fmt, [mc](Call& call, const store::Path& path) {
        if (path.node == nullptr || !path.node->is_list() || path.names_entry()) {
            return call.fail(CONFD_ERR_BADPATH, "not a list");
        }
        if (call.transaction().hangs(path)) {
            call.meet(Reading::ListBelowMissingEntryIsEmpty);
        }
        if (path.node->entry->keys > kPublishedKeys) {
            call.meet(Reading::KeyOfMoreThanEightIsTaken);
        }
        auto position = std::make_unique<Position>();
        position->device = &call.device();
        position->list = path;
        position->path = call.path();
        position->keys.reserve(path.node->entry->keys);
        mc->position = position.release();
        ++call.device().cursors;
        return CONFD_OK;
    });
}

int maapi_get_next(struct maapi_cursor* mc)
{
    return cursor_call(Function::maapi_get_next, mc,
                       [mc](Call& call, Position* position) { return step(call, mc, position); });
}

int maapi_find_next(struct maapi_cursor* mc, enum confd_find_next_type type, confd_value_t* inkeys, int n_inkeys)
{
    return cursor_call(Function::maapi_find_next, mc, [=](Call& call, Position* position) {
        return find(call, mc, position, type, inkeys, n_inkeys);
    });
}

void maapi_destroy_cursor(struct maapi_cursor* mc)
{
    if (!admitted("maapi_destroy_cursor")) {
        return;
    }
    const std::unique_ptr<Position> position(position_of(*mc));
    if (position == nullptr) {
        return;
    }
    release_keys(mc);
    mc->position = nullptr;
    if (Registry::instance().lives(position->device)) {
        --position->device->cursors;
    }
}

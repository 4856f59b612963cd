// Values of the program: copied and released.
#include <cstdlib>
#include <new>

#include "values/owned_values.h"

using namespace bgp_platform;

namespace {

bool has_octets(const confd_value_t& value)
{
    switch (value.type) {
        case C_BUF:
        case C_BINARY:
        case C_HEXSTR:
        case C_QNAME:
        case C_OBJECTREF:
        case C_OID:
        case C_BITBIG:
            return true;
        default:
            return false;
    }
}

void give_back(void* memory)
{
    values::forget(memory);
    std::free(memory);
}

// Releases what a value owns, entry by entry for a list; the value then owns nothing.
void release(confd_value_t* value, void (*release_entry)(confd_value_t*))
{
    if (has_octets(*value)) {
        give_back(value->val.buf.ptr);
        value->val.buf.ptr = nullptr;
        value->val.buf.size = 0;
    } else if (value->type == C_LIST) {
        for (unsigned int i = 0; i < value->val.list.size; ++i) {
            release_entry(&value->val.list.ptr[i]);
        }
        give_back(value->val.list.ptr);
        value->val.list.ptr = nullptr;
        value->val.list.size = 0;
    }
}

// At every moment *to owns all that it points to, so that it can be released when memory runs out. It may be the
// original itself.
void copy_content(const confd_value_t from, confd_value_t* to)
{
    CONFD_SET_NOEXISTS(to);
    if (has_octets(from)) {
        const confd_buf_t& octets = from.val.buf;
        void* const copy = values::own_bytes({reinterpret_cast<const char*>(octets.ptr), octets.size});
        CONFD_SET_BUF(to, copy, octets.size);
        to->type = from.type;
    } else if (from.type == C_STR) {
        void* const copy = values::own_bytes(from.val.s);
        CONFD_SET_STR(to, copy);
    } else if (from.type == C_LIST) {
        confd_value_t* const entries = values::own_array(from.val.list.size);
        CONFD_SET_LIST(to, entries, from.val.list.size);
        for (unsigned int i = 0; i < from.val.list.size; ++i) {
            copy_content(from.val.list.ptr[i], &entries[i]);
        }
    } else {
        *to = from;
    }
}

}  // namespace

void confd_free_value(confd_value_t* v)
{
    if (v != nullptr) {
        release(v, confd_free_value);
    }
}

confd_value_t* confd_value_dup_to(const confd_value_t* v, confd_value_t* newv)
{
    try {
        copy_content(*v, newv);
        return newv;
    } catch (const std::bad_alloc&) {
        confd_free_dup_to_value(newv);
        CONFD_SET_NOEXISTS(newv);
        return nullptr;
    }
}

void confd_free_dup_to_value(confd_value_t* v)
{
    if (v != nullptr && v->type == C_STR) {
        give_back(v->val.s);
        v->val.s = nullptr;
    } else if (v != nullptr) {
        release(v, confd_free_dup_to_value);
    }
}

// The handles that every step gets, as values. The two of an open transaction are one, so that a call reads
// transaction.set(&value, "/path{%u}", key): each member is the maapi call that its line shows and gives what that call
// gives.
#pragma once

#include <cstddef>
#include <cstdint>

#include "confd/cursor.h"
#include "confd_maapi.h"

namespace confd {

struct Transaction {
    int maapi_socket;
    int thandle;

    template <typename... Keys>
    int exists(const char* path, Keys... keys) const
    {
        return maapi_exists(maapi_socket, thandle, path, keys...);
    }

    template <typename... Keys>
    int num_instances(const char* path, Keys... keys) const
    {
        return maapi_num_instances(maapi_socket, thandle, path, keys...);
    }

    template <typename... Keys>
    int get(confd_value_t* value, const char* path, Keys... keys) const
    {
        return maapi_get_elem(maapi_socket, thandle, value, path, keys...);
    }

    template <typename... Keys>
    int get_u_int16(uint16_t* number, const char* path, Keys... keys) const
    {
        return maapi_get_u_int16_elem(maapi_socket, thandle, number, path, keys...);
    }

    template <typename... Keys>
    int get_enum_value(int32_t* number, const char* path, Keys... keys) const
    {
        return maapi_get_enum_value_elem(maapi_socket, thandle, number, path, keys...);
    }

    template <typename... Keys>
    int get_u_int32(uint32_t* number, const char* path, Keys... keys) const
    {
        return maapi_get_u_int32_elem(maapi_socket, thandle, number, path, keys...);
    }

    template <typename... Keys>
    int set(confd_value_t* value, const char* path, Keys... keys) const
    {
        return maapi_set_elem(maapi_socket, thandle, value, path, keys...);
    }

    // A row from tagged values, or its first n.
    template <typename... Keys>
    int set_values(const confd_tag_value_t* values, int n, const char* path, Keys... keys) const
    {
        return maapi_set_values(maapi_socket, thandle, values, n, path, keys...);
    }

    template <std::size_t n, typename... Keys>
    int set_values(const confd_tag_value_t (&values)[n], const char* path, Keys... keys) const
    {
        return maapi_set_values(maapi_socket, thandle, values, static_cast<int>(n), path, keys...);
    }

    template <typename... Keys>
    int set_text(const char* text, const char* path, Keys... keys) const
    {
        return maapi_set_elem2(maapi_socket, thandle, text, path, keys...);
    }

    template <typename... Keys>
    int create(const char* path, Keys... keys) const
    {
        return maapi_create(maapi_socket, thandle, path, keys...);
    }

    template <typename... Keys>
    int remove(const char* path, Keys... keys) const
    {
        return maapi_delete(maapi_socket, thandle, path, keys...);
    }

    template <typename... Keys>
    int move(confd_value_t* to_key, int n, const char* path, Keys... keys) const
    {
        return maapi_move(maapi_socket, thandle, to_key, n, path, keys...);
    }

    template <typename... Keys>
    Cursor cursor(const char* path, Keys... keys) const
    {
        return Cursor(maapi_socket, thandle, path, keys...);
    }
};

// The three handles of an upgrade, in the order in which every step gets them.
struct Handles {
    int maapi_socket;
    int thandle;
    int cdb_socket;  // with a read session on the configuration before the upgrade

    Transaction transaction() const { return {maapi_socket, thandle}; }
};

}  // namespace confd

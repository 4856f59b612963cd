// A walk over the entries of a list in a transaction, in list order. The cursor is given back at the end of its scope.
#pragma once

#include "confd_maapi.h"

namespace confd {

class Cursor {
public:
    template <typename... Keys>
    Cursor(int maapi_socket, int thandle, const char* path, Keys... keys)
        : opening_(maapi_init_cursor(maapi_socket, thandle, &mc_, path, keys...)), result_(opening_)
    {
    }
    ~Cursor()
    {
        if (opening_ == CONFD_OK) {
            maapi_destroy_cursor(&mc_);
        }
    }
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;

    // Steps to the next entry. False at the end, after a failure, and when the cursor could not be opened; result()
    // tells which.
    bool next() { return opening_ == CONFD_OK && arrived(maapi_get_next(&mc_)); }

    // Steps to an entry by its first keys instead; see maapi_find_next().
    bool find_next(confd_find_next_type type, confd_value_t* keys, int n)
    {
        return opening_ == CONFD_OK && arrived(maapi_find_next(&mc_, type, keys, n));
    }

    // What the last call of the cursor gave, its opening included.
    int result() const { return result_; }

    // The keys of the entry that it stands on, the cursor's own; they change with the next step.
    confd_value_t* keys() { return mc_.keys; }
    int n() const { return mc_.n; }
    maapi_cursor& position() { return mc_; }

private:
    bool arrived(int result)
    {
        result_ = result;
        return result == CONFD_OK && mc_.n > 0;
    }

    maapi_cursor mc_{};
    int opening_;
    int result_;
};

}  // namespace confd

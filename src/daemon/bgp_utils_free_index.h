// The numbers given back to an allocator: a leaf-list, whose first entry is used again first.
#pragma once

#include "confd/transaction.h"
#include "daemon/operation.h"

// Whether there are any. Then `free_list` holds them, a C_LIST that the caller releases, and a line that takes their
// count ("... list size:%d") is traced. The value read must be a list.
bool read_free_list(const Operation& operation, const confd::Transaction& transaction, const char* free_index_path,
                    const char* line, confd_value_t& free_list);

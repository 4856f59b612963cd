// What a schema owns. Deques, so that nodes, records, types and modules stay where they are while others join them.
#pragma once

#include <libyang/libyang.h>

#include <deque>
#include <memory>
#include <unordered_map>

#include "schema/schema.h"

namespace bgp_platform::schema {

struct ContextDeleter {
    void operator()(ly_ctx* context) const noexcept { ly_ctx_destroy(context); }
};

struct Schema::Storage {
    std::unique_ptr<ly_ctx, ContextDeleter> context;
    std::deque<Module> modules;
    std::deque<Type> types;
    std::deque<Record> records;
    std::deque<Node> nodes;
    std::unordered_map<uint32_t, const std::string*> names;  // by hash
};

// Keeps libyang's messages in its context, for first_error(), and off the standard error stream; undone at the end of
// the scope.
class KeepMessages {
public:
    explicit KeepMessages(const ly_ctx* context);
    ~KeepMessages();
    KeepMessages(const KeepMessages&) = delete;
    KeepMessages& operator=(const KeepMessages&) = delete;

    // "what (where)"; empty when libyang has said nothing.
    std::string first_error() const;

private:
    const ly_ctx* context_;
    uint32_t options_;
};

}  // namespace bgp_platform::schema

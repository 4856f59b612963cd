// libyang's context of some modules, and what it says about them.
#pragma once

#include <libyang/libyang.h>

#include <memory>
#include <string>
#include <vector>

#include "schema/schema.h"

namespace bgp_platform::schema {

struct ContextDeleter {
    void operator()(ly_ctx* context) const noexcept { ly_ctx_destroy(context); }
};
using Context = std::unique_ptr<ly_ctx, ContextDeleter>;

// Throws SchemaError with libyang's message for modules that are not valid. Each node keeps its statement in `priv`.
Context context_of(const std::vector<ModuleText>& modules);

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

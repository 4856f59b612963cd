// Tables of the judgement as a schema has them, which take longer to compile than a small router to be judged.
#pragma once

#include <memory>

#include "device.h"

namespace bgp_rehearse {

// Compiled once for the schema that the platform is built with, which devices mostly have.
template <typename Compiled>
std::shared_ptr<const Compiled> compiled_for(const bgp_platform::schema::Schema& schema)
{
    using bgp_platform::schema::Schema;
    if (&schema != Schema::builtin().get()) {
        return std::make_shared<const Compiled>(schema);
    }
    static const auto builtin = std::make_shared<const Compiled>(schema);
    return builtin;
}

}  // namespace bgp_rehearse

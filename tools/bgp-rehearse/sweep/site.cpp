#include "sweep/site.h"

#include <fmt/format.h>

namespace bgp_rehearse {

std::string Site::name() const
{
    return fmt::format("{}: {}{}{}", step, bgp_platform::capi::name_of(function), path.empty() ? "" : " ", path);
}

}  // namespace bgp_rehearse

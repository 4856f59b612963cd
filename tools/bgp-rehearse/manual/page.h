// Manual pages, in mdoc.
#pragma once

#include <string>
#include <string_view>

#include "manual/command.h"

namespace bgp_rehearse::manual {

// What a page tells that the command line does not: the text of docs/manual/NAME.md, compiled in; of "shared" what all
// pages have. Throws std::logic_error where there is none.
std::string_view prose_of(const std::string& name);

// The page of a command, which is `top` or lies below it. The same on every machine and day: its date is that of
// $SOURCE_DATE_EPOCH, and none where that is not set.
std::string page_of(const Command& command, const Command& top);

}  // namespace bgp_rehearse::manual

// The reasons of a fleet as a table for spreadsheets: RFC 4180, a line for each finding of a router, and one for a router
// that has none.
#pragma once

#include <string>
#include <string_view>

#include "fleet/merge/sqlite.h"

namespace bgp_rehearse {

// False, with errno set, when not everything could be written. Throws DatabaseError.
[[nodiscard]] bool write_csv(const Database& database, int file);

// A field of such a table. A spreadsheet would take one that begins with = + - @, a tab or a carriage return for a formula:
// an apostrophe before it prevents that.
std::string csv_field(std::string_view text);

}  // namespace bgp_rehearse

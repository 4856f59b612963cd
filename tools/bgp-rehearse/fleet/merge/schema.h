// The database of a fleet: its tables and views. docs/fleet.md tells people what they hold.
#pragma once

#include <string>

#include "fleet/merge/sqlite.h"

namespace bgp_rehearse {

inline constexpr int kDatabaseVersion = 2;

// Makes the tables in an empty database, or, when these are filled, all that finds things in them.
void make_tables(const Database& database);
void make_indexes(const Database& database);

// Opens the database of a fleet to read it. Throws CommandError (BadInput), naming the file, for what is none, or is one
// of another version.
Database open_fleet(const std::string& file);

}  // namespace bgp_rehearse

// The inputs in archives and in repositories.
#pragma once

#include <string>

#include "fleet/plan/collection.h"

namespace bgp_rehearse {

// Both throw CommandError (BadInput) where not all can be listed.

// Of each member the newest version, which is its last. False: the file is no archive.
bool collect_archive(const std::string& path, Collection* collection);

// The files of the newest commit.
void collect_repository(const std::string& path, Collection* collection);

}  // namespace bgp_rehearse

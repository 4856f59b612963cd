// What a file is known by.
#pragma once

#include <string>

namespace bgp_rehearse {

// The SHA-256 of a file's bytes, in hexadecimal; empty when they cannot be read, or the file is no ordinary one.
std::string sha256_of_file(const std::string& name);

}  // namespace bgp_rehearse

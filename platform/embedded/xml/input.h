// A configuration file, or standard input, opened for reading: as it is, or unpacked.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "xml/source.h"

namespace bgp_platform::xml {

// Called now and then with the bytes read so far and the file's size (0 when not known).
using Progress = std::function<void(std::size_t bytes, std::size_t total)>;

// What messages call a file: "standard input" for "-".
std::string shown_name(const std::string& path);

// `name` is the path's shown name; it and `progress` outlive the source. Throws LoadError for what cannot be opened, for
// a folder, for a named pipe that nobody writes to, for compressed data that is damaged and for an archive of files.
std::unique_ptr<PeekedSource> open_input(const std::string& path, const std::string& name, const Progress& progress);

}  // namespace bgp_platform::xml

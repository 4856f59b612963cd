// The content of compressed data.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "xml/source.h"

namespace bgp_platform::xml {

bool is_gzip(std::string_view head);

// What gzip packed. Its checksums are checked.
std::unique_ptr<Source> gunzipped(std::unique_ptr<Source> packed, const std::string& name);

// What another program packed (xz, zstd, bzip2 and others), or, where nobody did, the data as it is. Throws LoadError
// for an archive with files in it.
std::unique_ptr<Source> unpacked(std::unique_ptr<PeekedSource> packed, const std::string& name);

}  // namespace bgp_platform::xml

// Writes a configuration in ConfD's load format, streaming, entries in list order, leaves in schema order, two blanks a
// level. Keys come first as they do in every row; a leaf that only has its default is not written. What the configuration
// holds of modules that the schema does not know comes last, as it was read.
#pragma once

#include <stdexcept>
#include <string>

#include "store/configuration.h"
#include "xml/config_reader.h"

namespace bgp_platform::xml {

class WriteError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Writes the document to an open descriptor (which stays open, and is not synced). Throws WriteError on the first
// failed write, with the system's reason. Progress counts bytes written; its total is 0.
void write_config(const store::Configuration& configuration, int descriptor, const Progress& progress = {});

// The document as text; without the <config> wrapper, just the top elements of the schema's modules one after another,
// when `wrapped` is false.
std::string config_text(const store::Configuration& configuration, bool wrapped = true);

}  // namespace bgp_platform::xml

// Reads a configuration in ConfD's load format: <config xmlns="http://tail-f.com/ns/config/1.0"> around the modules'
// top elements. The file streams through libxml2's parser; only the store grows. Values are checked against the schema.
#pragma once

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "store/configuration.h"

namespace bgp_platform::xml {

// "edge.xml:17: /router/bgp{65010}/as-size: "threeOctet" is not one of twoOctet, fourOctet"
class LoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Called now and then with the bytes read so far and the file's size (0 when not known).
using Progress = std::function<void(std::size_t bytes, std::size_t total)>;

// What a file may hold at most. How deep its elements stand is for the schema to say.
struct Limits {
    std::size_t value_bytes = 1 << 20;  // of one value, white space around it included
    std::size_t entries = 50'000'000;   // of all lists and leaf-lists together
};

// Adds the file's content to a configuration. Throws LoadError for a file that cannot be read, is not well-formed, has
// a DOCTYPE or an entity reference, holds an element the schema does not have (naming it), a value its leaf does not
// take, an entry without one of its keys, a leaf or an entry twice, text where elements belong, or more than the
// limits allow. The message quotes at most 200 bytes of a value, a name or a key, and nothing of a password. After a
// throw the configuration holds what was read before: callers load into one they then drop.
void read_config_file(const std::string& path, store::Configuration* into, const Progress& progress = {},
                      const Limits& limits = {});

// The same from memory; `name` stands for the file in messages.
void read_config_text(std::string_view text, const std::string& name, store::Configuration* into,
                      const Limits& limits = {});

}  // namespace bgp_platform::xml

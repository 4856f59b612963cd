// Reads a configuration in ConfD's load format, <config xmlns="http://tail-f.com/ns/config/1.0"> around the modules' top
// elements, or in NETCONF's <config>, <data> or <rpc-reply>; plain, compressed, or from standard input. It streams
// through libxml2's parser; only the store grows. Values are checked against the schema, and the top elements of modules
// that the schema does not know are carried along (store/foreign_part.h).
#pragma once

#include <string>
#include <string_view>

#include "store/configuration.h"
#include "xml/input.h"
#include "xml/limits.h"
#include "xml/load_errors.h"

namespace bgp_platform::xml {

// Adds a file's content, or that of standard input for "-", to a configuration. Throws LoadError for a file that cannot
// be read or unpacked, is no XML or not well-formed, has a DOCTYPE or an entity reference, holds an unknown element in a
// module that the schema knows (naming it), a value its leaf does not take, an entry without one of its keys, a leaf or
// an entry twice, text where elements belong, or more than the limits allow. All of that is told at once; what makes the
// rest unreadable comes last. An error quotes at most 200 bytes of a value, a name or a key, and nothing of a password.
// After a throw the configuration holds what was read before: callers load into one they then drop.
void read_config_file(const std::string& path, store::Configuration* into, const Progress& progress = {},
                      const Limits& limits = {});

// The same from memory; `name` stands for the file in messages.
void read_config_text(std::string_view text, const std::string& name, store::Configuration* into,
                      const Limits& limits = {});

}  // namespace bgp_platform::xml

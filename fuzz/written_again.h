// What holds of every configuration: written out it loads, and is the same.
#pragma once

#include <string>

#include "require.h"
#include "xml/config_reader.h"
#include "xml/config_writer.h"

namespace bgp_fuzz {

inline void require_written_again(const bgp_platform::store::Configuration& configuration)
{
    using bgp_platform::xml::config_text;
    const std::string text = config_text(configuration);
    bgp_platform::store::Configuration again(bgp_platform::schema::Schema::builtin());
    try {
        bgp_platform::xml::read_config_text(text, "written.xml", &again);
    } catch (const bgp_platform::xml::LoadError& error) {
        require(false, error.what(), text);
    }
    require(config_text(again) == text, "what was loaded again is the same", text);
}

}  // namespace bgp_fuzz

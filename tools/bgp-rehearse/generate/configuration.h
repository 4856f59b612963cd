// Draws a stored configuration at random: valid under the modules of yang/, in ConfD's XML load format, and so varied
// that an upgrade of some hundred of them meets most of what its steps tell apart.
//
// The same settings give the same bytes on every machine. The text is made piece by piece and nothing of it is kept, so
// that a million neighbours need no more memory than ten.
//
//     bgp_generator::Settings settings;
//     settings.neighbors = 10;
//     settings.seed = 7;
//     device.load_text(bgp_generator::configuration_text(settings));
#pragma once

#include <string>

#include "generate/settings.h"

namespace bgp_generator {

// Gives the configuration to the sink. Returns whether the sink took all of it. Throws std::invalid_argument for a
// number above its kMost, naming it.
bool write_configuration(const Settings& settings, const Sink& sink);

// The configuration as one text, for small ones.
std::string configuration_text(const Settings& settings);

}  // namespace bgp_generator

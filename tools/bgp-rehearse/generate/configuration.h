// Draws a stored configuration at random, in ConfD's XML load format, valid under the modules of yang/. There are two
// kinds: an adversarial one, so varied and so full of holes that an upgrade of some hundred of them meets most of what its
// steps tell apart; and a healthy router as operators have them, which may be given flaws that are known.
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

#include "generate/healthy/router.h"
#include "generate/settings.h"

namespace bgp_generator {

// Gives an adversarial configuration to the sink. Returns whether the sink took all of it. Throws std::invalid_argument
// for a number above its kMost, naming it.
bool write_configuration(const Settings& settings, const Sink& sink);

// The same of a healthy router. Throws std::invalid_argument where the wishes do not fit together, too.
bool write_configuration(const healthy::Request& request, const Sink& sink);

// The configuration as one text, for small ones.
std::string configuration_text(const Settings& settings);
std::string configuration_text(const healthy::Request& request);

}  // namespace bgp_generator

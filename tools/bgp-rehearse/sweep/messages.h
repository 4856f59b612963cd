// What the processes of a sweep tell each other, as text: a run its verdict, a worker its tally.
#pragma once

#include <string>

#include "sweep/tally.h"
#include "sweep/verdict.h"

namespace bgp_rehearse {

std::string message_of(const RunVerdict& verdict);
std::string message_of(const Tally& tally);

// Of a whole message; they throw for any other text.
RunVerdict verdict_of(const std::string& message);
Tally tally_of(const std::string& message);

}  // namespace bgp_rehearse

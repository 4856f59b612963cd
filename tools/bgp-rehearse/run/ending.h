// How a rehearsal ends the command.
#pragma once

#include "report/model.h"
#include "run/messages.h"
#include "run/request.h"

namespace bgp_rehearse {

// By what came of an upgrade that returned, as far as its process knows: it does not put files in place.
Ending ending_of(const RunOptions& options, const Finished& finished);

// "; OUT.xml is not written", or nothing where no output is wanted.
std::string without_output(const RunOptions& options);

}  // namespace bgp_rehearse

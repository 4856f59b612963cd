// The report as a page for a browser: one file of HTML with its style, its scripts and its data, that asks nothing of
// the network. docs/rehearse.md tells how it is used, README.md in this folder what is where in it.
#pragma once

#include "report/model.h"

namespace bgp_rehearse {

// Of a rehearsal, or of why there was none. False, with errno set, when not all of it could be written.
[[nodiscard]] bool write_html_report(const Report& report, const Ending& ending, int file);

// Gives a page that is written another ending, which came later. Likewise; the file is one to read and write.
[[nodiscard]] bool replace_page_ending(const Ending& ending, int file);

}  // namespace bgp_rehearse

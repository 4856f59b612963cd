// What pages have around their parts: a head with their style and a security policy, and their scripts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "report/html/markup.h"

namespace bgp_rehearse {

// What is compiled in of a page.
struct Assets {
    std::string_view style;
    std::vector<std::string_view> scripts;  // in the order in which they are run
};

// Opens the document, writes its head and closes that. The policy lets this style and these scripts run, nothing else,
// and nothing from outside.
void write_head(const std::string& title, const Assets& assets, Markup* page);

void write_scripts(const Assets& assets, Markup* page);

// Links to the parts of the page: "#steps", "Steps".
struct PartLink {
    const char* link;
    const char* name;
};
void write_navigation(const std::vector<PartLink>& parts, Markup* page);

}  // namespace bgp_rehearse

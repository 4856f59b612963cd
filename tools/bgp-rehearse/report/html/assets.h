// Style and scripts of a page, from the files in this folder.
#pragma once

#include <string_view>
#include <vector>

namespace bgp_rehearse {

std::string_view page_style();
const std::vector<std::string_view>& page_scripts();  // in the order in which they are run

}  // namespace bgp_rehearse

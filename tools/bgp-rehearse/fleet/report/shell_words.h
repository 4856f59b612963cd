// Commands that people can paste into a shell.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace bgp_rehearse {

// A word as a POSIX shell reads it, quoted where it must be. What a terminal would act on, and bytes that are not UTF-8,
// come as $'\xNN', which bash, zsh and ksh read.
std::string shell_word(std::string_view bytes);

// The words of a command, with blanks between them.
std::string shell_words(const std::vector<std::string>& words);

}  // namespace bgp_rehearse

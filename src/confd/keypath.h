// A keypath as text, for calls that go on from it ("%s{%u}") and for log lines that show it.
#pragma once

#include <string>

#include "confd_lib.h"

namespace confd {

template <typename... Keys>
std::string keypath(const char* format, Keys... keys)
{
    std::string text(256, '\0');
    int length = confd_format_keypath(text.data(), static_cast<int>(text.size()), format, keys...);
    if (length >= static_cast<int>(text.size())) {
        text.resize(static_cast<std::size_t>(length) + 1);
        length = confd_format_keypath(text.data(), static_cast<int>(text.size()), format, keys...);
    }
    text.resize(static_cast<std::size_t>(length < 0 ? 0 : length));
    return text;
}

}  // namespace confd

// Stored passwords. The stand-in has no cipher of a device: its encrypted form is "$test$" followed by the plain text
// reversed, "$test$terces" for "secret". No other text is an encrypted password to it.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "nzos_passwd.h"

namespace {

constexpr std::string_view kMark = "$test$";

}  // namespace

extern "C" char* nzos_passwd_decrypt(const char* text, int flags)
{
    if (text == nullptr || flags != 0) {
        return nullptr;
    }
    const std::string_view stored = text;
    if (stored.substr(0, kMark.size()) != kMark) {
        return nullptr;
    }
    char* const plain = strdup(text + kMark.size());
    if (plain != nullptr) {
        std::reverse(plain, plain + std::strlen(plain));
    }
    return plain;
}

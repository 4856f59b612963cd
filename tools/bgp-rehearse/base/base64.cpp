#include "base/base64.h"

#include <nettle/base64.h>

namespace bgp_rehearse {

std::string base64_of(std::string_view bytes)
{
    std::string text(BASE64_ENCODE_RAW_LENGTH(bytes.size()), '\0');
    base64_encode_raw(text.data(), bytes.size(), reinterpret_cast<const uint8_t*>(bytes.data()));
    return text;
}

}  // namespace bgp_rehearse

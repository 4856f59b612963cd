#include "base/base64.h"

#include <openssl/evp.h>

namespace bgp_rehearse {

std::string base64_of(std::string_view bytes)
{
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');  // with the null that OpenSSL writes behind it
    const int size =
        EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(size));
    return text;
}

}  // namespace bgp_rehearse

// A function's signature as failed type checks show it.
#pragma once

#include <cstring>
#include <string>

#include "confd/type_check.h"

namespace bgp_test {

inline std::string plain_signature(std::string signature)
{
    confd::make_plain(signature.data());
    signature.resize(std::strlen(signature.c_str()));
    return signature;
}

}  // namespace bgp_test

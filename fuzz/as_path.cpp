// AS_PATH attributes: the first octet of the input is the width flag, the others are the attribute. Whatever they are,
// nothing behind them is read, and the text has a number for each begun piece of them.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "bgp_update/bgp_utils.h"
#include "require.h"

namespace {

using bgp_fuzz::require;

std::size_t numbers_in(const uint8_t* attribute, std::size_t size, std::size_t width)
{
    if (size < 2 || attribute[1] != 2) {
        return 0;
    }
    const std::size_t start = (attribute[0] & 0x10U) != 0 ? 6 : 5;
    return size <= start ? 0 : (size - start + width - 1) / width;
}

std::size_t numbers_shown(const std::string& text)
{
    std::size_t count = 0;
    bool in_number = false;
    for (const char c : text) {
        require((c >= '0' && c <= '9') || (c == ' ' && in_number), "numbers stand one blank apart", text);
        count += c != ' ' && !in_number ? 1 : 0;
        in_number = c != ' ';
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const int as_width = bytes[0];
    confd_value_t attribute;
    CONFD_SET_BINARY(&attribute, const_cast<uint8_t*>(bytes + 1), size - 1);
    confd_value_t out{};
    require(BgpUtils::GetRoutesAsPath(&attribute, as_width, &out) == 0, "the result is 0", "");
    require(out.type == C_BUF, "the path is a text", std::to_string(out.type));
    const std::string text(CONFD_GET_CBUFPTR(&out), CONFD_GET_BUFSIZE(&out));
    std::free(CONFD_GET_BUFPTR(&out));
    require(numbers_shown(text) == numbers_in(bytes + 1, size - 1, as_width == 1 ? 2 : 4), "every number is shown",
            text);
    return 0;
}

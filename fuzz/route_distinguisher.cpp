// Texts of route distinguishers and route targets: whatever the text, eight octets come out, and distinguisher and
// target of one text differ in their type alone.
#include <cstdint>
#include <string>

#include "bgp_update/bgp_utils.h"
#include "require.h"

namespace {

using bgp_fuzz::require;

constexpr char kZero[] = "00:00:00:00:00:00:00:00";

bool is_octets(const std::string& text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string allowed = i % 3 == 2 ? ":" : "0123456789abcdef";
        if (allowed.find(text[i]) == std::string::npos) {
            return false;
        }
    }
    return text.size() == sizeof kZero - 1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    const std::string distinguisher = BgpUtils::Rd2str(text, false);
    const std::string target = BgpUtils::Rt2str(text);
    require(is_octets(distinguisher), "a distinguisher is eight octets", distinguisher);
    require(is_octets(target), "a target is eight octets", target);
    require(text.find(':') != std::string::npos || distinguisher == kZero, "no colon, no octets", distinguisher);
    if (target != kZero) {
        require(distinguisher.substr(0, 3) == "00:", "a distinguisher's type is below 256", distinguisher);
        require(target.substr(0, 6) == distinguisher.substr(3, 3) + "02:", "a target has its subtype", target);
        require(target.substr(6) == distinguisher.substr(6), "the other octets are the same", target);
    } else {
        require(distinguisher == kZero, "no target, no distinguisher", distinguisher);
    }
    return 0;
}

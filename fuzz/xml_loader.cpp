// Configuration files: a file is refused with a message that names it, or it loads, and then the configuration written
// out again loads and is the same.
#include <cstdint>
#include <string>
#include <string_view>

#include "require.h"
#include "written_again.h"
#include "xml/config_reader.h"

namespace {

using bgp_fuzz::require;
using bgp_platform::schema::Schema;
using bgp_platform::store::Configuration;
using bgp_platform::xml::LoadError;
using bgp_platform::xml::read_config_text;

bool loads(std::string_view text, Configuration* into)
{
    try {
        read_config_text(text, "fuzzed.xml", into);
        return true;
    } catch (const LoadError& error) {
        const std::string message = error.what();
        require(message.rfind("fuzzed.xml:", 0) == 0, "a refusal names the file", message);
        return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    Configuration loaded(Schema::builtin());
    if (loads({reinterpret_cast<const char*>(bytes), size}, &loaded)) {
        bgp_fuzz::require_written_again(loaded);
    }
    return 0;
}

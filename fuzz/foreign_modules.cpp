// What stands in a configuration file of modules that the data model does not know: written out it loads again, and is
// the same, by its text and by its canonical form as libxml2's tree has it.
#include <cstdint>
#include <string>
#include <string_view>

#include "require.h"
#include "support/canonical_xml.h"
#include "written_again.h"
#include "xml/config_reader.h"

namespace {

using bgp_fuzz::require;
using bgp_platform::schema::Schema;
using bgp_platform::store::Configuration;

bool is_foreign(const char* name_space)
{
    return Schema::builtin()->module_by_uri(name_space) == nullptr;
}

bool loads(const std::string& text, Configuration* into)
{
    try {
        bgp_platform::xml::read_config_text(text, "fuzzed.xml", into);
        return true;
    } catch (const bgp_platform::xml::LoadError&) {
        return false;
    }
}

// Canonical XML has no form for some documents: namespaces by relative URIs.
void require_same(const std::string& read, const std::string& written)
{
    const auto expected = bgp_test::canonical_top_elements(read, is_foreign);
    const auto carried = bgp_test::canonical_top_elements(written, is_foreign);
    require(carried.size() == expected.size(), "as many elements are written as were read", written);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        require(!expected[i] || carried[i] == expected[i], "an element is the same by its canonical form", written);
    }
}

}  // namespace

// The octets are a whole document, or what stands in ConfD's wrapper.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size)
{
    const std::string given(reinterpret_cast<const char*>(bytes), size);
    const std::string wrapped =
        "<config xmlns=\"http://tail-f.com/ns/config/1.0\" xmlns:o=\"urn:outer\">" + given + "</config>";
    for (const std::string& text : {given, wrapped}) {
        Configuration loaded(Schema::builtin());
        if (loads(text, &loaded) && !loaded.foreign().empty()) {
            require_same(text, bgp_platform::xml::config_text(loaded));
            bgp_fuzz::require_written_again(loaded);
        }
    }
    return 0;
}

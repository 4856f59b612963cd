// Run by the build: writes the C++ source with the compiled schema of the built-in modules to the file of its argument.
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>

#include "schema/compiled_schema.h"

namespace {

using bgp_platform::schema::CompiledSchema;
using bgp_platform::schema::Schema;

std::string source()
{
    const auto schema = Schema::from_modules(bgp_platform::schema::builtin_modules());
    return "// Made from the folder yang/ when the platform is built.\n"
           "#include \"schema/compiled_schema.h\"\n\n"
           "namespace bgp_platform::schema {\n\n"
           "std::string_view builtin_schema()\n{\n"
           "    return R\"schema(" +
           CompiledSchema::text_of(*schema) +
           ")schema\";\n}\n\n"
           "}  // namespace bgp_platform::schema\n";
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        const std::string text = source();
        if (argc == 2 && std::ofstream(argv[1], std::ios::binary) << text << std::flush) {
            return EXIT_SUCCESS;
        }
        std::cerr << "the compiled schema is not written: usage: " << argv[0] << " FILE\n";
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
    }
    return EXIT_FAILURE;
}

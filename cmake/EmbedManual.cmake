# Writes OUTPUT, a C++ source with the texts of PAGES, what manual pages tell that the command line does not, by their names.
include(${CMAKE_CURRENT_LIST_DIR}/TextLiteral.cmake)

set(content "// Made from docs/manual/ when the command is built.\n#include \"manual/page.h\"\n\n#include <stdexcept>\n\n")
string(APPEND content "namespace bgp_rehearse::manual {\n\nstd::string_view prose_of(const std::string& name)\n{\n")
foreach(file IN LISTS PAGES)
    cmake_path(GET file STEM name)
    bgp_text_literal("${file}" text)
    string(APPEND content "    if (name == \"${name}\") {\n        return\n         ${text};\n    }\n")
endforeach()
string(APPEND content "    throw std::logic_error(\"docs/manual/\" + name + \".md is missing\");\n}\n\n")
string(APPEND content "}  // namespace bgp_rehearse::manual\n")
file(WRITE "${OUTPUT}" "${content}")

# Writes OUTPUT, a C++ source with the text of the YANG files MODULES.
include(${CMAKE_CURRENT_LIST_DIR}/TextLiteral.cmake)

set(content "// Made from the folder yang/ when the platform is built.\n#include \"schema/schema.h\"\n\n")
string(APPEND content "namespace bgp_platform::schema {\n\nconst std::vector<ModuleText>& builtin_modules()\n{\n")
string(APPEND content "    static const std::vector<ModuleText> modules = {\n")
foreach(file IN LISTS MODULES)
    cmake_path(GET file STEM name)
    bgp_text_literal("${file}" text)
    string(APPEND content "        {\"${name}\",\n         ${text}},\n")
endforeach()
string(APPEND content "    };\n    return modules;\n}\n\n}  // namespace bgp_platform::schema\n")
file(WRITE "${OUTPUT}" "${content}")

# Writes OUTPUT, a C++ source with the text of PAGE, the document that tells what findings mean.
include(${CMAKE_CURRENT_LIST_DIR}/TextLiteral.cmake)

bgp_text_literal("${PAGE}" text)
set(content "// Made from docs/rehearse.md when the command is built.\n#include \"findings/page.h\"\n\n")
string(APPEND content "namespace bgp_rehearse {\n\nstd::string_view builtin_page()\n{\n")
string(APPEND content "    return\n         ${text};\n}\n\n}  // namespace bgp_rehearse\n")
file(WRITE "${OUTPUT}" "${content}")

# Writes OUTPUT, a C++ source with the function NAME() that gives the text of ASSETS: the styles of a page, which become one,
# and then its scripts, in that order.
include(${CMAKE_CURRENT_LIST_DIR}/TextLiteral.cmake)

foreach(file IN LISTS ASSETS)
    cmake_path(GET file EXTENSION kind)
    bgp_text_literal("${file}" text)
    if(kind STREQUAL ".css")
        string(APPEND style "         ${text}\n")
    else()
        string(APPEND scripts "         ${text},\n\n")
    endif()
endforeach()
set(content "// Made from a page's files when the command is built.\n#include \"report/html/assets.h\"\n\n")
string(APPEND content "namespace bgp_rehearse {\n\nAssets ${NAME}()\n{\n    return {\n${style},\n        {\n${scripts}        }};\n}\n\n")
string(APPEND content "}  // namespace bgp_rehearse\n")
file(WRITE "${OUTPUT}" "${content}")

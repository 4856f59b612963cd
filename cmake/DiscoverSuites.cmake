# Writes OUTPUT, which ctest includes: a test with PROPERTIES for each suite of PROGRAM, an executable of GoogleTest.
execute_process(COMMAND ${PROGRAM} --gtest_list_tests OUTPUT_VARIABLE listed COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "\n[^ \n]+\\." suites "\n${listed}")  # cases stand behind blanks
foreach(property IN LISTS PROPERTIES)
    string(APPEND properties " [=[${property}]=]")
endforeach()
foreach(suite IN LISTS suites)
    string(STRIP "${suite}" suite)
    string(REGEX REPLACE "\\.$" "" name "${suite}")
    string(APPEND content "add_test([=[${name}]=] [=[${PROGRAM}]=] --gtest_brief=1 [=[--gtest_filter=${suite}*]=])\n"
        "set_tests_properties([=[${name}]=] PROPERTIES${properties})\n")
endforeach()
file(WRITE "${OUTPUT}" "${content}")

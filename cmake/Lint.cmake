# clang-tidy (.clang-tidy has its checks) and cppcheck beside the compiler, for what is added after this: what they say
# fails the build. Used where Clang compiles, as clang-tidy knows its options. (Of parameters taken by value clang-tidy
# tells already, and where they are meant. Of reserved identifiers the compiler tells, at no cost.)
if(BGP_LINT)
    add_compile_options(-Wreserved-identifier)
    # A unit is made of sources that it includes (Unity.cmake).
    set(CMAKE_CXX_CLANG_TIDY clang-tidy-14 --quiet --checks=-bugprone-suspicious-include)
    set(CMAKE_CXX_CPPCHECK cppcheck --quiet --error-exitcode=1 --enable=warning,performance,portability
        --inline-suppr --suppress=passedByValue --library=posix "--template={file}:{line}: {severity}: {message} [{id}]")
endif()

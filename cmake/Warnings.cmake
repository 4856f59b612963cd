# The warnings that every target of this project is built with.
function(bgp_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(BGP_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()
option(BGP_WERROR "Treat warnings as errors" OFF)

# Many sources in one translation unit: a release is built in half the time. The sources of a folder are compiled up to
# sixteen at a time, so their names without linkage must differ; the other presets compile each by itself.
option(BGP_UNITY "Compile the command and the tests by folders instead of source by source (preset release)" OFF)

# To be called when the target has all its sources.
function(bgp_unity target)
    if(NOT BGP_UNITY)
        return()
    endif()
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources EXCLUDE REGEX "^\\$<")  # objects
    foreach(source IN LISTS sources)
        cmake_path(GET source PARENT_PATH folder)
        string(MAKE_C_IDENTIFIER "${folder}" folder)
        math(EXPR group "0${count_${folder}} / 16")
        math(EXPR count_${folder} "${count_${folder}} + 1")
        set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${folder}_${group})
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    # It takes names without linkage for those of a header when they are not in the file that is compiled.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
endfunction()

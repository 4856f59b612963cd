# Many sources in one translation unit: a release is built in half the time, and linters go through headers once for all of
# them. Names without linkage therefore differ within a folder. In the other presets each source is compiled by itself.
option(BGP_UNITY "Compile sources folder by folder, but for those of the library (presets release and asan)" OFF)

# To be called when the target has all its sources. Up to sixteen of a folder are compiled together, or all of the target
# with WHOLE.
function(bgp_unity target)
    if(NOT BGP_UNITY)
        return()
    endif()
    get_target_property(sources ${target} SOURCES)
    list(FILTER sources EXCLUDE REGEX "^\\$<")  # objects
    foreach(source IN LISTS sources)
        # The objects are named for the folders, and the same wherever the project lies.
        cmake_path(ABSOLUTE_PATH source OUTPUT_VARIABLE folder)
        cmake_path(GET folder PARENT_PATH folder)
        cmake_path(RELATIVE_PATH folder BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
        string(MAKE_C_IDENTIFIER "${folder}" folder)
        math(EXPR group "0${count_${folder}} / 16")
        math(EXPR count_${folder} "${count_${folder}} + 1")
        if("WHOLE" IN_LIST ARGN)
            set(folder whole)
            set(group 0)
        endif()
        # Clang's analyzer takes what a source includes for headers, which it passes over, unless its name has this.
        set_source_files_properties(${source} PROPERTIES UNITY_GROUP UnifiedSource_${folder}_${group})
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    # It takes names without linkage for those of a header when they are not in the file that is compiled.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endfunction()

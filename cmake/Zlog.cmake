# Which zlog the embedded platform uses: sets BGP_ZLOG_SYSTEM, and the target zlog::zlog when that is true.
find_path(BGP_ZLOG_INCLUDE zlog.h NO_PACKAGE_ROOT_PATH)
find_library(BGP_ZLOG_LIBRARY zlog)
set(BGP_ZLOG_SYSTEM FALSE)
if(BGP_ZLOG STREQUAL "system" OR BGP_ZLOG STREQUAL "auto")
    if(BGP_ZLOG_INCLUDE AND BGP_ZLOG_LIBRARY)
        set(BGP_ZLOG_SYSTEM TRUE)
        add_library(zlog::zlog UNKNOWN IMPORTED)
        set_target_properties(zlog::zlog PROPERTIES IMPORTED_LOCATION "${BGP_ZLOG_LIBRARY}"
                              INTERFACE_INCLUDE_DIRECTORIES "${BGP_ZLOG_INCLUDE}")
    elseif(BGP_ZLOG STREQUAL "system")
        message(FATAL_ERROR "BGP_ZLOG is system, but zlog.h or libzlog is not found: install zlog or use -DBGP_ZLOG=standin")
    endif()
endif()

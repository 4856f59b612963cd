# The platform of a device SDK: its headers, and every library in its lib folder (BGP_PLATFORM_LIBRARIES).
if(NOT IS_DIRECTORY "${BGP_PLATFORM_DIR}/include" OR NOT IS_DIRECTORY "${BGP_PLATFORM_DIR}/lib")
    message(FATAL_ERROR "BGP_PLATFORM_DIR is ${BGP_PLATFORM_DIR}, which has no include/ and lib/: name the SDK's folder")
endif()
file(GLOB BGP_PLATFORM_LIBRARIES CONFIGURE_DEPENDS "${BGP_PLATFORM_DIR}/lib/*.so" "${BGP_PLATFORM_DIR}/lib/*.a")

# How a release is hardened, and made the same in every folder it is built in. tools/dev/check-binaries holds the built
# files to the first, tools/dev/check-packages to the second.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    add_compile_options(-fstack-protector-strong -fcf-protection=full -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,text)
    include(CheckPIESupported)
    check_pie_supported()
endif()

if(NOT BGP_COVERAGE)  # counters find their sources by the whole path
    add_compile_options(-ffile-prefix-map=${PROJECT_SOURCE_DIR}=. -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
endif()
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

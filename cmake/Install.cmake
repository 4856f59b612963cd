# What `cmake --install` puts in place of a build against a device SDK: the library, its public headers, and the files by
# which others find them. The library of other builds needs the embedded platform, and is the command's alone
# (Workstation.cmake).
include(CMakePackageConfigHelpers)

install(TARGETS bgp_update EXPORT bgp_update_targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/bgp_update DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT bgp_update_targets NAMESPACE bgp:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/bgp_update)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/bgp_update-config.cmake.in
    ${PROJECT_BINARY_DIR}/bgp_update-config.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/bgp_update)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/bgp_update-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/bgp_update-config.cmake ${PROJECT_BINARY_DIR}/bgp_update-config-version.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/bgp_update)

configure_file(${PROJECT_SOURCE_DIR}/cmake/bgp_update.pc.in ${PROJECT_BINARY_DIR}/bgp_update.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/bgp_update.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# What `cmake --install` puts in place of a build over the embedded platform: the command, with the libraries that it alone
# runs with, and what an engineer reads. Nothing of it says where it was installed, so that the folder may be moved: the
# command finds its libraries from where it lies, as a Debian package has them below /usr. No header is installed, and no
# library where a linker looks: others build against the device's SDK, never against the stand-in.
set(BGP_ZSH_COMPLETIONS share/zsh/site-functions CACHE STRING "Where completions for zsh are installed, below the prefix")
cmake_path(SET private_libraries NORMALIZE "lib/${CMAKE_LIBRARY_ARCHITECTURE}/bgp-rehearse")
set(documents share/doc/bgp-rehearse)

set_target_properties(bgp-rehearse PROPERTIES INSTALL_RPATH "$ORIGIN/../${private_libraries}")
set_target_properties(bgp_platform bgp_update PROPERTIES INSTALL_RPATH "$ORIGIN")
target_compile_definitions(bgp_rehearse_core PRIVATE BGP_REHEARSE_INSTALLED_LIBRARY_FOLDER="../${private_libraries}")

install(TARGETS bgp-rehearse RUNTIME DESTINATION bin)
install(TARGETS bgp_platform bgp_update LIBRARY DESTINATION ${private_libraries})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/yang DESTINATION share/bgp-rehearse FILES_MATCHING PATTERN *.yang)
install(PROGRAMS ${PROJECT_SOURCE_DIR}/tools/fleet/parallel ${PROJECT_SOURCE_DIR}/tools/fleet/slurm
        DESTINATION share/bgp-rehearse/fleet)
install(FILES ${PROJECT_SOURCE_DIR}/tools/fleet/shards.sh DESTINATION share/bgp-rehearse/fleet)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${documents})
foreach(page IN ITEMS rehearse.md report.schema.json fleet.md fleet.schema.json generate.md sweep.md)
    install(FILES ${PROJECT_SOURCE_DIR}/docs/${page} DESTINATION ${documents})
endforeach()

# Manual pages and completions, as the command tells them of itself. The pages have the date of the release.
set(released_in ${PROJECT_SOURCE_DIR}/debian/changelog)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${released_in})
file(STRINGS ${released_in} released LIMIT_COUNT 1 REGEX "^ -- ")
string(REGEX REPLACE "^.*>  " "" released "${released}")
execute_process(COMMAND date -u -d "${released}" +%s OUTPUT_VARIABLE released OUTPUT_STRIP_TRAILING_WHITESPACE
                COMMAND_ERROR_IS_FATAL ANY)
set(told ${PROJECT_BINARY_DIR}/told)
foreach(kind IN ITEMS man complete-bash complete-zsh complete-fish)
    add_custom_command(
        OUTPUT ${told}/${kind}.made
        COMMAND ${CMAKE_COMMAND} -E rm -rf ${told}/${kind}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${told}/${kind}
        COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${released}
                $<TARGET_FILE:bgp-rehearse> --generate ${kind} ${told}/${kind}
        COMMAND ${CMAKE_COMMAND} -E touch ${told}/${kind}.made
        DEPENDS bgp-rehearse
        VERBATIM)
    list(APPEND all_told ${told}/${kind}.made)
endforeach()
add_custom_target(bgp_rehearse_told ALL DEPENDS ${all_told})
install(DIRECTORY ${told}/man/ DESTINATION share/man/man1)
install(DIRECTORY ${told}/complete-bash/ DESTINATION share/bash-completion/completions)
install(DIRECTORY ${told}/complete-zsh/ DESTINATION ${BGP_ZSH_COMPLETIONS})
install(DIRECTORY ${told}/complete-fish/ DESTINATION share/fish/vendor_completions.d)

# `cmake --install`: the library, its public headers, a CMake package and a pkg-config file; on a workstation also the
# host platform, which the library needs there, and the replay tool with its manual page and completion.
include(CMakePackageConfigHelpers)

set(installed lsc_custom lsc_platform)
if(LSC_BUILD_HOST)
  list(APPEND installed lsc_host_platform)
  set_target_properties(lsc_custom PROPERTIES INSTALL_RPATH "$ORIGIN")
  set_target_properties(lsc_replay PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS lsc_replay)
  install(FILES docs/lsc_replay.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES tools/cli/completion.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    RENAME lsc_replay)
endif()
install(TARGETS ${installed} EXPORT lsc_custom
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/lsc_custom)

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/lsc_custom)
install(EXPORT lsc_custom NAMESPACE lsc:: FILE lsc_customTargets.cmake DESTINATION ${package})
configure_package_config_file(cmake/lsc_customConfig.cmake.in ${PROJECT_BINARY_DIR}/lsc_customConfig.cmake
  INSTALL_DESTINATION ${package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/lsc_customConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/lsc_customConfig.cmake ${PROJECT_BINARY_DIR}/lsc_customConfigVersion.cmake
  DESTINATION ${package})

# The file finds its prefix from where it lies, so that an installed tree can be moved.
file(RELATIVE_PATH pc_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
set(pc_libraries -llsc_custom)
if(LSC_BUILD_HOST)
  string(APPEND pc_libraries " -llsc_host_platform")
endif()
configure_file(cmake/lsc_custom.pc.in ${PROJECT_BINARY_DIR}/lsc_custom.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/lsc_custom.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Installs the library for find_package(orva) and pkg-config, and the command.
include(CMakePackageConfigHelpers)

install(TARGETS orva orva_static EXPORT orva-targets)
foreach(header IN LISTS ORVA_PUBLIC_HEADERS)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES orva/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orva/${folder})
endforeach()

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/orva)
install(EXPORT orva-targets NAMESPACE orva:: DESTINATION ${config_dir})
configure_package_config_file(cmake/orva-config.cmake.in orva-config.cmake
  INSTALL_DESTINATION ${config_dir})
write_basic_package_version_file(orva-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/orva-config.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/orva-config-version.cmake
  DESTINATION ${config_dir})

# The way from the folder of the pkg-config file up to the prefix, so that the whole can be moved.
file(RELATIVE_PATH ORVA_PC_PREFIX
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/orva.pc.in orva.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orva.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(ORVA_BUILD_APPS)
  install(TARGETS orva_command)
endif()

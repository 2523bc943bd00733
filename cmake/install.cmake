# Installs the library for find_package(orva) and pkg-config, and the command.
include(CMakePackageConfigHelpers)

# orva_install_library(LIBDIR RUNTIME DEVELOPMENT [EXCLUDE_FROM_ALL])
# puts the libraries into LIBDIR. What programs need to run is the component RUNTIME, what compilers
# need besides is DEVELOPMENT.
function(orva_install_library libdir runtime development)
  set(config_dir ${libdir}/cmake/orva)
  set(generated ${PROJECT_BINARY_DIR}/install/${development})
  install(TARGETS orva orva_static EXPORT ${development}-targets
    LIBRARY DESTINATION ${libdir} COMPONENT ${runtime} ${ARGN} NAMELINK_COMPONENT ${development}
    ARCHIVE DESTINATION ${libdir} COMPONENT ${development} ${ARGN}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT ${development} ${ARGN})

  install(EXPORT ${development}-targets FILE orva-targets.cmake NAMESPACE orva::
    DESTINATION ${config_dir} COMPONENT ${development} ${ARGN})
  configure_package_config_file(cmake/orva-config.cmake.in ${generated}/orva-config.cmake
    INSTALL_DESTINATION ${config_dir})
  write_basic_package_version_file(${generated}/orva-config-version.cmake
    COMPATIBILITY SameMajorVersion)
  install(FILES ${generated}/orva-config.cmake ${generated}/orva-config-version.cmake
    DESTINATION ${config_dir} COMPONENT ${development} ${ARGN})

  # The way from the folder of the pkg-config file up to the prefix, so that the whole can be moved.
  cmake_path(ABSOLUTE_PATH libdir BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX} OUTPUT_VARIABLE from)
  file(RELATIVE_PATH ORVA_PC_PREFIX ${from}/pkgconfig ${CMAKE_INSTALL_PREFIX})
  configure_file(cmake/orva.pc.in ${generated}/orva.pc @ONLY)
  install(FILES ${generated}/orva.pc DESTINATION ${libdir}/pkgconfig
    COMPONENT ${development} ${ARGN})
endfunction()

orva_install_library(${CMAKE_INSTALL_LIBDIR} library development)
if(ORVA_BUILD_APPS)
  install(TARGETS orva_command COMPONENT command)
  include(cmake/man_page.cmake)
endif()

# Debian packages: `cpack -G DEB` makes them from any build, whatever its prefix is. They put the
# libraries into Debian's folder for one architecture below /usr.
find_program(GZIP gzip)
if(NOT CMAKE_LIBRARY_ARCHITECTURE OR NOT GZIP)
  return()
endif()

orva_install_library(lib/${CMAKE_LIBRARY_ARCHITECTURE} debian_library debian_development
  EXCLUDE_FROM_ALL)

set(CPACK_PACKAGE_NAME orva)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "the orva developers <bugs@orva.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_COMPONENTS_ALL)

# Each package has the changes, and what Debian calls the changelog.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/debian/changelog CONTENT
"orva (${PROJECT_VERSION}) unstable; urgency=medium

  * Version ${PROJECT_VERSION}; NEWS.gz tells what changed.

 -- ${CPACK_PACKAGE_CONTACT}  ${date}
")
set(changes ${PROJECT_BINARY_DIR}/debian/changelog.gz ${PROJECT_BINARY_DIR}/debian/NEWS.gz)
add_custom_command(OUTPUT ${changes}
  COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/CHANGELOG.md NEWS
  COMMAND ${GZIP} -9nkf changelog NEWS
  DEPENDS CHANGELOG.md ${PROJECT_BINARY_DIR}/debian/changelog
  WORKING_DIRECTORY ${PROJECT_BINARY_DIR}/debian
  VERBATIM)
add_custom_target(orva_changes ALL DEPENDS ${changes})

# orva_package(COMPONENT NAME SECTION DESCRIPTION): the first line of DESCRIPTION is the short one.
macro(orva_package component name section description)
  string(TOUPPER ${component} key)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${description}")
  install(FILES ${changes} DESTINATION share/doc/${name} COMPONENT ${component} EXCLUDE_FROM_ALL)
endmacro()

set(library_package liborva${PROJECT_VERSION_MAJOR})
orva_package(debian_library ${library_package} libs
"image analysis for microscope images - shared library
Images, filters, thresholds, regions, and the centers of round objects such
as cell nuclei.
This package holds the library that programs need to run.")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/debian/triggers CONTENT "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/triggers)

orva_package(debian_development liborva-dev libdevel
"image analysis for microscope images - development files
Images, filters, thresholds, regions, and the centers of round objects such
as cell nuclei.
This package holds the headers, the static library, and the files for CMake
and pkg-config.")
set(CPACK_DEBIAN_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
if(ORVA_BUILD_JAVA)
  set(CPACK_DEBIAN_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS default-jdk-headless)
endif()

if(ORVA_BUILD_APPS)
  orva_package(command orva science
"image analysis for microscope images - command
The command finds the centers of round objects such as cell nuclei, measures
regions, and filters and converts images.")
endif()

include(CPack)

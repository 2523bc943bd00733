# The manual page of the command, from what it prints for --help. Without help2man there is none.
find_program(HELP2MAN help2man)
find_program(GZIP gzip)
if(NOT HELP2MAN OR NOT GZIP OR CMAKE_CROSSCOMPILING)
  return()
endif()

set(page ${PROJECT_BINARY_DIR}/man/orva.1)
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/man)
add_custom_command(OUTPUT ${page}.gz
  COMMAND ${HELP2MAN} --no-info --name ${PROJECT_DESCRIPTION} --output ${page}
    $<TARGET_FILE:orva_command>
  COMMAND ${GZIP} -9nf ${page}
  DEPENDS orva_command
  COMMENT "Writing the manual page"
  VERBATIM)
add_custom_target(orva_man_page ALL DEPENDS ${page}.gz)
install(FILES ${page}.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT command)

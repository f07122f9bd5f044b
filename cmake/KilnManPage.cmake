# Manual pages, made from what the programs say of themselves with --help and --version.
include_guard(GLOBAL)

find_program(KILN_HELP2MAN help2man)
if(KILN_INSTALL AND NOT KILN_HELP2MAN AND NOT CMAKE_CROSSCOMPILING)
  message(STATUS "help2man is missing: the programs will have no manual pages")
endif()

# Installs the manual page of the program TARGET; `summary` is the line behind its name.
function(kiln_man_page target summary)
  if(NOT KILN_INSTALL OR NOT KILN_HELP2MAN OR CMAKE_CROSSCOMPILING OR NOT KILN_POSTFIX STREQUAL "")
    return()
  endif()
  set(page ${CMAKE_CURRENT_BINARY_DIR}/${target}.1)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${KILN_HELP2MAN} --no-info --name ${summary} --output ${page} $<TARGET_FILE:${target}>
    VERBATIM)
  if(KILN_DEBIAN_LAYOUT)  # whose manual pages are packed
    install(CODE "execute_process(COMMAND gzip -9nkf ${page} COMMAND_ERROR_IS_FATAL ANY)"
      COMPONENT programs)
    string(APPEND page .gz)
  endif()
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT programs)
endfunction()

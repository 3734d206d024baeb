# Makes the programs' manuals from what the programs say for --help, where help2man is installed and the programs run here.
find_program(KIVO_HELP2MAN help2man)
set(kivo_has_manuals FALSE)
if(KIVO_HELP2MAN AND NOT CMAKE_CROSSCOMPILING AND NOT KIVO_SANITIZE)
  set(kivo_has_manuals TRUE)
else()
  message(STATUS "Manuals of the programs: left out (help2man is missing, or the programs do not run here)")
endif()

# kivo_add_manual(TARGET NAME PURPOSE): PURPOSE is one line, a verb first.
function(kivo_add_manual target name purpose)
  if(NOT kivo_has_manuals)
    return()
  endif()
  set(manual ${PROJECT_BINARY_DIR}/manuals/${name}.1.gz)
  list(TRANSFORM kivo_programs REPLACE "-app$" "" OUTPUT_VARIABLE others)
  list(REMOVE_ITEM others ${name})
  add_custom_command(OUTPUT ${manual}
    COMMAND ${PROJECT_SOURCE_DIR}/tools/manual $<TARGET_FILE:${target}> ${name} ${PROJECT_VERSION} ${purpose} ${manual} ${others}
    DEPENDS ${target} ${PROJECT_SOURCE_DIR}/tools/manual VERBATIM)
  add_custom_target(${name}-manual ALL DEPENDS ${manual})
  install(FILES ${manual} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endfunction()

# cpack runs this before it packs, to remove debug information. The service keeps its symbol table, which
# it needs to name the stack frames of a fault.
file(GLOB programs ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/bin/*)
foreach(program ${programs})
  set(what --strip-unneeded)
  if(program MATCHES "/TrellanService$")
    set(what --strip-debug)
  endif()
  execute_process(COMMAND ${CPACK_STRIP} ${what} --remove-section=.comment ${program} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

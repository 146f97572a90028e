# Run by cpack on what it is about to pack: debug information stays out. The service keeps its symbol
# table, by which it names the frames of a fault.
file(GLOB programs ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*/usr/bin/*)
foreach(program ${programs})
  set(what --strip-unneeded)
  if(program MATCHES "/TrellanService$")
    set(what --strip-debug)
  endif()
  execute_process(COMMAND ${CPACK_STRIP} ${what} --remove-section=.comment ${program} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

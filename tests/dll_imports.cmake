# Fails when one of DLLS needs a run-time DLL of the compiler, carries no version resource, or does not
# have VERSION in its name, by which programs import it.
foreach(dll IN LISTS DLLS)
  execute_process(COMMAND ${OBJDUMP} -p ${dll} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "DLL Name: [^\n]+" imports "${headers}")
  if(NOT imports)
    message(SEND_ERROR "${dll}: no imports found")
  endif()
  if(imports MATCHES "libgcc|libstdc|libwinpthread")
    message(SEND_ERROR "${dll} needs the compiler's run-time: ${imports}")
  endif()
  if(NOT headers MATCHES "[\n\t ]lib(vx|KilnBase)-${VERSION}\\.dll")
    message(SEND_ERROR "${dll} does not name itself with version ${VERSION}")
  endif()
  file(READ ${dll} bytes HEX)
  if(NOT bytes MATCHES "460069006c006500560065007200730069006f006e00") # "FileVersion", UTF-16
    message(SEND_ERROR "${dll} has no version resource")
  endif()
endforeach()

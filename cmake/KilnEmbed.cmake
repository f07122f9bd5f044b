# Files that a program carries inside.
#
# kiln_embed(TARGET FILE NAMESPACE VARIABLE) compiles the bytes of FILE, which the build may make, into
# TARGET as `extern const std::string_view VARIABLE` in the namespace.
#
# The same file is the script that writes the source:
#   cmake -DFILE=... -DNAMESPACE=... -DVARIABLE=... -DSOURCE=... -P KilnEmbed.cmake
if(CMAKE_SCRIPT_MODE_FILE)
  file(READ ${FILE} bytes HEX)
  string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
  file(SIZE ${FILE} size)
  file(WRITE ${SOURCE} "#include <string_view>\n\nnamespace ${NAMESPACE} {\n"
    "extern const std::string_view ${VARIABLE};\n"
    "constinit const std::string_view ${VARIABLE}(\n\"${bytes}\",\n${size});\n}\n")
  return()
endif()

set(KILN_EMBED_SCRIPT ${CMAKE_CURRENT_LIST_FILE})

function(kiln_embed target file namespace variable)
  cmake_path(GET file FILENAME source)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${source}.cpp)
  add_custom_command(OUTPUT ${source} DEPENDS ${file} ${KILN_EMBED_SCRIPT} VERBATIM
    COMMAND ${CMAKE_COMMAND} -DFILE=${file} -DNAMESPACE=${namespace} -DVARIABLE=${variable}
            -DSOURCE=${source} -P ${KILN_EMBED_SCRIPT})
  target_sources(${target} PRIVATE ${source})
endfunction()

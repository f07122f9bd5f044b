# Command-line parsing by CLI11, headers only: the target kiln_cli11. The folder of the headers is linked
# into the build tree by itself, so that the other headers beside it stay out of a build for another
# system.
include_guard(GLOBAL)

set(KILN_CLI11_HEADERS /usr/include/CLI CACHE PATH "Folder of the headers of CLI11")
if(NOT EXISTS ${KILN_CLI11_HEADERS}/CLI.hpp)
  message(FATAL_ERROR "CLI11 is missing: install libcli11-dev, or set KILN_CLI11_HEADERS")
endif()
file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/cli11)
file(CREATE_LINK ${KILN_CLI11_HEADERS} ${PROJECT_BINARY_DIR}/cli11/CLI SYMBOLIC)
add_library(kiln_cli11 INTERFACE)
target_include_directories(kiln_cli11 SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/cli11)

# Links a target with it. What parses the command line is compiled without optimisation, which takes
# half as long.
function(kiln_link_cli11 target)
  target_link_libraries(${target} PRIVATE kiln_cli11)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "CommandLine\\.cpp$")
  set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS -O0)
endfunction()

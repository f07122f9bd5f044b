# What every target of this tree has in common.

include(${CMAKE_CURRENT_LIST_DIR}/KilnInstall.cmake)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

# Our own code: strict warnings, nothing exported by accident, no build path inside (assertions name
# their file relative to the tree), and on Windows no compiler run-time DLLs beside what is linked.
function(kiln_own_code target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                         $<$<BOOL:${KILN_WARNINGS_AS_ERRORS}>:-Werror>
                         -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
  set_target_properties(${target} PROPERTIES
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  if(MINGW)
    target_link_options(${target} PRIVATE -static)
  endif()
endfunction()

# A shared library of this tree: versioned, found beside its neighbours wherever it is moved to.
# Every header of its folder is public and installed, but for the rooms that are not for users.
function(kiln_library target description)
  kiln_own_code(${target})
  if(NOT WIN32)
    # As on Windows, a library calls its own functions directly, whatever else is loaded.
    target_compile_options(${target} PRIVATE -fno-semantic-interposition -fno-plt)
    target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions)
  endif()
  add_library(KilnBase::${target} ALIAS ${target})
  target_compile_features(${target} PUBLIC cxx_std_20)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS *.h)
  list(FILTER headers EXCLUDE REGEX "/(detail|linpack|kernels|os)/")
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers})
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")
  if(WIN32)
    set_target_properties(${target} PROPERTIES
      RUNTIME_OUTPUT_NAME ${target}-${PROJECT_VERSION_MAJOR})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${target}.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  endif()
  kiln_install_library(${target} ${description})
endfunction()

# What every target of this tree has in common.

include(${CMAKE_CURRENT_LIST_DIR}/KilnInstall.cmake)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# A library finds the programs of a build tree as it finds those of an installation.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${CMAKE_INSTALL_BINDIR})
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${KILN_BUILD_LIBDIR})
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)

# The libraries are shared unless the builder asks for static ones.
if(DEFINED BUILD_SHARED_LIBS AND NOT BUILD_SHARED_LIBS)
  set(KILN_LIBRARY_TYPE STATIC)
else()
  set(KILN_LIBRARY_TYPE SHARED)
endif()

# What tells incompatible versions apart: the minor version counts before 1.0.
set(KILN_INTERFACE_VERSION ${PROJECT_VERSION_MAJOR})
if(PROJECT_VERSION_MAJOR EQUAL 0)
  string(APPEND KILN_INTERFACE_VERSION .${PROJECT_VERSION_MINOR})
endif()

# In names of libraries and packages, so that a debug and a release build have room in one folder.
set(KILN_DEBUG_POSTFIX -debug)
set(KILN_POSTFIX "")
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  set(KILN_POSTFIX ${KILN_DEBUG_POSTFIX})
endif()

# Shared libraries of a release build carry their debug symbols in files of their own.
set(KILN_SPLIT_SYMBOLS OFF)
if(KILN_LIBRARY_TYPE STREQUAL "SHARED" AND CMAKE_BUILD_TYPE STREQUAL "Release" AND CMAKE_OBJCOPY)
  set(KILN_SPLIT_SYMBOLS ON)
endif()

# Our own code: strict warnings, nothing exported by accident, no build path inside (assertions and
# debug symbols name their file relative to the tree), and on Windows no compiler run-time DLLs beside what is linked.
function(kiln_own_code target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
                         $<$<BOOL:${KILN_WARNINGS_AS_ERRORS}>:-Werror>
                         -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
  set_target_properties(${target} PROPERTIES
    C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  if(MINGW)
    # An inline function may be taken from an object of another optimisation. GCC's callers on Windows
    # would still rely on the registers that their own version of it leaves alone.
    target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-ipa-ra>)
    target_link_options(${target} PRIVATE -static)
  endif()
endfunction()

# Code of a library, debug symbols included where they end up in a file of their own.
function(kiln_library_code target)
  kiln_own_code(${target})
  if(KILN_SPLIT_SYMBOLS)
    target_compile_options(${target} PRIVATE -g)
  endif()
endfunction()

# Moves the debug symbols of a library into a file beside it, where debuggers look for them.
function(kiln_split_symbols target)
  set(symbols $<TARGET_FILE_NAME:${target}>.debug)
  add_custom_command(TARGET ${target} POST_BUILD
    WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}> VERBATIM
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug $<TARGET_FILE_NAME:${target}> ${symbols}
    COMMAND ${CMAKE_OBJCOPY} --strip-all --add-gnu-debuglink=${symbols}
            $<TARGET_FILE_NAME:${target}>)
endfunction()

# As on Windows, a shared library calls its own functions directly, whatever else is loaded, and
# exports no templates of the standard library.
function(kiln_shared_object target)
  set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_compile_options(${target} PRIVATE -fno-semantic-interposition -fno-plt)
  target_link_options(${target} PRIVATE -Wl,-Bsymbolic-functions -Wl,--version-script=${exports})
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${exports})
endfunction()

# A library of this tree: versioned, found beside its neighbours wherever it is moved to.
# Every header of its folder is public and installed, but for the rooms that are not for users.
function(kiln_library target description)
  kiln_library_code(${target})
  string(TOUPPER ${target} macroPrefix)
  if(KILN_LIBRARY_TYPE STREQUAL "STATIC")
    target_compile_definitions(${target} PUBLIC ${macroPrefix}_STATIC)
  elseif(NOT WIN32)
    kiln_shared_object(${target})
  endif()
  target_compile_definitions(${target} PRIVATE ${macroPrefix}_BUILDING)
  add_library(KilnBase::${target} ALIAS ${target})
  target_compile_features(${target} PUBLIC cxx_std_20)
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS *.h)
  list(FILTER headers EXCLUDE REGEX "/(detail|linpack|kernels|os)/")
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${headers})
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${KILN_INTERFACE_VERSION} INSTALL_RPATH "$ORIGIN"
    DEBUG_POSTFIX ${KILN_DEBUG_POSTFIX})
  if(WIN32 AND KILN_LIBRARY_TYPE STREQUAL "SHARED")
    set_target_properties(${target} PROPERTIES
      RUNTIME_OUTPUT_NAME ${target}-${KILN_INTERFACE_VERSION})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/version.rc.in ${target}.rc @ONLY)
    target_sources(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  endif()
  if(KILN_SPLIT_SYMBOLS)
    kiln_split_symbols(${target})
  endif()
  kiln_install_library(${target} ${description})
endfunction()

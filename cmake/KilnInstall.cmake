# How the libraries are installed: headers, a CMake package and pkg-config files. What is installed may
# be moved as a whole; no file in it holds a path of this machine.
#
# Every installed file belongs to a component: `runtime` (what programs need to run), `development`
# (what one needs to build them), `programs` (those of the library), `symbols` (for debuggers).

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

option(KILN_INSTALL "Install the libraries with their packages" ${PROJECT_IS_TOP_LEVEL})
option(KILN_DEBIAN_LAYOUT "Install where packages of Debian do, under /usr" OFF)

# What is compiled and linked is the same in both layouts, so that one build tree makes packages of both
# kinds and builds nothing again: KILN_BUILD_LIBDIR is the folder of libraries that the build knows.
set(KILN_BUILD_LIBDIR ${CMAKE_INSTALL_LIBDIR})
if(KILN_DEBIAN_LAYOUT)
  set(CMAKE_INSTALL_LIBDIR lib/${CMAKE_LIBRARY_ARCHITECTURE})
endif()

set(KILN_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/KilnBase)
set(KILN_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Makes a header of the library from its template and installs it as `path`.
function(kiln_generated_header target template path)
  configure_file(${template} ${PROJECT_BINARY_DIR}/include/${path} @ONLY)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>)
  if(KILN_INSTALL)
    cmake_path(GET path PARENT_PATH folder)
    install(FILES ${PROJECT_BINARY_DIR}/include/${path}
      DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder} COMPONENT development)
  endif()
endfunction()

# The same for a header that includes all public headers of the library that are not generated.
function(kiln_umbrella_header target template path)
  get_target_property(headers ${target} HEADER_SET)
  list(FILTER headers EXCLUDE REGEX "/detail/")
  list(TRANSFORM headers REPLACE "^${PROJECT_SOURCE_DIR}/(.*)$" "#include <\\1>")
  list(JOIN headers "\n" includes)
  kiln_generated_header(${target} ${template} ${path})
endfunction()

# Installs the debug symbols of a library: beside it, or where debuggers look for those of the system.
function(kiln_install_symbols target)
  if(NOT KILN_SPLIT_SYMBOLS)
    return()
  endif()
  set(folder $<IF:$<BOOL:${WIN32}>,${CMAKE_INSTALL_BINDIR},${CMAKE_INSTALL_LIBDIR}>)
  if(KILN_DEBIAN_LAYOUT)
    string(PREPEND folder lib/debug/usr/)
  endif()
  install(FILES $<TARGET_FILE:${target}>.debug DESTINATION ${folder} COMPONENT symbols)
endfunction()

# Makes and installs the import library from which Microsoft's linker takes the C functions of a DLL.
function(kiln_msvc_library target)
  if(NOT MINGW OR NOT KILN_LIBRARY_TYPE STREQUAL "SHARED" OR NOT KILN_POSTFIX STREQUAL "")
    return()
  endif()
  find_program(KILN_DLLTOOL NAMES llvm-dlltool llvm-dlltool-19 llvm-dlltool-14)
  if(NOT KILN_DLLTOOL)
    message(STATUS "llvm-dlltool is missing: there will be no import library of ${target} for MSVC")
    return()
  endif()
  set(library ${PROJECT_BINARY_DIR}/lib/${target}.lib)
  set(script ${PROJECT_SOURCE_DIR}/cmake/KilnMsvcLibrary.cmake)
  add_custom_command(OUTPUT ${library} DEPENDS ${target} ${script} VERBATIM
    COMMAND ${CMAKE_COMMAND} -DNM=${CMAKE_NM} -DDLLTOOL=${KILN_DLLTOOL}
            -DDLL=$<TARGET_FILE_NAME:${target}> -DIMPORTS=$<TARGET_LINKER_FILE:${target}>
            -DLIBRARY=${library} -P ${script})
  add_custom_target(${target}_msvc ALL DEPENDS ${library})
  install(FILES ${library} DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
endfunction()

# Installs a library, its headers, its debug symbols and its pkg-config file.
function(kiln_install_library target description)
  if(NOT KILN_INSTALL)
    return()
  endif()
  install(TARGETS ${target} EXPORT KilnBaseTargets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    FILE_SET HEADERS COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  kiln_install_symbols(${target})
  kiln_msvc_library(${target})
  set(toPrefix .)
  cmake_path(RELATIVE_PATH toPrefix BASE_DIRECTORY ${KILN_PKGCONFIG_DIR})
  set(requires)
  if(NOT target STREQUAL vx)
    set(requires "vx${KILN_POSTFIX} = ${PROJECT_VERSION}")
  endif()
  set(definitions)
  if(KILN_LIBRARY_TYPE STREQUAL "STATIC")
    string(TOUPPER " -D${target}_STATIC" definitions)
  endif()
  set(package ${target}${KILN_POSTFIX})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/package.pc.in ${package}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${package}.pc
    DESTINATION ${KILN_PKGCONFIG_DIR} COMPONENT development)
endfunction()

# Installs the CMake package of all libraries.
function(kiln_install_package)
  if(NOT KILN_INSTALL)
    return()
  endif()
  install(EXPORT KilnBaseTargets NAMESPACE KilnBase::
    DESTINATION ${KILN_PACKAGE_DIR} COMPONENT development)
  configure_package_config_file(cmake/KilnBaseConfig.cmake.in KilnBaseConfig.cmake
    INSTALL_DESTINATION ${KILN_PACKAGE_DIR})
  write_basic_package_version_file(KilnBaseConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KilnBaseConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/KilnBaseConfigVersion.cmake
    DESTINATION ${KILN_PACKAGE_DIR} COMPONENT development)
  if(NOT KILN_DEBIAN_LAYOUT)
    install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/licenses/KilnBase COMPONENT runtime)
  endif()
endfunction()

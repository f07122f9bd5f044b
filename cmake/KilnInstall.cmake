# How the libraries are installed: headers, a CMake package and pkg-config files. What is installed may
# be moved as a whole; no file in it holds a path of this machine.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

option(KILN_INSTALL "Install the libraries with their packages" ${PROJECT_IS_TOP_LEVEL})

set(KILN_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/KilnBase)
set(KILN_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# Makes a header of the library from its template and installs it as `path`.
function(kiln_generated_header target template path)
  configure_file(${template} ${PROJECT_BINARY_DIR}/include/${path} @ONLY)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/include>)
  if(KILN_INSTALL)
    cmake_path(GET path PARENT_PATH folder)
    install(FILES ${PROJECT_BINARY_DIR}/include/${path}
      DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${folder})
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

# Installs a library, its headers, its debug symbols and its pkg-config file.
function(kiln_install_library target description)
  if(NOT KILN_INSTALL)
    return()
  endif()
  install(TARGETS ${target} EXPORT KilnBaseTargets FILE_SET HEADERS
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  if(KILN_SPLIT_SYMBOLS)
    install(FILES $<TARGET_FILE:${target}>.debug
      DESTINATION $<IF:$<BOOL:${WIN32}>,${CMAKE_INSTALL_BINDIR},${CMAKE_INSTALL_LIBDIR}>)
  endif()
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
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${package}.pc DESTINATION ${KILN_PKGCONFIG_DIR})
endfunction()

# Installs the CMake package of all libraries.
function(kiln_install_package)
  if(NOT KILN_INSTALL)
    return()
  endif()
  install(EXPORT KilnBaseTargets NAMESPACE KilnBase:: DESTINATION ${KILN_PACKAGE_DIR})
  configure_package_config_file(cmake/KilnBaseConfig.cmake.in KilnBaseConfig.cmake
    INSTALL_DESTINATION ${KILN_PACKAGE_DIR})
  write_basic_package_version_file(KilnBaseConfigVersion.cmake COMPATIBILITY SameMinorVersion)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/KilnBaseConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/KilnBaseConfigVersion.cmake DESTINATION ${KILN_PACKAGE_DIR})
  install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/licenses/KilnBase)
endfunction()

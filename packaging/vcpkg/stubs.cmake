# Runs the port without vcpkg, as a check of its language, its source folder and its version:
#   cmake -P stubs.cmake
cmake_minimum_required(VERSION 3.25)
set(port ${CMAKE_CURRENT_LIST_DIR}/ports/kilnbase)
file(READ ${port}/vcpkg.json manifest)
string(JSON PORT GET "${manifest}" name)
string(JSON version GET "${manifest}" version)
set(FEATURES core tools)
set(CURRENT_INSTALLED_DIR ${CMAKE_CURRENT_BINARY_DIR}/build/vcpkg/installed)
set(CURRENT_PACKAGES_DIR ${CMAKE_CURRENT_BINARY_DIR}/build/vcpkg/packages)

foreach(function vcpkg_check_features vcpkg_cmake_install vcpkg_cmake_config_fixup
    vcpkg_fixup_pkgconfig vcpkg_copy_tools)
  cmake_language(EVAL CODE "function(${function})\nendfunction()")
endforeach()

function(vcpkg_cmake_configure)
  cmake_parse_arguments(PARSE_ARGV 0 argument "" "SOURCE_PATH" "")
  file(STRINGS ${argument_SOURCE_PATH}/CMakeLists.txt project REGEX "^project\\(KilnBase ")
  if(NOT project MATCHES "VERSION ${version} ")
    message(FATAL_ERROR "the port has version ${version}, the tree says: ${project}")
  endif()
endfunction()

function(vcpkg_install_copyright)
  cmake_parse_arguments(PARSE_ARGV 0 argument "" "" "FILE_LIST")
  foreach(file IN LISTS argument_FILE_LIST)
    if(NOT EXISTS ${file})
      message(FATAL_ERROR "the port installs ${file}, which is not there")
    endif()
  endforeach()
endfunction()

include(${port}/portfile.cmake)
file(REMOVE_RECURSE ${CMAKE_CURRENT_BINARY_DIR}/build/vcpkg)

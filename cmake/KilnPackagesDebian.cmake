# The packages of Debian: libkilnbase0.1 (the libraries), libkilnbase-dev, kilnbase-tools, and the debug
# symbols. What differs between them stands in packaging/debian/COMPONENT/.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0kiln1)  # comes before the 1 of a package that Debian may have one day
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # the descriptions of the packages have their own
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY >=)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE
  GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# Who makes the packages, told as to Debian's own programs.
set(maintainer "libKilnBase <libkilnbase@example.org>")
if(DEFINED ENV{DEBFULLNAME} AND DEFINED ENV{DEBEMAIL})
  set(maintainer "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${maintainer})

set(debian ${PROJECT_SOURCE_DIR}/packaging/debian)
set(CPACK_PROJECT_CONFIG_FILE ${debian}/cpack.cmake)
set(madeForDebian ${PROJECT_BINARY_DIR}/debian)
set(version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${debian}/changelog.in ${madeForDebian}/changelog.Debian @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${madeForDebian}/changelog COPYONLY)
execute_process(COMMAND gzip -9nf changelog changelog.Debian
  WORKING_DIRECTORY ${madeForDebian} COMMAND_ERROR_IS_FATAL ANY)

# Declares the package NAME of a component, with what Debian wants in each package.
function(kiln_debian_package component name section)
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  file(READ ${debian}/${component}/description description)
  string(STRIP "${description}" description)
  set(CPACK_DEBIAN_${upper}_DESCRIPTION ${description} PARENT_SCOPE)
  install(FILES ${PROJECT_SOURCE_DIR}/packaging/copyright ${madeForDebian}/changelog.gz
    ${madeForDebian}/changelog.Debian.gz DESTINATION share/doc/${name} COMPONENT ${component})
endfunction()

# The system's loader finds the system's libraries: the files that are installed need no run paths.
install(CODE [[
  foreach(file IN LISTS CMAKE_INSTALL_MANIFEST_FILES)
    set(file $ENV{DESTDIR}${file})
    if(file MATCHES "/bin/|\\.so\\.[0-9.]+$" AND NOT IS_SYMLINK ${file})
      file(RPATH_REMOVE FILE ${file})
    endif()
  endforeach()
]] ALL_COMPONENTS)

kiln_debian_package(runtime libkilnbase${KILN_INTERFACE_VERSION} libs)
kiln_debian_package(development libkilnbase-dev libdevel)
kiln_debian_package(programs kilnbase-tools utils)
kiln_debian_package(symbols libkilnbase${KILN_INTERFACE_VERSION}-dbgsym debug)
foreach(component DEVELOPMENT PROGRAMS SYMBOLS)
  set(CPACK_COMPONENT_${component}_DEPENDS runtime)
endforeach()
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS kilnbase-tools)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${debian}/runtime/triggers)
install(FILES ${debian}/runtime/lintian-overrides DESTINATION share/lintian/overrides
  RENAME libkilnbase${KILN_INTERFACE_VERSION} COMPONENT runtime)
set(CPACK_DEBIAN_SYMBOLS_PACKAGE_SHLIBDEPS OFF)

# The .tar.gz of Linux and the .zip of Windows: one archive with all but the debug symbols, and one with
# these. Each holds one folder, which may stand anywhere.

set(CPACK_GENERATOR TGZ)
set(system linux)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(system windows)
endif()
set(CPACK_PACKAGE_FILE_NAME libKilnBase-${PROJECT_VERSION}-${system}-x86_64)
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)
set(CPACK_COMPONENT_INCLUDE_TOPLEVEL_DIRECTORY ON)
list(APPEND CPACK_COMPONENTS_ALL readme)
foreach(component RUNTIME DEVELOPMENT PROGRAMS README)
  set(CPACK_COMPONENT_${component}_GROUP all)
endforeach()
set(CPACK_ARCHIVE_ALL_FILE_NAME ${CPACK_PACKAGE_FILE_NAME})
set(CPACK_ARCHIVE_SYMBOLS_FILE_NAME ${CPACK_PACKAGE_FILE_NAME}-symbols)

set(licences ${CMAKE_INSTALL_DATADIR}/licenses/KilnBase)
install(FILES packaging/copyright DESTINATION ${licences} RENAME copyright.txt COMPONENT programs)

# On Windows the run-time libraries of the compiler are inside, whose licences Debian's packages tell.
if(WIN32 AND EXISTS /usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright)
  foreach(package gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev)
    install(FILES /usr/share/doc/${package}/copyright
      DESTINATION ${licences} RENAME ${package}.txt COMPONENT runtime)
  endforeach()
  install(FILES /usr/share/common-licenses/GPL-3
    DESTINATION ${licences} RENAME GPL-3.txt COMPONENT runtime)
elseif(WIN32)
  message(STATUS "The licences of the compiler's run-time libraries are missing in what is installed")
endif()
install(FILES packaging/${system}/README.md DESTINATION . COMPONENT readme EXCLUDE_FROM_ALL)

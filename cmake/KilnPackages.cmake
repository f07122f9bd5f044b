# Packages for those who do not build: CPack makes them in build/packages/ from what one build tree
# installs. The tree decides about the kind:
# - configured for Debian's layout: .deb packages, one a component;
# - for Windows: .zip archives;
# - else: .tar.gz archives, which may be unpacked anywhere.
# The debug symbols are in a package of their own, which goes over the other ones.

set(CPACK_PACKAGE_NAME libKilnBase)
set(CPACK_PACKAGE_VENDOR libKilnBase)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_SOURCE_DIR}/build/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL runtime development programs symbols)
set(CPACK_THREADS 0)

if(KILN_DEBIAN_LAYOUT)
  include(KilnPackagesDebian)
else()
  include(KilnPackagesArchive)
endif()
include(CPack)

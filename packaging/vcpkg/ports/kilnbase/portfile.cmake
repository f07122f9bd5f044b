# Builds the tree that this file is part of.
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../../../.." ABSOLUTE)

vcpkg_check_features(OUT_FEATURE_OPTIONS FEATURE_OPTIONS FEATURES tools KILN_BUILD_TOOLS)
vcpkg_cmake_configure(
  SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS
    ${FEATURE_OPTIONS}
    -DKILN_BUILD_TESTS=OFF
    -DKILN_BUILD_EXAMPLES=OFF
    -DKILN_WARNINGS_AS_ERRORS=OFF
  MAYBE_UNUSED_VARIABLES KILN_CLI11_HEADERS KILN_BOOST_HEADERS
  OPTIONS_RELEASE
    "-DKILN_CLI11_HEADERS=${CURRENT_INSTALLED_DIR}/include/CLI"
    "-DKILN_BOOST_HEADERS=${CURRENT_INSTALLED_DIR}/include/boost"
  OPTIONS_DEBUG
    -DKILN_BUILD_TOOLS=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME KilnBase CONFIG_PATH lib/cmake/KilnBase)
vcpkg_fixup_pkgconfig()
if("tools" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES drawview morlaWarning tracelog vxcached AUTO_CLEAN)
endif()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share"
  "${CURRENT_PACKAGES_DIR}/share/licenses")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE" "${SOURCE_PATH}/packaging/copyright")

# kx7text - port for vcpkg, of the sources that this file is part of: vcpkg install kx7text --overlay-ports=packaging/vcpkg
string(COMPARE EQUAL "${VCPKG_LIBRARY_LINKAGE}" dynamic install_shared)
string(COMPARE EQUAL "${VCPKG_LIBRARY_LINKAGE}" static install_static)
vcpkg_check_features(OUT_FEATURE_OPTIONS feature_options FEATURES tools KX7_BUILD_CLI)

vcpkg_cmake_configure(
    SOURCE_PATH "${CURRENT_PORT_DIR}/../.."
    OPTIONS
        -DKX7_BUILD_TESTS=OFF
        -DKX7_INSTALL_SHARED=${install_shared}
        -DKX7_INSTALL_STATIC=${install_static}
        ${feature_options}
)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME kx7text CONFIG_PATH lib/cmake/kx7text)
vcpkg_fixup_pkgconfig()
if("tools" IN_LIST FEATURES)
    vcpkg_copy_tools(TOOL_NAMES kx7conv AUTO_CLEAN)
endif()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
vcpkg_install_copyright(FILE_LIST "${CURRENT_PORT_DIR}/../../LICENSE")

# An overlay port: builds the source tree that it lies in (docs/installing.md).
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)
cmake_path(SET SOURCE_PATH NORMALIZE "${CURRENT_PORT_DIR}/../../..")

# A C interface in a DLL that brings its own runtime: hosts' debug builds use the same file.
set(VCPKG_BUILD_TYPE release)
vcpkg_cmake_configure(
    SOURCE_PATH "${SOURCE_PATH}"
    OPTIONS
        -DGPUTUNE_BUILD_TESTS=OFF
        -DGPUTUNE_BUILD_BENCH=OFF
        -DGPUTUNE_X64_FOLDERS=OFF
        "-DGPUTUNE_DEPS_DIR=${CURRENT_BUILDTREES_DIR}/no-deps")
vcpkg_cmake_build(TARGET package_contents)
vcpkg_cmake_install()

vcpkg_cmake_config_fixup(CONFIG_PATH lib/cmake/gputune)
vcpkg_fixup_pkgconfig()
# The tool with what it has beside it.
file(MAKE_DIRECTORY "${CURRENT_PACKAGES_DIR}/tools/gputune")
file(RENAME "${CURRENT_PACKAGES_DIR}/bin/gputunectl.exe" "${CURRENT_PACKAGES_DIR}/tools/gputune/gputunectl.exe")
file(RENAME "${CURRENT_PACKAGES_DIR}/bin/Config" "${CURRENT_PACKAGES_DIR}/tools/gputune/Config")
file(COPY "${CURRENT_PACKAGES_DIR}/bin/gputune.dll" "${CURRENT_PACKAGES_DIR}/bin/sim"
    DESTINATION "${CURRENT_PACKAGES_DIR}/tools/gputune")
file(REMOVE "${CURRENT_PACKAGES_DIR}/README.txt")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE" "${SOURCE_PATH}/licenses/THIRD-PARTY.txt")

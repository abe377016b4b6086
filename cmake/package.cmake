# The ZIP of a release: what an installation holds, in one folder, with the SHA-256 of every file in SHA256SUMS and that of
# the ZIP in a file beside it. scripts/package makes it. The 64-bit build packs the 32-bit one with itself.
if(NOT WIN32)
    return()
endif()
set(CPACK_GENERATOR ZIP)
set(CPACK_SOURCE_GENERATOR "")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PACKAGE_NAME "${PROJECT_NAME}")
set(CPACK_PACKAGE_VENDOR "the gputune authors")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_FILE_NAME "${PROJECT_NAME}-${PROJECT_VERSION}-win32")
set(CPACK_PACKAGE_CHECKSUM SHA256)
# All components in one file. What is to be stripped was when it was built: stripping again would set a time stamp.
set(CPACK_MONOLITHIC_INSTALL ON)
set(CPACK_STRIP_FILES OFF)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/package/checksums.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/package/sort-zip.cmake")
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(CPACK_INSTALL_CMAKE_PROJECTS
        "${GPUTUNE_X86_BUILD_DIR}" "${PROJECT_NAME}" ALL / "${PROJECT_BINARY_DIR}" "${PROJECT_NAME}" ALL /)
endif()
include(CPack)

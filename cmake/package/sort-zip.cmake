# Run by CPack after it has packed: packs again in the order of the names.
include("${CMAKE_CURRENT_LIST_DIR}/zip.cmake")
foreach(zip IN LISTS CPACK_PACKAGE_FILES)
    cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH parent)
    cmake_path(GET CPACK_TEMPORARY_DIRECTORY FILENAME folder)
    gputune_zip("${zip}" "${parent}" "${folder}")
endforeach()

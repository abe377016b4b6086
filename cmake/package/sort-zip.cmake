# Run by CPack after it has packed: packs again in the order of the names, as the first time it is that of the file system,
# which no two machines share.
foreach(zip IN LISTS CPACK_PACKAGE_FILES)
    cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH parent)
    cmake_path(GET CPACK_TEMPORARY_DIRECTORY FILENAME folder)
    file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${parent}" "${CPACK_TEMPORARY_DIRECTORY}/*")
    list(SORT files)
    list(JOIN files "\n" list)
    file(WRITE "${parent}/${folder}.files" "${list}\n")
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E tar cf "${zip}" --format=zip "--files-from=${parent}/${folder}.files"
        WORKING_DIRECTORY "${parent}"
        COMMAND_ERROR_IS_FATAL ANY)
endforeach()

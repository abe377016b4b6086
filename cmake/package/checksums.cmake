# Run by CPack over the files it is about to pack: writes SHA256SUMS, which "sha256sum --check" reads.
set(list SHA256SUMS)
file(REMOVE "${CPACK_TEMPORARY_DIRECTORY}/${list}")
file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${CPACK_TEMPORARY_DIRECTORY}" "${CPACK_TEMPORARY_DIRECTORY}/*")
list(SORT files)
foreach(file IN LISTS files)
    file(SHA256 "${CPACK_TEMPORARY_DIRECTORY}/${file}" sum)
    file(APPEND "${CPACK_TEMPORARY_DIRECTORY}/${list}" "${sum}  ${file}\n")
endforeach()

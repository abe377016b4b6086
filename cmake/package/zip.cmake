# gputune_zip(<zip> <folder> <subfolder>|.)  Packs the files of the subfolder, by their names in the folder. In the order of
#                                            the names: that of the file system is another on every machine. They bear the
#                                            time SOURCE_DATE_EPOCH where that is set.
# gputune_checksums(<folder>)                Writes SHA256SUMS of the folder's files into it, which "sha256sum --check" reads.
function(gputune_zip zip folder subfolder)
    file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${folder}" "${folder}/${subfolder}/*")
    list(SORT files)
    list(JOIN files "\n" list)
    file(WRITE "${zip}.files" "${list}\n")
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E tar cf "${zip}" --format=zip "--files-from=${zip}.files"
        WORKING_DIRECTORY "${folder}"
        COMMAND_ERROR_IS_FATAL ANY)
    file(REMOVE "${zip}.files")
endfunction()

function(gputune_checksums folder)
    file(REMOVE "${folder}/SHA256SUMS")
    file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${folder}" "${folder}/*")
    list(SORT files)
    set(sums "")
    foreach(file IN LISTS files)
        file(SHA256 "${folder}/${file}" sum)
        string(APPEND sums "${sum}  ${file}\n")
    endforeach()
    file(WRITE "${folder}/SHA256SUMS" "${sums}")
endfunction()

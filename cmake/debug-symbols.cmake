# gputune_split_debug(<target>)
#
# The target is one of the programs and libraries of a release (GPUTUNE_RELEASED_PROGRAMS). Moves the target's debug information to debug/<file name>.debug of the output directory and leaves in the target a link
# to it, by which debuggers find it (gdb: set debug-file-directory). Does nothing for other systems than Windows.
function(gputune_split_debug target)
    set_property(GLOBAL APPEND PROPERTY GPUTUNE_RELEASED_PROGRAMS "${target}")
    if(NOT WIN32 OR NOT CMAKE_OBJCOPY OR NOT CMAKE_STRIP)
        return()
    endif()
    set(directory "${GPUTUNE_DEBUG_DIR}")
    set(symbols "${directory}/$<TARGET_FILE_NAME:${target}>.debug")
    # With -p the tools leave the linker's zero time stamp in the file instead of the present time.
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_COMMAND} -E make_directory "${directory}"
        COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug "$<TARGET_FILE:${target}>" "${symbols}"
        COMMAND ${CMAKE_STRIP} -p --strip-all "$<TARGET_FILE:${target}>"
        COMMAND ${CMAKE_OBJCOPY} -p "--add-gnu-debuglink=${symbols}" "$<TARGET_FILE:${target}>"
        VERBATIM)
endfunction()

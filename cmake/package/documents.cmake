# gputune_released_documents(<directory>)
#
# Writes there the documents of docs/ as a release has them: without those about work on the library itself, and without
# what stands between these two lines, which is of use in the source tree only:
#
#   <!-- in the source tree -->
#   <!-- /in the source tree -->
#
# So no text is kept twice. The test package.contents holds that no document of a release speaks of what a release lacks.
set(GPUTUNE_UNRELEASED_DOCUMENTS architecture.md releasing.md robustness.md runtime.md)

function(gputune_released_documents directory)
    file(REMOVE_RECURSE "${directory}")
    file(GLOB documents CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/docs/*.md")
    foreach(document IN LISTS documents)
        set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${document}")
        cmake_path(GET document FILENAME name)
        if(name IN_LIST GPUTUNE_UNRELEASED_DOCUMENTS)
            continue()
        endif()
        file(READ "${document}" text)
        string(FIND "${text}" "<!-- in the source tree -->" begin)
        while(begin GREATER_EQUAL 0)
            string(SUBSTRING "${text}" 0 ${begin} before)
            string(FIND "${text}" "<!-- /in the source tree -->\n" end)
            if(end LESS begin)
                message(FATAL_ERROR "${document}: what is for the source tree only has no end")
            endif()
            math(EXPR end "${end} + 29")
            string(SUBSTRING "${text}" ${end} -1 after)
            # With the one of the two empty lines around it.
            string(REGEX REPLACE "^\n" "" after "${after}")
            set(text "${before}${after}")
            string(FIND "${text}" "<!-- in the source tree -->" begin)
        endwhile()
        file(WRITE "${directory}/${name}" "${text}")
    endforeach()
endfunction()

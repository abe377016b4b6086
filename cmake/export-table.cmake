# gputune_export_table(<file>)
#
# Writes the module definition file of gputune.dll: the names of src/api/flat_exports.txt and of the list of control
# library functions, in ascending byte order, with ordinals from 1 in the same order. A new name moves the ordinals behind
# it, so hosts bind by name.

set(flatExports "${PROJECT_SOURCE_DIR}/src/api/flat_exports.txt")
set(ctlFunctions "${PROJECT_SOURCE_DIR}/src/intel/ctl_functions.inc")
set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${flatExports}" "${ctlFunctions}")

function(gputune_export_table file)
    file(STRINGS "${flatExports}" names REGEX "^[A-Za-z]")
    file(STRINGS "${ctlFunctions}" entries REGEX "^CTL_(OWN|FORWARD)\\(")
    foreach(entry IN LISTS entries)
        string(REGEX MATCH "ctl[A-Za-z0-9]+" name "${entry}")
        list(APPEND names ${name})
    endforeach()
    list(SORT names COMPARE STRING CASE SENSITIVE)

    set(table "LIBRARY gputune.dll\nEXPORTS\n")
    set(ordinal 0)
    foreach(name IN LISTS names)
        math(EXPR ordinal "${ordinal} + 1")
        string(APPEND table "    ${name} @${ordinal}\n")
    endforeach()
    file(CONFIGURE OUTPUT "${file}" CONTENT "${table}" @ONLY NEWLINE_STYLE UNIX)
endfunction()

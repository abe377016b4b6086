# gputune_export_table(<file>)
#
# Writes the module definition file of gputune.dll: the names of the flat functions and of the control library functions,
# from the lists of them, in ascending byte order, with ordinals from 1 in the same order. A new name moves the ordinals
# behind it, so hosts bind by name.

set(flatFunctions "${PROJECT_SOURCE_DIR}/src/api/flat_functions.inc")
set(ctlFunctions "${PROJECT_SOURCE_DIR}/src/intel/ctl_functions.inc")
set_property(DIRECTORY "${PROJECT_SOURCE_DIR}" APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${flatFunctions}" "${ctlFunctions}")

function(gputune_export_table file)
    file(STRINGS "${flatFunctions}" names REGEX "^FLAT_FUNCTION\\(")
    list(TRANSFORM names REPLACE "^FLAT_FUNCTION\\([^,]+, ([A-Za-z]+).*" "\\1")
    file(STRINGS "${ctlFunctions}" ctlNames REGEX "^CTL_(OWN|FORWARD)\\(")
    list(TRANSFORM ctlNames REPLACE "^[A-Z_]+\\((ctl[A-Za-z0-9]+).*" "\\1")
    list(APPEND names ${ctlNames})
    list(SORT names COMPARE STRING CASE SENSITIVE)

    set(table "LIBRARY gputune.dll\nEXPORTS\n")
    set(ordinal 0)
    foreach(name IN LISTS names)
        math(EXPR ordinal "${ordinal} + 1")
        string(APPEND table "    ${name} @${ordinal}\n")
    endforeach()
    file(CONFIGURE OUTPUT "${file}" CONTENT "${table}" @ONLY NEWLINE_STYLE UNIX)
endfunction()

# The ZIPs that have a part of an installation, both widths, without a folder around it: the names in them are the same in
# every version.
#
#   gputunectl-<version>-windows.zip  the tool with what it uses; what winget and Scoop install
#   gputune-<version>-symbols.zip     what makes source lines of addresses (docs/crash-addresses.md)
include("${CMAKE_CURRENT_LIST_DIR}/staging.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/zip.cmake")

function(gputune_component_zip name)
    set(work "${OUTPUT}/_${name}")
    file(REMOVE_RECURSE "${work}")
    file(MAKE_DIRECTORY "${work}")
    foreach(build IN LISTS BUILDS)
        foreach(component IN LISTS ARGN)
            gputune_run("${work}" "${CMAKE_COMMAND}" --install "${build}" --component ${component} --prefix "${work}")
        endforeach()
    endforeach()
    gputune_checksums("${work}")
    gputune_zip("${OUTPUT}/${name}.zip" "${work}" .)
    file(REMOVE_RECURSE "${work}")
endfunction()

gputune_component_zip(gputunectl-${VERSION}-windows library tool simulation documentation)
gputune_component_zip(gputune-${VERSION}-symbols symbols)
# What both builds have alike, beside the archives, too: it is read without unpacking anything.
configure_file("${build}/package/gputune.cdx.json" "${OUTPUT}/gputune-${VERSION}.cdx.json" COPYONLY)

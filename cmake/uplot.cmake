# uPlot, which draws the charts of the pages that `gputunectl report` makes: the version that is used and the checksum of its
# archive in the npm registry. As a script
#
#   cmake -P cmake/uplot.cmake [<directory>]
#
# it fetches the archive with npm, whose configuration says where the registry is, checks it, and unpacks it into the
# directory (default: build/deps). An archive that lies there already is taken instead of asking the registry.
set(GPUTUNE_UPLOT_VERSION 1.6.32)
set(GPUTUNE_UPLOT_SHA512
    2883159c6ebccefbb95d751b0b82d010f9e1c0ec41b8bc96d401eda66e882935c89a46cb824332fa369b8cb8122cc6ac36e186cd09bf7a9ded3a4c93c6989023)
set(GPUTUNE_UPLOT_FOLDER "uplot-${GPUTUNE_UPLOT_VERSION}")

if(NOT CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    return()
endif()
cmake_minimum_required(VERSION 3.25)

set(directory "${CMAKE_CURRENT_LIST_DIR}/../build/deps")
if(DEFINED CMAKE_ARGV3)
    set(directory "${CMAKE_ARGV3}")
endif()
cmake_path(ABSOLUTE_PATH directory NORMALIZE)
set(archive "${directory}/${GPUTUNE_UPLOT_FOLDER}.tgz")
if(EXISTS "${directory}/${GPUTUNE_UPLOT_FOLDER}")
    return()
endif()
file(MAKE_DIRECTORY "${directory}")

if(NOT EXISTS "${archive}")
    find_program(NPM NAMES npm.cmd npm)
    if(NOT NPM)
        message(FATAL_ERROR "uPlot ${GPUTUNE_UPLOT_VERSION} comes from the npm registry, and there is no npm here. Install "
            "npm, or put the package's archive there as ${archive}")
    endif()
    execute_process(
        COMMAND "${NPM}" pack "uplot@${GPUTUNE_UPLOT_VERSION}" --pack-destination "${directory}"
            --fetch-retries=1 --fetch-retry-mintimeout=1000
        RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE messages)
    if(NOT result EQUAL 0 OR NOT EXISTS "${archive}")
        message(NOTICE "${messages}")
        message(FATAL_ERROR "npm cannot fetch uplot@${GPUTUNE_UPLOT_VERSION}. Is the npm registry reachable (npm config get "
            "registry)? Without a network, put the package's archive there as ${archive}")
    endif()
endif()

file(SHA512 "${archive}" sum)
if(NOT sum STREQUAL GPUTUNE_UPLOT_SHA512)
    file(REMOVE "${archive}")
    message(FATAL_ERROR "${archive} was not what this version of gputune expects, and was removed: its SHA-512 sum was "
        "${sum} instead of ${GPUTUNE_UPLOT_SHA512}")
endif()
# Renamed last: the folder is complete when it is there.
set(unpacked "${directory}/${GPUTUNE_UPLOT_FOLDER}.unpacked")
file(REMOVE_RECURSE "${unpacked}")
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${unpacked}")
file(RENAME "${unpacked}/package" "${directory}/${GPUTUNE_UPLOT_FOLDER}")
file(REMOVE_RECURSE "${unpacked}")
file(REMOVE "${archive}")

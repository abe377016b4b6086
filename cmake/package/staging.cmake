# What the scripts that make the packages of npm, PyPI and NuGet share. Each of them is run as
#
#   cmake -DBUILDS=<32-bit build>;<64-bit build> -DOUTPUT=<directory> -P cmake/package/<registry>.cmake
#
# and puts its packages into the directory. All files of a package come from an installation of both builds
# (cmake/install.cmake), or stand in the script's own folder. One set of files gives one package, byte for byte: names in order,
# modes as given here, times as SOURCE_DATE_EPOCH says (1980 without it), which scripts/package sets.
cmake_minimum_required(VERSION 3.25)
if(NOT BUILDS OR NOT OUTPUT)
    message(FATAL_ERROR "BUILDS and OUTPUT say which builds are packed, and where the packages go")
endif()
cmake_path(ABSOLUTE_PATH OUTPUT NORMALIZE)
file(MAKE_DIRECTORY "${OUTPUT}")
if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
    # The first time that a ZIP can name.
    set(ENV{SOURCE_DATE_EPOCH} 315532800)
endif()
# The system's own, which has setuptools and wheel; another Python may come first in the path.
find_program(PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(PYTHON NAMES python3 python REQUIRED)

# The project's version and description, as the builds have them.
list(GET BUILDS -1 build)
foreach(name IN ITEMS VERSION DESCRIPTION)
    file(STRINGS "${build}/CMakeCache.txt" line REGEX "^CMAKE_PROJECT_${name}:")
    string(REGEX REPLACE "^[^=]*=" "" ${name} "${line}")
endforeach()

# gputune_run(<folder> <command>...)  Runs it there. Its output is of interest only when it fails.
function(gputune_run folder)
    execute_process(COMMAND ${ARGN}
        WORKING_DIRECTORY "${folder}" RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT result EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "${command}\n${output}")
    endif()
endfunction()

# gputune_stage(<name>)  An empty folder for what is packed (`stage`), and an installation to take it from (`prefix`). Both are
#                        below `work`, which goes when the package is made.
macro(gputune_stage name)
    set(work "${OUTPUT}/_${name}")
    set(stage "${work}/stage")
    set(prefix "${work}/prefix")
    file(REMOVE_RECURSE "${work}")
    file(MAKE_DIRECTORY "${stage}")
    foreach(build IN LISTS BUILDS)
        cmake_path(ABSOLUTE_PATH build)
        gputune_run("${work}" "${CMAKE_COMMAND}" --install "${build}" --prefix "${prefix}")
    endforeach()
endmacro()

# gputune_put(<file> <name in the package>)   A file as it is; read by all, written by its owner.
# gputune_fill(<file> <name in the package>)  The same, with the version and the like in place of @VERSION@.
function(gputune_put file name)
    configure_file("${file}" "${stage}/${name}" COPYONLY
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()
function(gputune_fill file name)
    configure_file("${file}" "${stage}/${name}" @ONLY FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

# gputune_put_notices()  The licences of the library and of what is built into it.
function(gputune_put_notices)
    gputune_put("${prefix}/share/gputune/LICENSE" LICENSE)
    gputune_put("${prefix}/share/gputune/licenses/THIRD-PARTY.txt" THIRD-PARTY.txt)
endfunction()

# What lies beside the programs, and the target that makes all stand-ins:
#   boards   the board files, in bin/boards
#   profile  the example profile file, in bin/Config, where the library looks for it
#   sim      all stand-ins of sim/
function(gputune_ship target folder)
    set(copies "")
    foreach(file IN LISTS ARGN)
        cmake_path(GET file FILENAME name)
        set(copy "${GPUTUNE_BIN_DIR}/${folder}/${name}")
        add_custom_command(OUTPUT "${copy}"
            COMMAND ${CMAKE_COMMAND} -E copy "${file}" "${copy}"
            DEPENDS "${file}"
            VERBATIM)
        list(APPEND copies "${copy}")
    endforeach()
    add_custom_target(${target} ALL DEPENDS ${copies})
endfunction()

if(WIN32)
    file(GLOB boardFiles CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/boards/*.json")
    gputune_ship(boards boards ${boardFiles})
    gputune_ship(profile Config "${PROJECT_SOURCE_DIR}/Config/ConfigModel.xml")
    # The tool shows and applies profiles.
    add_dependencies(gputunectl profile)

    get_property(standIns DIRECTORY "${PROJECT_SOURCE_DIR}/sim" PROPERTY BUILDSYSTEM_TARGETS)
    add_custom_target(sim DEPENDS ${standIns})
endif()

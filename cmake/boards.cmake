# The targets that ./run builds besides the library and the tool:
#   boards  the board files, beside the programs
#   sim     all stand-ins of sim/
if(WIN32 AND NOT TARGET boards)
    file(GLOB files CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/boards/*.json")
    set(copies "")
    foreach(file IN LISTS files)
        cmake_path(GET file FILENAME name)
        set(copy "${GPUTUNE_OUTPUT_DIR}/bin/boards/${name}")
        add_custom_command(OUTPUT "${copy}"
            COMMAND ${CMAKE_COMMAND} -E copy "${file}" "${copy}"
            DEPENDS "${file}"
            VERBATIM)
        list(APPEND copies "${copy}")
    endforeach()
    add_custom_target(boards ALL DEPENDS ${copies})
endif()

if(NOT TARGET sim AND EXISTS "${PROJECT_SOURCE_DIR}/sim/CMakeLists.txt")
    get_property(standIns DIRECTORY "${PROJECT_SOURCE_DIR}/sim" PROPERTY BUILDSYSTEM_TARGETS)
    add_custom_target(sim DEPENDS ${standIns})
endif()

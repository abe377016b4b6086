# gputune_microsoft_import_library(<dll target> <variable>)
#
# Makes <name>.lib in the folder of the libraries from the target's export list: what Microsoft's linker and LLVM's take, with
# the names as their compilers write a cdecl function (for 32 bits _Name) and imported as they are (Name). The linker's own
# libgputune.dll.a serves GNU linkers only. The variable receives the file, or nothing where LLVM's dlltool is missing.
find_program(GPUTUNE_LLVM_DLLTOOL NAMES llvm-dlltool DOC "Makes the import library for Microsoft's linker")

function(gputune_microsoft_import_library target variable)
    set(${variable} "" PARENT_SCOPE)
    if(NOT GPUTUNE_LLVM_DLLTOOL)
        message(STATUS "No llvm-dlltool: there will be no import library for Microsoft's linker")
        return()
    endif()
    get_target_property(exports ${target} SOURCES)
    list(FILTER exports INCLUDE REGEX "\\.def$")
    get_target_property(directory ${target} SOURCE_DIR)
    cmake_path(ABSOLUTE_PATH exports BASE_DIRECTORY "${directory}")
    set(library "${GPUTUNE_LIB_DIR}/${target}.lib")
    set(machine i386)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        set(machine i386:x86-64)
    endif()
    add_custom_command(OUTPUT "${library}"
        COMMAND "${GPUTUNE_LLVM_DLLTOOL}" -m ${machine} -D "$<TARGET_FILE_NAME:${target}>" -d "${exports}" -l "${library}"
        DEPENDS "${exports}"
        VERBATIM)
    add_custom_target(${target}_microsoft_import_library ALL DEPENDS "${library}")
    set(${variable} "${library}" PARENT_SCOPE)
endfunction()

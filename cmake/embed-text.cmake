# gputune_embed_text(<target> <name> <file>)
#
# Puts the text of the file into the target as
#
#   namespace gputune::embedded { extern std::string_view const <name>; }
#
# As a script (cmake -D FILE=… -D NAME=… -D SOURCE=… -P embed-text.cmake) it writes that source.
if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    # Numbers instead of a string literal: compilers limit the length of those.
    file(READ "${FILE}" bytes HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${bytes}")
    string(REGEX REPLACE "(................................................................................)" "\\1\n" bytes
        "${bytes}")
    file(WRITE "${SOURCE}"
        "#include <string_view>\n"
        "namespace gputune::embedded {\n"
        "namespace {\n"
        "unsigned char const kBytes[] = {\n${bytes}0};\n"
        "}\n"
        "extern std::string_view const ${NAME};\n"
        "std::string_view const ${NAME}(reinterpret_cast<char const*>(kBytes), sizeof kBytes - 1);\n"
        "}\n")
    return()
endif()

set(gputune_embed_script "${CMAKE_CURRENT_LIST_FILE}")

function(gputune_embed_text target name file)
    cmake_path(ABSOLUTE_PATH file NORMALIZE)
    set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}-${name}.cpp")
    add_custom_command(OUTPUT "${source}"
        COMMAND ${CMAKE_COMMAND} -D "FILE=${file}" -D NAME=${name} -D "SOURCE=${source}" -P "${gputune_embed_script}"
        DEPENDS "${file}" "${gputune_embed_script}"
        COMMENT "Embedding ${file}"
        VERBATIM)
    set_source_files_properties("${source}" PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    target_sources(${target} PRIVATE "${source}")
endfunction()

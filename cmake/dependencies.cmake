# The third-party libraries, each under the name its own package gives it:
#   tinyxml2::tinyxml2  CLI11::CLI11  nlohmann_json::nlohmann_json  GTest::gtest(_main)
#   benchmark::benchmark(_main)  civetweb::civetweb
# and uPlot, a script for pages, whose files are below GPUTUNE_UPLOT_DIR.
#
# An installed package is taken where there is one (a package manager for Windows provides them all). Otherwise the sources
# that scripts/setup has put into build/deps, or that its packages install, are compiled along with ours.
#
# This is also the one list of what others have written that is in a release: gputune_component (components.cmake) says what
# it is.
include(components)
set(GPUTUNE_DEPS_DIR "${PROJECT_SOURCE_DIR}/build/deps" CACHE PATH "Third-party sources, filled by scripts/setup")
if(WIN32)
    # See flags.cmake.
    target_compile_options(gputune_platform_flags INTERFACE
        $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${GPUTUNE_DEPS_DIR}=deps>)
endif()
set(GPUTUNE_GOOGLETEST_DIR "/usr/src/googletest" CACHE PATH "GoogleTest's sources")

# Says which file is missing, and what provides it.
function(gputune_require_source what file)
    if(NOT EXISTS "${file}")
        message(FATAL_ERROR "${what} is neither installed as a CMake package nor found as ${file}. "
            "Run scripts/setup, which fetches it.")
    endif()
endfunction()

# A header-only library <name> of which <header> is found in deps/include.
function(gputune_header_only name package header)
    gputune_require_source(${package} "${GPUTUNE_DEPS_DIR}/include/${header}")
    string(REPLACE "::" "_" target ${name})
    add_library(${target} INTERFACE)
    add_library(${name} ALIAS ${target})
    target_include_directories(${target} SYSTEM INTERFACE "${GPUTUNE_DEPS_DIR}/include")
endfunction()

# Linux packages are built for another processor mode than ours, and without the sanitizers: libraries come from source.
set(GPUTUNE_FIND_INSTALLED ON)
if(NOT WIN32)
    set(GPUTUNE_FIND_INSTALLED OFF)
endif()

macro(gputune_find package)
    if(GPUTUNE_FIND_INSTALLED)
        find_package(${package} CONFIG QUIET)
    endif()
endmacro()

gputune_find(tinyxml2)
if(NOT TARGET tinyxml2::tinyxml2)
    gputune_require_source(tinyxml2 "${GPUTUNE_DEPS_DIR}/tinyxml2/tinyxml2.cpp")
    add_library(tinyxml2 STATIC EXCLUDE_FROM_ALL "${GPUTUNE_DEPS_DIR}/tinyxml2/tinyxml2.cpp")
    add_library(tinyxml2::tinyxml2 ALIAS tinyxml2)
    # The analysis (CMakePresets.json) is for our own sources.
    set_target_properties(tinyxml2 PROPERTIES CXX_CLANG_TIDY "")
    target_include_directories(tinyxml2 SYSTEM INTERFACE "${GPUTUNE_DEPS_DIR}/tinyxml2")
    target_link_libraries(tinyxml2 PRIVATE gputune::platform_flags)
    if(WIN32)
        # It goes into the library, whose profile file is small: size counts.
        target_link_libraries(tinyxml2 PUBLIC gputune::stack_protection)
        target_compile_options(tinyxml2 PRIVATE -Os -include "${CMAKE_CURRENT_LIST_DIR}/msvcrt-stdio.h")
    endif()
endif()
gputune_header_version(tinyxml2_VERSION tinyxml2/tinyxml2.h TINYXML2_@_VERSION)
gputune_component(tinyxml2::tinyxml2 NAME tinyxml2 VERSION "${tinyxml2_VERSION}" LICENSE Zlib
    PURL pkg:github/leethomason/tinyxml2@ SOURCE https://github.com/leethomason/tinyxml2)

gputune_find(nlohmann_json)
if(NOT TARGET nlohmann_json::nlohmann_json)
    gputune_header_only(nlohmann_json::nlohmann_json nlohmann_json nlohmann/json.hpp)
endif()
gputune_header_version(nlohmann_json_VERSION include/nlohmann/detail/abi_macros.hpp NLOHMANN_JSON_VERSION_@)
gputune_component(nlohmann_json::nlohmann_json NAME nlohmann-json VERSION "${nlohmann_json_VERSION}" LICENSE MIT
    PURL pkg:github/nlohmann/json@v SOURCE https://github.com/nlohmann/json)

gputune_find(CLI11)
if(NOT TARGET CLI11::CLI11)
    gputune_header_only(CLI11::CLI11 CLI11 CLI/CLI.hpp)
endif()
gputune_header_version(CLI11_VERSION include/CLI/Version.hpp CLI11_VERSION_@)
gputune_component(CLI11::CLI11 NAME CLI11 VERSION "${CLI11_VERSION}" LICENSE BSD-3-Clause
    PURL pkg:github/CLIUtils/CLI11@v SOURCE https://github.com/CLIUtils/CLI11)

# From source where it lies there, as for a release: without files, programs, encryption and scripts, which an installed one has,
# there is little left that could be attacked; and connections and threads are handled with care (civetweb/threads.h). With an
# installed one, in the build of a package manager, a client may take as long as it likes.
if(NOT EXISTS "${GPUTUNE_DEPS_DIR}/civetweb/src/civetweb.c")
    gputune_find(civetweb)
    if(WIN32 AND TARGET civetweb::civetweb)
        # Its own package does not name it.
        set_property(TARGET civetweb::civetweb APPEND PROPERTY INTERFACE_LINK_LIBRARIES ws2_32)
    endif()
endif()
if(NOT TARGET civetweb::civetweb)
    gputune_require_source(civetweb "${GPUTUNE_DEPS_DIR}/civetweb/src/civetweb.c")
    add_library(civetweb STATIC EXCLUDE_FROM_ALL "${GPUTUNE_DEPS_DIR}/civetweb/src/civetweb.c")
    add_library(civetweb::civetweb ALIAS civetweb)
    target_include_directories(civetweb
        SYSTEM PUBLIC "${GPUTUNE_DEPS_DIR}/civetweb/include"
        PRIVATE "${CMAKE_CURRENT_LIST_DIR}/civetweb")
    target_compile_definitions(civetweb PRIVATE
        NO_FILES NO_FILESYSTEMS NO_CGI NO_CACHING NO_SSL USE_IPV6
        MG_EXTERNAL_FUNCTION_log_access MG_EXTERNAL_FUNCTION_mg_cry_internal_impl
        # In milliseconds: how soon a thread that waits for a connection sees that the server is to end.
        SOCKET_TIMEOUT_QUANTUM=500
        # Instead of the day, so that one commit gives one program.
        BUILD_DATE="")
    # Its warnings are its authors' business; GCC 14 takes some for errors.
    target_compile_options(civetweb PRIVATE -w -Wno-incompatible-pointer-types)
    set_target_properties(civetweb PROPERTIES C_EXTENSIONS ON)
    target_link_libraries(civetweb PRIVATE gputune::platform_flags)
    if(WIN32)
        target_compile_options(civetweb PRIVATE -Os -g1 -include "${CMAKE_CURRENT_LIST_DIR}/civetweb/threads.h")
        target_link_libraries(civetweb PUBLIC ws2_32)
    endif()
endif()
gputune_header_version(civetweb_VERSION civetweb/include/civetweb.h CIVETWEB_VERSION_@)
gputune_component(civetweb::civetweb NAME civetweb VERSION "${civetweb_VERSION}" LICENSE "MIT AND Zlib"
    PURL pkg:github/civetweb/civetweb@v SOURCE https://github.com/civetweb/civetweb)

include(uplot)
set(GPUTUNE_UPLOT_DIR "" CACHE PATH "uPlot's unpacked npm package; empty: below the third-party sources")
if(NOT GPUTUNE_UPLOT_DIR)
    set(GPUTUNE_UPLOT_DIR "${GPUTUNE_DEPS_DIR}/${GPUTUNE_UPLOT_FOLDER}")
endif()
if(NOT EXISTS "${GPUTUNE_UPLOT_DIR}/dist/uPlot.iife.min.js")
    message(WARNING "uPlot ${GPUTUNE_UPLOT_VERSION} is not in ${GPUTUNE_UPLOT_DIR}: gputunectl's report command will say that "
        "it has no charts. scripts/setup or cmake -P cmake/uplot.cmake fetch it with npm; then configure again.")
    set(GPUTUNE_HAS_UPLOT OFF)
    set(GPUTUNE_UPLOT_DIR "${PROJECT_BINARY_DIR}/no-uplot")
    foreach(file LICENSE dist/uPlot.iife.min.js dist/uPlot.min.css)
        file(WRITE "${GPUTUNE_UPLOT_DIR}/${file}" "")
    endforeach()
else()
    set(GPUTUNE_HAS_UPLOT ON)
endif()
# Nothing to compile or to link: the program that embeds its files names it.
add_library(uPlot INTERFACE)
if(GPUTUNE_HAS_UPLOT)
    gputune_component(uPlot NAME uPlot VERSION "${GPUTUNE_UPLOT_VERSION}" LICENSE MIT
        PURL pkg:npm/uplot@ SOURCE https://github.com/leeoniya/uPlot)
endif()

# What the compiler links into everything. Releases are built by GCC.
if(MINGW AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -dumpfullversion OUTPUT_VARIABLE gccVersion)
    string(REGEX MATCH "^[0-9.]+" gccVersion "${gccVersion}")
    gputune_component(gputune_platform_flags NAME "GCC runtime libraries" VERSION "${gccVersion}"
        LICENSE "GPL-3.0-or-later WITH GCC-exception-3.1"
        PURL pkg:generic/gcc@ SOURCE https://gcc.gnu.org)
    file(WRITE "${PROJECT_BINARY_DIR}/mingw_version.c" "#include <_mingw.h>\n")
    execute_process(COMMAND "${CMAKE_C_COMPILER}" -E -dM "${PROJECT_BINARY_DIR}/mingw_version.c" OUTPUT_VARIABLE macros)
    gputune_macro_version(mingwVersion "${macros}" __MINGW64_VERSION_@)
    gputune_component(gputune_platform_flags NAME "mingw-w64 runtime" VERSION "${mingwVersion}"
        LICENSE_NAME "ZPL-2.1 and others, see share/gputune/licenses/THIRD-PARTY.txt"
        PURL pkg:generic/mingw-w64@ SOURCE https://www.mingw-w64.org)
    gputune_component(gputune_platform_flags NAME winpthreads VERSION "${mingwVersion}" LICENSE "MIT AND BSD-3-Clause"
        PURL pkg:generic/mingw-w64@ SOURCE https://www.mingw-w64.org)
endif()

if(GPUTUNE_BUILD_TESTS)
    gputune_find(GTest)
    if(NOT TARGET GTest::gtest)
        gputune_require_source(GoogleTest "${GPUTUNE_GOOGLETEST_DIR}/CMakeLists.txt")
        set(INSTALL_GTEST OFF)
        set(BUILD_GMOCK OFF)
        add_subdirectory("${GPUTUNE_GOOGLETEST_DIR}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
        foreach(name gtest gtest_main)
            target_link_libraries(${name} PRIVATE gputune::platform_flags)
            target_compile_options(${name} PRIVATE -O0 -g0)
            if(WIN32)
                # Takes the place of GoogleTest's own file of this name.
                target_include_directories(${name} BEFORE PRIVATE "${PROJECT_SOURCE_DIR}/tests/support/googletest")
            endif()
            if(NOT TARGET GTest::${name})
                add_library(GTest::${name} ALIAS ${name})
            endif()
        endforeach()
    endif()
endif()

if(GPUTUNE_BUILD_BENCH)
    gputune_find(benchmark)
    if(NOT TARGET benchmark::benchmark)
        gputune_require_source(benchmark "${GPUTUNE_DEPS_DIR}/benchmark/src/benchmark.cc")
        file(GLOB sources "${GPUTUNE_DEPS_DIR}/benchmark/src/*.cc")
        list(FILTER sources EXCLUDE REGEX "/benchmark_main\\.cc$")
        add_library(benchmark STATIC EXCLUDE_FROM_ALL ${sources})
        add_library(benchmark::benchmark ALIAS benchmark)
        target_include_directories(benchmark SYSTEM PUBLIC "${GPUTUNE_DEPS_DIR}/benchmark/include")
        target_compile_definitions(benchmark PUBLIC BENCHMARK_STATIC_DEFINE PRIVATE HAVE_STD_REGEX HAVE_STEADY_CLOCK)
        target_link_libraries(benchmark PRIVATE gputune::platform_flags $<$<BOOL:${WIN32}>:shlwapi>)
        add_library(benchmark_main STATIC EXCLUDE_FROM_ALL "${GPUTUNE_DEPS_DIR}/benchmark/src/benchmark_main.cc")
        add_library(benchmark::benchmark_main ALIAS benchmark_main)
        target_link_libraries(benchmark_main PUBLIC benchmark PRIVATE gputune::platform_flags)
    endif()
endif()

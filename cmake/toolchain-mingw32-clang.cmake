# As toolchain-mingw32.cmake, with clang as the library's compiler. Headers, C++ library, runtime and linker are those of GCC's
# package.
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw32.cmake")
set(gcc ${CMAKE_CXX_COMPILER})
foreach(language C CXX)
    set(CMAKE_${language}_COMPILER_TARGET i686-w64-mingw32)
endforeach()
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)

# clang does not find what GCC brings with it, because Debian adds the thread model to the directory's name.
execute_process(COMMAND ${gcc} -print-libgcc-file-name
    OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
cmake_path(GET libgcc PARENT_PATH gccDir)
# Not this machine's own headers, where clang would look last. The system's headers come after clang's, which know its types.
set(flags "-nostdlibinc -idirafter /usr/i686-w64-mingw32/include")
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "-isystem ${gccDir}/include/c++ -isystem ${gccDir}/include/c++/i686-w64-mingw32 ${flags}")
set(link "-Wno-unused-command-line-argument -B${gccDir} -L${gccDir} --ld-path=/usr/bin/i686-w64-mingw32-ld")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "${link}")
endforeach()

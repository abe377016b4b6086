# Windows, cross-built with mingw-w64 and run under Wine: what the toolchains of both widths share. `processor` is x86 or
# AMD64, `triple` the prefix of the programs.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${processor})

# The posix thread model: std::thread and std::mutex exist only there.
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)
# CMake derives no tool prefix from a compiler name that ends in "-posix".
set(CMAKE_AR ${triple}-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB ${triple}-gcc-ranlib-posix CACHE FILEPATH "")
set(CMAKE_OBJCOPY ${triple}-objcopy CACHE FILEPATH "")
set(CMAKE_OBJDUMP ${triple}-objdump CACHE FILEPATH "")
set(CMAKE_STRIP ${triple}-strip CACHE FILEPATH "")
set(CMAKE_DLLTOOL ${triple}-dlltool CACHE FILEPATH "")

# The machine's own libraries and packages are for another system; its programs are ours to use. What the user names as a
# prefix is for Windows.
set(CMAKE_FIND_ROOT_PATH /usr/${triple} ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# CTest and the build run Windows programs through this like any other program.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/wine")
cmake_path(NORMAL_PATH CMAKE_CROSSCOMPILING_EMULATOR)

# 32-bit Windows, cross-built with mingw-w64 and run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)

# The posix thread model: std::thread and std::mutex exist only there.
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER i686-w64-mingw32-windres)
# CMake derives no tool prefix from a compiler name that ends in "-posix".
set(CMAKE_AR i686-w64-mingw32-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB i686-w64-mingw32-gcc-ranlib-posix CACHE FILEPATH "")
set(CMAKE_OBJCOPY i686-w64-mingw32-objcopy CACHE FILEPATH "")
set(CMAKE_OBJDUMP i686-w64-mingw32-objdump CACHE FILEPATH "")
set(CMAKE_STRIP i686-w64-mingw32-strip CACHE FILEPATH "")
set(CMAKE_DLLTOOL i686-w64-mingw32-dlltool CACHE FILEPATH "")

# The machine's own libraries and packages are for another system; its programs are ours to use. What the user names as a
# prefix is for Windows.
set(CMAKE_FIND_ROOT_PATH /usr/i686-w64-mingw32 ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# CTest and the build run Windows programs through this like any other program.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/wine")
cmake_path(NORMAL_PATH CMAKE_CROSSCOMPILING_EMULATOR)

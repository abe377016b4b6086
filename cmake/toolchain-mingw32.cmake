# 32-bit Windows.
set(processor x86)
set(triple i686-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake")

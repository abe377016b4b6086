# 64-bit Windows, for x86-64 processors.
set(processor AMD64)
set(triple x86_64-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/toolchain-mingw.cmake")

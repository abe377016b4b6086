# Microsoft's binary interface without Microsoft's tools: clang compiles for it, LLVM's linker links. There is nothing of
# the system but what this folder declares; MICROSOFT_RUNTIME is where it was compiled to. PROCESSOR is i686 or x86_64.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${PROCESSOR})
set(CMAKE_C_COMPILER clang)
set(CMAKE_C_COMPILER_TARGET ${PROCESSOR}-pc-windows-msvc)
set(CMAKE_AR llvm-ar CACHE FILEPATH "")
set(CMAKE_C_FLAGS_INIT "-ffreestanding -isystem ${CMAKE_CURRENT_LIST_DIR}/include")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Xlinker /nodefaultlib -Xlinker /manifest:no")
set(CMAKE_C_STANDARD_LIBRARIES
    "${MICROSOFT_RUNTIME}/start.obj ${MICROSOFT_RUNTIME}/kernel32.lib ${MICROSOFT_RUNTIME}/msvcrt.lib" CACHE STRING "")
# CMake tries the compiler without these libraries.
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES PROCESSOR)

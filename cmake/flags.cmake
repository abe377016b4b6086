# The interface targets that every target of this project links:
#   gputune::warnings        what the compiler is asked to object to
#   gputune::platform_flags  what 32-bit code for Windows needs
# What only the library's own code needs stands in src/CMakeLists.txt.

add_library(gputune_warnings INTERFACE)
add_library(gputune::warnings ALIAS gputune_warnings)

set(gnu "$<CXX_COMPILER_ID:GNU>")

# Left out: -Wnull-dereference, which after inlining objects to the standard library's own containers.
target_compile_options(gputune_warnings INTERFACE
    $<$<COMPILE_LANGUAGE:C,CXX>:
        -Wall -Wextra -Wpedantic -Werror
        -Wconversion -Wsign-conversion
        -Wshadow
        -Wformat=2>
    $<$<COMPILE_LANGUAGE:CXX>:
        -Wold-style-cast
        -Wnon-virtual-dtor
        -Woverloaded-virtual>
    # Known to GCC only.
    $<$<AND:$<COMPILE_LANGUAGE:C,CXX>,${gnu}>:
        -Wduplicated-cond
        -Wlogical-op>)
add_library(gputune_platform_flags INTERFACE)
add_library(gputune::platform_flags ALIAS gputune_platform_flags)

target_compile_options(gputune_platform_flags INTERFACE
    # The x87 unit keeps more precision than float and double have, so that results depend on what was spilled to memory;
    # SSE rounds every single operation. Every processor these boards can be plugged into has SSE2.
    $<$<COMPILE_LANGUAGE:C,CXX>:-msse2 -mfpmath=sse>)

if(WIN32)
    target_compile_options(gputune_platform_flags INTERFACE
        # 32-bit Windows promises a 4-byte aligned stack and no more: hosts built by other compilers, and the callbacks
        # that vendor libraries make, arrive with less than the 16 bytes GCC takes for granted when it uses SSE.
        $<$<COMPILE_LANGUAGE:C,CXX>:-mstackrealign>
        # A section per function and object, of which the linker keeps those in use.
        $<$<COMPILE_LANGUAGE:C,CXX>:-ffunction-sections -fdata-sections>
        # No directory of this machine in assertions and symbols: the same source makes the same file everywhere. Of several
        # that fit, the last counts.
        $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=>
        $<$<COMPILE_LANGUAGE:C,CXX>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
    target_compile_definitions(gputune_platform_flags INTERFACE
        # Windows 7 and later; no min and max macros, no rarely used headers. Empty, to agree with a #define in a source.
        _WIN32_WINNT=0x0601 WINVER=0x0601 NOMINMAX= WIN32_LEAN_AND_MEAN=)
    target_link_options(gputune_platform_flags INTERFACE
        # No runtime DLLs beside ours: a host loads one file, and cannot meet another version of the compiler's runtime.
        -static -static-libgcc -static-libstdc++
        LINKER:--gc-sections
        # The time of linking would make every build a different file.
        LINKER:--no-insert-timestamp
        # The linker would choose a library's preferred address by a hash of the path it is written to.
        LINKER:--disable-auto-image-base
        # Data is not executed, the load address is not fixed, and nothing in the file is an exception handler: this
        # compiler's exceptions need none, and without the word the system would take any address in it for one.
        LINKER:--nxcompat LINKER:--dynamicbase LINKER:--no-seh)
endif()

if(GPUTUNE_SANITIZE)
    # For everything, third-party code included: a container that crosses from checked to unchecked code gives false alarms.
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
    # The scripted entry points have one signature for all; under cdecl that is none of the caller's business.
    add_compile_options($<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
endif()

# gputune_compile_together(<target>)  For sources whose headers take the compiler longer than they do themselves.
function(gputune_compile_together target)
    # Two halves, one for each of the processors that even a small machine has.
    get_target_property(sources ${target} SOURCES)
    list(LENGTH sources count)
    math(EXPR half "(${count} + 1) / 2")
    set_target_properties(${target} PROPERTIES UNITY_BUILD ${GPUTUNE_UNITY} UNITY_BUILD_BATCH_SIZE ${half})
    if(WIN32)
        # They wait for people and drivers: -O2 would take the compiler half as long again, and debuggers find lines without
        # every variable.
        target_compile_options(${target} PRIVATE -Os -g1)
    endif()
endfunction()

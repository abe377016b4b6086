"""What holds for every image that is shipped."""

from image import (BOUND_IMPORTS, DELAY_IMPORTS, DYNAMIC_BASE, I386, NO_SEH, NX_COMPATIBLE, PE32, RELOCATIONS_STRIPPED,
                   SECTION_CODE, SECTION_EXECUTABLE, SECTION_WRITABLE)

# The libraries that each may import. All of them are the system's, and of those that Windows takes from its own
# directory without a search.
ALLOWED_IMPORTS = {
    "gputune.dll": {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll"},
    "gputunectl.exe": {"kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll"},
    "sim/gputune_sim.dll": {"kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll"},
    "sim/amd/atiadlxx.dll": {"kernel32.dll", "msvcrt.dll"},
    "sim/amd/atiadlxy.dll": {"kernel32.dll", "msvcrt.dll"},
    "sim/intel/ControlLib32.dll": {"kernel32.dll", "msvcrt.dll"},
    "sim/nvidia/nvapi.dll": {"kernel32.dll", "msvcrt.dll"},
}

# What the loader calls before anything else of an image, and whenever a thread comes or goes: of the compiler's
# runtime, for the destructors of thread-local objects, and of its threads library. Nothing of ours.
ALLOWED_CALLBACKS = {"___dyn_tls_init@12", "___dyn_tls_dtor@12", "___dyn_tls_pthread@12"}

# Far fewer than every image has; far more than a .reloc section that is only there to be one.
FEWEST_RELOCATIONS = 200


def problems_of(image, allowed_imports, names):
    """What is wrong with an image; `names` maps addresses to the sets of symbols there."""
    problems = []

    def require(condition, problem):
        if not condition:
            problems.append(problem)

    require(image.machine == I386 and image.magic == PE32, "is no 32-bit image")
    require(image.dll_characteristics & DYNAMIC_BASE, "is not loaded at random addresses")
    require(not image.characteristics & RELOCATIONS_STRIPPED, "cannot be moved: its relocations were taken out")
    count = image.relocation_count()
    require(count >= FEWEST_RELOCATIONS, f"cannot be moved: {count} relocations")
    require(image.dll_characteristics & NX_COMPATIBLE, "lets data, the stack's included, be executed")
    require(image.dll_characteristics & NO_SEH, "offers its code as exception handlers")

    executable = [section for section in image.sections if section.flags & SECTION_EXECUTABLE]
    require([section.name for section in executable] == [".text"],
            f"has code in {', '.join(section.name for section in executable) or 'no section'}")
    for section in image.sections:
        require(not (section.flags & (SECTION_EXECUTABLE | SECTION_CODE) and section.flags & SECTION_WRITABLE),
                f"may write its own code: {section.name}")

    imports = set(image.imports())
    require("kernel32.dll" in imports, "has no imports that could be read")
    for name in sorted(imports - allowed_imports):
        problems.append(f"imports {name}")
    for directory, kind in ((DELAY_IMPORTS, "delayed"), (BOUND_IMPORTS, "bound")):
        require(image.directory(directory) == (0, 0), f"has {kind} imports")

    for address in image.tls_callbacks():
        symbols = names.get(address, set())
        require(symbols & ALLOWED_CALLBACKS,
                f"has the loader call {' or '.join(sorted(symbols)) or hex(address)} for every thread")
    return problems

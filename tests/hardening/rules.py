"""What holds for every image that is shipped."""

from image import (AMD64, BOUND_IMPORTS, DELAY_IMPORTS, DYNAMIC_BASE, HIGH_ENTROPY, I386, NO_SEH, NX_COMPATIBLE, PE32,
                   PE32_PLUS, RELOCATIONS_STRIPPED, SECTION_CODE, SECTION_EXECUTABLE, SECTION_WRITABLE, UNWINDING)

# The libraries that each image of the 32-bit build may import. All of them are the system's, and of those that Windows
# takes from its own directory without a search.
_ALLOWED_IMPORTS = {
    "gputune.dll": {"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll"},
    "gputunectl.exe": {"kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll", "ws2_32.dll"},
    "sim/gputune_sim.dll": {"kernel32.dll", "msvcrt.dll", "ole32.dll", "oleaut32.dll"},
    "sim/amd/atiadlxx.dll": {"kernel32.dll", "msvcrt.dll"},
    "sim/amd/atiadlxy.dll": {"kernel32.dll", "msvcrt.dll"},
    "sim/intel/ControlLib32.dll": {"kernel32.dll", "msvcrt.dll"},
    "sim/nvidia/nvapi.dll": {"kernel32.dll", "msvcrt.dll"},
}

# The stand-ins that have other names for 64-bit processes.
_NAMES_FOR_64_BITS = {"sim/intel/ControlLib32.dll": "sim/intel/ControlLib.dll", "sim/nvidia/nvapi.dll": "sim/nvidia/nvapi64.dll"}


def allowed_imports(bits):
    """By the images' paths in the build of this width."""
    if bits == 32:
        return _ALLOWED_IMPORTS
    return {_NAMES_FOR_64_BITS.get(path, path): imports for path, imports in _ALLOWED_IMPORTS.items()}


# What the loader calls before anything else of an image, and whenever a thread comes or goes: of the compiler's
# runtime, for the destructors of thread-local objects, and of its threads library. Nothing of ours.
ALLOWED_CALLBACKS = {
    32: {"___dyn_tls_init@12", "___dyn_tls_dtor@12", "___dyn_tls_pthread@12"},
    64: {"__dyn_tls_init", "__dyn_tls_dtor", "__dyn_tls_pthread"},
}

# Far fewer than every image has; far more than a .reloc section that is only there to be one.
FEWEST_RELOCATIONS = 200


def problems_of(image, bits, allowed, names):
    """What is wrong with an image of this width that may import these; `names` maps addresses to the sets of symbols there."""
    problems = []

    def require(condition, problem):
        if not condition:
            problems.append(problem)

    require((image.machine, image.magic) == ((I386, PE32) if bits == 32 else (AMD64, PE32_PLUS)), f"is no {bits}-bit image")
    require(image.dll_characteristics & DYNAMIC_BASE, "is not loaded at random addresses")
    require(not image.characteristics & RELOCATIONS_STRIPPED, "cannot be moved: its relocations were taken out")
    count = image.relocation_count()
    require(count >= FEWEST_RELOCATIONS, f"cannot be moved: {count} relocations")
    require(image.dll_characteristics & NX_COMPATIBLE, "lets data, the stack's included, be executed")
    if bits == 32:
        require(image.dll_characteristics & NO_SEH, "offers its code as exception handlers")
    else:
        require(image.dll_characteristics & HIGH_ENTROPY, "is not loaded at any address of 64 bits")
        require(image.base >= 1 << 32, "asks for an address below 4 GiB")
        require(image.directory(UNWINDING)[1] > 0, "says of no function how it is left")

    executable = [section for section in image.sections if section.flags & SECTION_EXECUTABLE]
    require([section.name for section in executable] == [".text"],
            f"has code in {', '.join(section.name for section in executable) or 'no section'}")
    for section in image.sections:
        require(not (section.flags & (SECTION_EXECUTABLE | SECTION_CODE) and section.flags & SECTION_WRITABLE),
                f"may write its own code: {section.name}")

    imports = set(image.imports())
    require("kernel32.dll" in imports, "has no imports that could be read")
    for name in sorted(imports - allowed):
        problems.append(f"imports {name}")
    for directory, kind in ((DELAY_IMPORTS, "delayed"), (BOUND_IMPORTS, "bound")):
        require(image.directory(directory) == (0, 0), f"has {kind} imports")

    for address in image.tls_callbacks():
        symbols = names.get(address, set())
        require(symbols & ALLOWED_CALLBACKS[bits],
                f"has the loader call {' or '.join(sorted(symbols)) or hex(address)} for every thread")
    return problems

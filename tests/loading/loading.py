"""loading.py <case> <repository> <build output>

What docs/security.md says about where libraries are loaded from, with planted files in every place that could be searched:
beside the host, in the system's directory, in the current directory, in a folder of the search path. Works in the current
directory.
"""

import os
import shutil
import subprocess
import sys

AMD = "AMD Radeon RX 580 Series"
INTEL = "Intel(R) Arc(TM) A770 Graphics"
NVIDIA = "NVIDIA GeForce RTX 4070"

SUPPORT = ["msasn1.dll", "cryptnet.dll", "drvstore.dll", "devobj.dll", "wldp.dll", "cryptbase.dll"]

# Of SetDefaultDllDirectories.
APPLICATION_DIRECTORY = 0x200
SYSTEM_DIRECTORY = 0x800

LOAD_FAILED = "40000026"
NOT_INITIALIZED = "40000001"

BESIDE, SYSTEM, CURRENT, PATH = "beside", "system", "current", "path"
EVERYWHERE_ELSE = [BESIDE, CURRENT, PATH]


class Machine:
    """A host's folder, a current directory, a folder of the search path, and Wine's system directory."""

    def __init__(self, repository, output, host="loading_host.exe"):
        self._repository = repository
        self.output = output
        self._planted = os.path.join(output, "tests", "platform", "planted.dll")
        self._folders = {place: os.path.abspath(place) for place in EVERYWHERE_ELSE}
        prefix = os.environ.get("GPUTUNE_WINEPREFIX", os.path.join(repository, "build", "wine"))
        self._folders[SYSTEM] = os.path.join(prefix, "drive_c", "windows", "system32")
        self._files = []
        for place in EVERYWHERE_ELSE:
            os.makedirs(self._folders[place], exist_ok=True)
        self._host = os.path.join(self._folders[BESIDE], host)
        shutil.copy(os.path.join(output, "tests", "loading", "loading_host.exe"), self._host)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.remove_all()

    def plant(self, name, *places):
        for place in places:
            path = os.path.join(self._folders[place], name)
            if os.path.exists(path):
                raise RuntimeError(f"{path} is there already")
            self._files.append(path)
            shutil.copy(self._planted, path)

    def add_to_host_folder(self, *path):
        return shutil.copy(os.path.join(self.output, *path), self._folders[BESIDE])

    def remove_all(self):
        while self._files:
            os.remove(self._files.pop())

    def run(self, *steps):
        """The lines of the host: (what, place) for libraries, with the place's name where it is one of the four."""
        library = self.windows_path(os.path.join(self.output, "bin", "gputune.dll"))
        return self.run_program([self._host, library, *map(str, steps)])

    def run_program(self, command):
        environment = dict(os.environ, GPUTUNE_SHOW_PLANTED="1", WINEPATH=self.windows_path(self._folders[PATH]))
        result = subprocess.run([os.path.join(self._repository, "scripts", "wine"), *command], check=False, text=True,
                                cwd=self._folders[CURRENT], env=environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return [self._with_place(line) for line in result.stdout.splitlines()]

    @staticmethod
    def windows_path(path):
        return "Z:" + path.replace("/", "\\")

    def path_in(self, place, name):
        return self.windows_path(os.path.join(self._folders[place], name))

    def _with_place(self, line):
        folders = {self.windows_path(folder).lower(): place for place, folder in self._folders.items()}
        folders["c:\\windows\\system32"] = SYSTEM
        for folder, place in folders.items():
            position = line.lower().find(folder + "\\")
            if position >= 0:
                return f"{line[:position]}{place} {line[position + len(folder) + 1:]}"
        return line


class Checks:
    def __init__(self):
        self.count = 0
        self.failures = []

    def expect(self, situation, found, *expected):
        """The host's lines, before the last, which says that it came to its end."""
        self.count += 1
        if found != [*expected, "done"]:
            self.failures.append(f"{situation}:\n  expected {[*expected, 'done']}\n  found    {found}")

    def report(self):
        print("\n".join(self.failures) or f"{self.count} situations are as they are documented")
        return 1 if self.failures or not self.count else 0


def loaded(place, name):
    return f"loaded {place} {name}"


def where(place, name):
    return f"{name}: {place} {name}"


def absent(name):
    return f"{name}: absent"


# ---- AMD: the usual search ----


def usual_search(machine, checks):
    for name in ("atiadlxx.dll", "atiadlxy.dll"):
        for place in EVERYWHERE_ELSE:
            machine.plant(name, place)
            checks.expect(f"AMD, {name} in {place}", machine.run("start", AMD, "where", name),
                          loaded(place, name), where(place, name))
            machine.remove_all()
    name = "atiadlxx.dll"
    machine.plant(name, *EVERYWHERE_ELSE)
    machine.plant("atiadlxy.dll", *EVERYWHERE_ELSE)
    checks.expect("AMD, the host's folder comes first, and the other name is left alone",
                  machine.run("start", AMD, "where", "atiadlxy.dll"), loaded(BESIDE, name), absent("atiadlxy.dll"))
    machine.remove_all()
    machine.plant(name, *EVERYWHERE_ELSE)
    for caption in (INTEL, NVIDIA):
        checks.expect(f"{caption}: AMD's library is none of its business", machine.run("start", caption, "where", name),
                      absent(name))


def narrowed_search(machine, checks):
    names = ("atiadlxx.dll", "atiadlxy.dll")
    for name in names:
        machine.plant(name, *EVERYWHERE_ELSE)
    system = f"{SYSTEM_DIRECTORY:x}"
    checks.expect("AMD, in a host that takes from the system's directory alone",
                  machine.run("narrow", system, "start", AMD, "where", names[0], "where", names[1]),
                  absent(names[0]), absent(names[1]))
    both = f"{SYSTEM_DIRECTORY | APPLICATION_DIRECTORY:x}"
    checks.expect("AMD, in a host that adds its own folder", machine.run("narrow", both, "start", AMD),
                  loaded(BESIDE, names[0]))
    machine.remove_all()
    for name in names:
        machine.plant(name, CURRENT, PATH)
    checks.expect("AMD, in a host whose own folder has none",
                  machine.run("narrow", both, "start", AMD, "where", names[0], "where", names[1]),
                  absent(names[0]), absent(names[1]))


# ---- Intel: the system's directory, or the host's path ----


def intel(machine, checks):
    name = "ControlLib32.dll"
    machine.plant(name, *EVERYWHERE_ELSE)
    checks.expect("Intel, at the start", machine.run("start", INTEL, "where", name), absent(name))
    checks.expect("Intel, by the host's ctlInit", machine.run("init", "where", name), f"ctlInit: {LOAD_FAILED}",
                  absent(name))
    for caption in (AMD, NVIDIA):
        checks.expect(f"{caption}: Intel's library is none of its business",
                      machine.run("start", caption, "where", name), absent(name))


def intel_by_path(machine, checks):
    name = "control.dll"
    for place in EVERYWHERE_ELSE:
        machine.plant(name, place)
    for place in EVERYWHERE_ELSE:
        path = machine.path_in(place, name)
        checks.expect(f"Intel, from the host's path in {place}", machine.run("runtime", path, "init", "where", name),
                      loaded(place, name), "ctlInit: 0", where(place, name))
        checks.expect(f"Intel, from the host's path in {place}, at the start",
                      machine.run("runtime", path, "start", INTEL), loaded(place, name))
    # No paths that say where.
    for path in (name, f".\\{name}", f"..\\current\\{name}"):
        checks.expect(f"Intel, by {path}", machine.run("runtime", path, "init", "where", name),
                      f"ctlInit: {LOAD_FAILED}", absent(name))


# ---- NVIDIA: the careful loading ----


def nvidia(machine, checks):
    machine.plant("nvapi.dll", *EVERYWHERE_ELSE)
    checks.expect("NVIDIA", machine.run("start", NVIDIA, "where", "nvapi.dll"), absent("nvapi.dll"))
    for caption in (AMD, INTEL):
        checks.expect(f"{caption}: NVIDIA's library is none of its business",
                      machine.run("start", caption, "where", "nvapi.dll"), absent("nvapi.dll"))
    machine.remove_all()
    # Those that Wine has come from its directory; the others are found nowhere.
    for name in SUPPORT:
        machine.plant(name, *EVERYWHERE_ELSE)
    asked = [word for name in SUPPORT for word in ("where", name)]
    found = machine.run("start", NVIDIA, *asked)
    checks.expect("NVIDIA, the support libraries", found,
                  *(where(SYSTEM, name) if where(SYSTEM, name) in found else absent(name) for name in SUPPORT))
    for name in ("msasn1.dll", "cryptnet.dll"):
        checks.expect(f"NVIDIA, {name}", [line for line in found if line.startswith(name)] + ["done"],
                      where(SYSTEM, name))


def protected_host(machine, checks):
    for name in SUPPORT:
        machine.plant(name, *EVERYWHERE_ELSE)
    asked = [word for name in SUPPORT for word in ("where", name)]
    checks.expect("NVIDIA, in the process for protected media", machine.run("start", NVIDIA, *asked),
                  *(absent(name) for name in SUPPORT))


# ---- The system's directory itself ----


def system_directory(machine, checks):
    for caption, name in ((INTEL, "ControlLib32.dll"), (NVIDIA, "nvapi.dll")):
        machine.plant(name, SYSTEM, *EVERYWHERE_ELSE)
        checks.expect(f"{name} in all places", machine.run("start", caption, "where", name), loaded(SYSTEM, name),
                      where(SYSTEM, name))
        machine.remove_all()

    name = "atiadlxx.dll"
    machine.plant(name, SYSTEM, CURRENT, PATH)
    checks.expect(f"{name} in the system's directory and behind it", machine.run("start", AMD), loaded(SYSTEM, name))
    machine.plant(name, BESIDE)
    checks.expect(f"{name} in all places", machine.run("start", AMD), loaded(BESIDE, name))
    checks.expect(f"{name} in all places, in a host that takes from the system's directory alone",
                  machine.run("narrow", f"{SYSTEM_DIRECTORY:x}", "start", AMD), loaded(SYSTEM, name))
    machine.remove_all()

    # One of the support libraries that Wine does not have.
    machine.plant("drvstore.dll", SYSTEM, *EVERYWHERE_ELSE)
    checks.expect("drvstore.dll in all places", machine.run("start", NVIDIA), loaded(SYSTEM, "drvstore.dll"))


# ---- Afterwards ----


def unloaded(machine, checks):
    machine.plant("atiadlxx.dll", BESIDE)
    checks.expect("AMD's library stays when gputune.dll goes",
                  machine.run("start", AMD, "unload", "where", "gputune.dll", "where", "atiadlxx.dll"),
                  loaded(BESIDE, "atiadlxx.dll"), absent("gputune.dll"), where(BESIDE, "atiadlxx.dll"))


# ---- The tool ----


def tool(machine, checks):
    program = machine.add_to_host_folder("bin", "gputunectl.exe")
    machine.plant("gputune.dll", CURRENT, PATH)
    checks.expect("the tool, without the library beside it", [*machine.run_program([program, "info"]), "done"])
    os.remove(program)
    # Where it is installed, it works.
    programs = os.path.join(machine.output, "bin")
    board = machine.windows_path(os.path.join(programs, "boards", "overdrive8.json"))
    found = machine.run_program([os.path.join(programs, "gputunectl.exe"), "--simulate", board, "info"])
    checks.expect("the tool, with it", [line for line in found if "loaded" in line or "Overdrive8" in line] + ["done"],
                  "  Interface             AMD Overdrive8")


CASES = {
    "usual_search": usual_search,
    "narrowed_search": narrowed_search,
    "intel": intel,
    "intel_by_path": intel_by_path,
    "nvidia": nvidia,
    "nvidia_windows7": nvidia,
    "protected_host": protected_host,
    "unloaded": unloaded,
    "system_directory": system_directory,
    "system_directory_windows7": system_directory,
    "tool": tool,
}

# The programs to which Wine poses as another Windows, and the one whose name the library knows.
HOSTS = {
    "nvidia_windows7": "windows7_tests.exe",
    "system_directory_windows7": "windows7_tests.exe",
    "protected_host": "mfpmp.exe",
}


def main(case, repository, output):
    checks = Checks()
    with Machine(repository, output, HOSTS.get(case, "loading_host.exe")) as machine:
        CASES[case](machine, checks)
    return checks.report()


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

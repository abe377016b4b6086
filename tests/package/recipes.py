"""recipes.py <root>

The recipes of vcpkg and Conan fit the source tree: its version, the libraries that its CMake files look for, options and targets
that these have. Neither program is asked, unless there is a conan; the Conan recipe runs with stand-ins for Conan's classes.
The test package.installed_dependencies builds what the recipes build.
"""

import json
import pathlib
import re
import runpy
import shutil
import subprocess
import sys
import tempfile
import types

root = pathlib.Path(sys.argv[1])
cmake = "".join(file.read_text(encoding="utf-8") for file in [root / "CMakeLists.txt", *root.glob("cmake/*.cmake")])
version = re.search(r"^    VERSION ([0-9.]+)$", cmake, re.M).group(1)
# Those for tests are none of a package's.
libraries = {name.lower().replace("_", "-") for name in re.findall(r"gputune_find\((\w+)\)", cmake)} - {"gtest", "benchmark"}
options = set(re.findall(r"option\((GPUTUNE_\w+)|set\((GPUTUNE_\w+) [^)]*CACHE", cmake))
options = {name for pair in options for name in pair if name}
problems = []


def expect(condition, what):
    if not condition:
        problems.append(what)


expect(len(libraries) > 2 and len(options) > 5, f"few libraries or options: {libraries}, {options}")

# --- vcpkg ---
port = root / "recipes/vcpkg/gputune"
manifest = json.loads((port / "vcpkg.json").read_text(encoding="utf-8"))
expect(set(manifest) == {"name", "version", "description", "license", "supports", "dependencies"}, f"vcpkg.json: {set(manifest)}")
expect(manifest["name"] == port.name and manifest["license"] == "MIT", "vcpkg.json: name or license")
expect(manifest["version"] == version, f"vcpkg.json has version {manifest['version']}, the project {version}")
expect(manifest["description"] in cmake, "vcpkg.json has another description than the project")
needed = [entry for entry in manifest["dependencies"] if isinstance(entry, str)]
expect(set(needed) == libraries, f"vcpkg.json needs {needed}, the CMake files look for {libraries}")
tools = {entry["name"] for entry in manifest["dependencies"] if isinstance(entry, dict) and entry.get("host")}
portfile = (port / "portfile.cmake").read_text(encoding="utf-8")
for command in re.findall(r"^vcpkg_\w+", portfile, re.M):
    tool = "vcpkg-cmake-config" if command == "vcpkg_cmake_config_fixup" else "vcpkg-cmake"
    expect(not command.startswith("vcpkg_cmake") or tool in tools, f"portfile.cmake: {command} needs {tool}")
expect((port / re.search(r"CURRENT_PORT_DIR}/([./]+)", portfile).group(1)).resolve() == root.resolve(),
       "portfile.cmake builds another folder than the source tree")
expect(re.search(r"add_custom_target\(" + re.search(r"TARGET (\w+)", portfile).group(1), cmake), "portfile.cmake: no such target")

# --- Conan ---
recipe = root / "recipes/conan/conanfile.py"


class InvalidConfiguration(Exception):
    pass


class StandIn:
    """Conan's CMake, CMakeToolchain and CMakeDeps, of which it keeps what they were told."""
    made = []

    def __init__(self, _conanfile):
        self.cache_variables = {}
        self.built = None
        StandIn.made.append(self)

    def configure(self):
        pass

    generate = install = configure

    def build(self, target):
        self.built = target


def copy(_conanfile, pattern, src, dst, excludes=(), keep_path=True):
    found = [path.relative_to(src) for path in pathlib.Path(src).glob(pattern)]
    expect(found, f"conanfile.py copies {pattern}, which is not in {src}")
    expect(all(isinstance(entry, str) for entry in excludes) and isinstance(keep_path, bool) and dst, "conanfile.py: copy")


def module(name, **contents):
    sys.modules[name] = types.ModuleType(name)
    vars(sys.modules[name]).update(contents)


module("conan", ConanFile=object)
module("conan.tools")
module("conan.errors", ConanInvalidConfiguration=InvalidConfiguration)
module("conan.tools.cmake", CMake=StandIn, CMakeDeps=StandIn, CMakeToolchain=StandIn, cmake_layout=lambda conanfile: None)
module("conan.tools.files", copy=copy, load=lambda conanfile, path: pathlib.Path(path).read_text(encoding="utf-8"))
conanfile = runpy.run_path(str(recipe))["Gputune"]()
conanfile.recipe_folder = str(recipe.parent)
conanfile.source_folder = str(root)
required = []
conanfile.requires = lambda reference, visible: required.append(reference)
conanfile.cpp_info = types.SimpleNamespace(set_property=lambda name, value: None)
conanfile.runenv_info = types.SimpleNamespace(append_path=lambda name, value: None)
with tempfile.TemporaryDirectory() as scratch:
    conanfile.export_sources_folder = conanfile.build_folder = conanfile.package_folder = scratch
    for step in ("set_version", "export_sources", "layout", "requirements", "generate", "build", "package", "package_info"):
        getattr(conanfile, step)()


def refused(system, processor, compiler):
    conanfile.settings = types.SimpleNamespace(os=system, arch=processor, compiler=compiler)
    try:
        conanfile.validate()
    except InvalidConfiguration:
        return True
    return False


expect(conanfile.version == version, f"conanfile.py finds version {conanfile.version}")
needed = {reference.split("/")[0].replace("_", "-") for reference in required}
expect(needed == libraries, f"conanfile.py needs {needed}, the CMake files look for {libraries}")
expect(not refused("Windows", "x86", "gcc") and not refused("Windows", "x86_64", "gcc"), "conanfile.py refuses what it builds")
expect(refused("Linux", "x86", "gcc") and refused("Windows", "armv8", "gcc") and refused("Windows", "x86", "msvc"),
       "conanfile.py takes what cannot be built")
expect([made.built for made in StandIn.made if made.built] == ["package_contents"], "conanfile.py builds another target")
told = {name for made in StandIn.made for name in made.cache_variables} | set(re.findall(r"-D(\w+)=", portfile))
expect(len(told) > 3 and told <= options, f"options that there are not: {told - options}")

if shutil.which("conan"):
    expect(subprocess.run(["conan", "inspect", str(recipe)], check=False).returncode == 0, "conan does not understand the recipe")

print("\n".join(problems) or f"version {version}, {len(libraries)} libraries, {len(told)} options")
sys.exit(bool(problems))

"""Conan 2 recipe: builds the source tree that it lies in.

    conan create recipes/conan --profile:host=<a profile for MinGW>
"""

import os
import re

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load

required_conan_version = ">=2.0"


class Gputune(ConanFile):
    name = "gputune"
    description = "Reads and tunes the installed graphics card, whoever made its GPU"
    license = "MIT"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    # Linked into the DLL: hosts load one file.
    default_options = {"tinyxml2/*:shared": False}

    def _source_tree(self):
        return os.path.join(self.recipe_folder, "..", "..")

    def set_version(self):
        text = load(self, os.path.join(self._source_tree(), "CMakeLists.txt"))
        self.version = re.search(r"^    VERSION ([0-9.]+)$", text, re.M).group(1)

    def export_sources(self):
        copy(self, "*", self._source_tree(), self.export_sources_folder, excludes=("build/*", ".git/*", "tests/*"))

    def layout(self):
        cmake_layout(self)

    def validate(self):
        if self.settings.os != "Windows" or self.settings.arch not in ("x86", "x86_64"):
            raise ConanInvalidConfiguration("gputune is a library for Windows, x86 and x86_64")
        if self.settings.compiler not in ("gcc", "clang"):
            raise ConanInvalidConfiguration("gputune is built with MinGW; its DLL serves every compiler")

    def requirements(self):
        for reference in ("civetweb/[>=1.15 <2]", "cli11/[>=2.1 <3]", "nlohmann_json/[>=3.11 <4]", "tinyxml2/[>=9]"):
            self.requires(reference, visible=False)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        for name in ("BUILD_TESTS", "BUILD_BENCH", "X64_FOLDERS"):
            toolchain.cache_variables[f"GPUTUNE_{name}"] = "OFF"
        toolchain.cache_variables["GPUTUNE_DEPS_DIR"] = os.path.join(self.build_folder, "no-deps")
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build(target="package_contents")

    def package(self):
        CMake(self).install()
        for name in ("LICENSE", "licenses/THIRD-PARTY.txt"):
            copy(self, name, self.source_folder, os.path.join(self.package_folder, "licenses"), keep_path=False)

    def package_info(self):
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = ["lib/cmake/gputune"]
        self.cpp_info.libs = ["gputune"]
        self.runenv_info.append_path("PATH", os.path.join(self.package_folder, "bin"))

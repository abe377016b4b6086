"""A wheel of gputune holds a library for Windows. This source distribution does not, and says so where pip wants to build it."""

import os
import sys
import sysconfig

from setuptools import Distribution, setup

try:
    from setuptools.command.bdist_wheel import bdist_wheel
except ImportError:  # setuptools before 70
    from wheel.bdist_wheel import bdist_wheel

REFUSAL = """gputune reads and tunes graphics boards through gputune.dll, a library for 32-bit and 64-bit (x64) Windows
programs. There is a wheel for each of them (win32, win_amd64) and none for other systems: this Python is for %s.
Please use Python for Windows. The sources of the library itself are not in this package."""

if not os.path.exists(os.path.join("gputune", "gputune.dll")) and "sdist" not in sys.argv:
    sys.exit(REFUSAL % sysconfig.get_platform())


class Wheel(bdist_wheel):
    """For every Python 3 of one width of Windows."""

    def get_tag(self):
        return "py3", "none", self.plat_name


class WithLibrary(Distribution):
    """Other than one of Python files only: its wheel is for one system."""

    def has_ext_modules(self):
        return True


setup(cmdclass={"bdist_wheel": Wheel}, distclass=WithLibrary)

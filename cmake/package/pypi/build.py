"""build.py <directory>: the wheels and the source distribution of what pypi.cmake has laid out here.

source/ is what they share, each other folder has the library of one platform, by whose tag it is called.
"""

import gzip
import os
import shutil
import sys
import tarfile

from setuptools import build_meta

epoch = int(os.environ["SOURCE_DATE_EPOCH"])
output = os.path.abspath(sys.argv[1])
os.umask(0o022)


def build(platform):
    """A wheel: wheel itself takes the names in order and the time from SOURCE_DATE_EPOCH."""
    shutil.copytree("source", "build-" + platform)
    shutil.copy(os.path.join(platform, "gputune.dll"), os.path.join("build-" + platform, "gputune"))
    os.chdir("build-" + platform)
    build_meta.build_wheel(output, {"--build-option": ["--plat-name=" + platform]})
    os.chdir("..")


def build_source_distribution():
    """Packed again, since setuptools keeps the builder's name, his groups and the time."""
    shutil.copytree("source", "build-source")
    os.chdir("build-source")
    name = build_meta.build_sdist("..")
    os.chdir("..")
    with tarfile.open(name) as made, open(os.path.join(output, name), "wb") as file, \
            gzip.GzipFile("", "wb", mtime=epoch, fileobj=file) as compressed, \
            tarfile.open(fileobj=compressed, mode="w", format=tarfile.USTAR_FORMAT) as packed:
        for member in sorted(filter(tarfile.TarInfo.isfile, made), key=lambda member: member.name):
            plain = tarfile.TarInfo(member.name)
            plain.size, plain.mtime, plain.mode = member.size, epoch, 0o644
            packed.addfile(plain, made.extractfile(member))


for folder in sorted(os.listdir(".")):
    if folder != "source":
        build(folder)
build_source_distribution()

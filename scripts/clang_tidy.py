"""clang_tidy.py <build directory> <state directory> <folders...>

clang-tidy 14 over the sources of these folders that the build compiles, with the sum in the exit code. Called by
scripts/analyse, in the root of the repository.

What takes its time are the headers, and not the sources: up to a minute for one that is used by many. So sources that are
compiled alike are looked at together, as one source that includes them, as long as their names do not collide. When there
is something to say, each is looked at by itself.

A file that was found clean is not looked at again until it, a header of ours that it includes, its compile command or the
settings change (<state>/clean).
"""

import concurrent.futures
import glob
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
import threading

# Of a batch. The longer, the fewer times the headers are read; the shorter, the better all processors have work.
_MOST_FILES = 12
_ERROR = re.compile(r"^(?P<file>[^\s:]+\.cpp):\d+:\d+: error: ", re.MULTILINE)


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True).stdout.decode()


class Sources:
    """The sources of the folders, with their compile commands."""

    def __init__(self, build, folders):
        root = os.getcwd()
        self.arguments = {}
        self.directory = os.path.abspath(build)
        with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
            for entry in json.load(file):
                path = os.path.relpath(entry["file"], root)
                # One of several targets that compile it will do.
                if path.endswith(".cpp") and path.startswith(tuple(folder + "/" for folder in folders)):
                    self.arguments.setdefault(path, self._flags(shlex.split(entry["command"])))
        self._headers = self._included(build)

    def _flags(self, command):
        """Without the compiler and the files."""
        return command[1:command.index("-o")]

    @staticmethod
    def _included(build):
        """What of ours each source includes, as its last compilation found it."""
        included, current = {}, set()
        for line in output_of("ninja", "-C", build, "-t", "deps").splitlines():
            if line.startswith("    "):
                path = os.path.relpath(os.path.join(build, line.strip()))
                if path.endswith(".cpp"):
                    current = included.setdefault(path, set())
                elif not path.startswith(("..", "build")):
                    current.add(path)
        return included

    def key(self, path, settings):
        """A name for all that the answer depends on."""
        every = [header for folder in ("include", "src", "sim", "tool")
                 for header in glob.glob(folder + "/**/*.[hi]*", recursive=True)]
        sha = hashlib.sha256(settings + " ".join(self.arguments[path]).encode())
        for name in [path, *sorted(self._headers.get(path, every))]:
            # A header that is gone: the source must have changed, too.
            if os.path.isfile(name):
                with open(name, "rb") as file:
                    sha.update(file.read())
        return sha.hexdigest()


class Tidy:
    def __init__(self, sources, state):
        self._sources = sources
        self._state = state
        self._lock = threading.Lock()

    def _ask(self, paths, program, *options):
        """The program's exit code and what it says about these files, as one source."""
        arguments = self._sources.arguments[paths[0]]
        source = os.path.abspath(paths[0])
        if len(paths) > 1:
            source = os.path.join(os.path.abspath(self._state), hashlib.sha256(" ".join(paths).encode()).hexdigest()[:16] + ".cpp")
            with open(source, "w", encoding="utf-8") as file:
                file.write("".join(f'#include "{os.path.abspath(path)}"\n' for path in paths))
        command = [program, *options, source] + (["--"] if program != "clang++" else []) + arguments
        done = subprocess.run(command, cwd=self._sources.directory, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        if len(paths) > 1:
            os.remove(source)
        return done.returncode, done.stdout.decode() + done.stderr.decode()

    def batches(self, paths):
        """Files that are compiled alike and have no names in common."""
        alike = {}
        for path in paths:
            alike.setdefault(tuple(self._sources.arguments[path]), []).append(path)
        for files in alike.values():
            while files:
                together, later = files[:_MOST_FILES], []
                while len(together) > 1:
                    _, said = self._ask(together, "clang++", "-fsyntax-only", "-w", "-ferror-limit=0")
                    wrong = {os.path.relpath(match["file"]) for match in _ERROR.finditer(said)}
                    if not wrong:
                        break
                    later += [path for path in together if path in wrong]
                    together = [path for path in together if path not in wrong] if wrong < set(together) else together[:1]
                files = [path for path in files if path not in together]
                yield together

    def is_clean(self, paths):
        options = ["--quiet", "--warnings-as-errors=*"]
        if len(paths) > 1:
            options += ["--header-filter=" + self._filter(), "--checks=-bugprone-suspicious-include"]
        code, said = self._ask(paths, "clang-tidy", *options)
        if code == 0:
            return True
        if len(paths) > 1:
            return all([self.is_clean([path]) for path in paths])
        with self._lock:
            # It also tells how many warnings of system headers it kept to itself.
            print(re.sub(r"^\d+ warnings?( and \d+ errors?)? generated\.\n", "", said, flags=re.MULTILINE), end="")
            print(f"analyse: {paths[0]} is not clean", flush=True)
        return False

    @staticmethod
    def _filter():
        """That of the settings, and the sources that are included."""
        with open(".clang-tidy", encoding="utf-8") as file:
            headers = re.search(r"^HeaderFilterRegex: '(.*)'$", file.read(), re.MULTILINE)[1]
        return headers + r"|/(src|sim|tool|bench)/.*\.cpp$"


def main(build, state, *folders):
    sources = Sources(build, folders)
    if not sources.arguments:
        sys.exit(f"analyse: no compiled source in {' '.join(folders)}")
    settings = b""
    for name in (".clang-tidy", __file__):
        with open(name, "rb") as file:
            settings += file.read()
    clean = os.path.join(state, "clean")
    os.makedirs(clean, exist_ok=True)
    stamps = {path: os.path.join(clean, sources.key(path, settings)) for path in sources.arguments}
    unknown = sorted(path for path, stamp in stamps.items() if not os.path.exists(stamp))
    tidy = Tidy(sources, state)

    def look_at(batch):
        if not tidy.is_clean(batch):
            return False
        for path in batch:
            with open(stamps[path], "w", encoding="utf-8"):
                pass
        return True

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return 0 if all(list(pool.map(look_at, tidy.batches(unknown)))) else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

#!/usr/bin/python3
"""report_page.py <repository> [--readings N] [--runs N] [--program LABEL=PATH]...

How large a page of a long recording is and how long Chromium takes until it stands on the screen: medians, of each program
in turn. Without --program it is the gputunectl.exe that scripts/build has built; give the one of another version, beside its
gputune.dll, to compare both in one run.
"""

import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

REPOSITORY = pathlib.Path(__file__).resolve().parent.parent
sys.dont_write_bytecode = True
sys.path.insert(0, str(REPOSITORY / "tests" / "tool"))

import long_recording  # noqa: E402
from browser import Browser  # noqa: E402

# Two frames after the load event the charts are painted.
PAINTED = "new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => done())))"


def make_page(repository, program, recording, page):
    """Seconds."""
    begin = time.monotonic()
    subprocess.run([str(repository / "scripts/wine"), program, "report", recording, "-o", page], check=True,
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    return time.monotonic() - begin


def open_page(page):
    """Seconds from asking for it until it is painted, in a browser that has just started."""
    with Browser(patience=120) as browser:
        begin = time.monotonic()
        browser.open(page)
        browser.evaluate(PAINTED)
        return time.monotonic() - begin


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("repository", type=pathlib.Path)
    parser.add_argument("--readings", type=int, default=200000)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--program", action="append", metavar="LABEL=PATH")
    options = parser.parse_args()
    options.repository = options.repository.resolve()
    programs = dict(entry.split("=", 1) for entry in options.program or
                    [f"built={options.repository / 'build/bin/gputunectl.exe'}"])
    programs = {label: os.path.abspath(path) for label, path in programs.items()}

    with tempfile.TemporaryDirectory() as directory:
        os.chdir(directory)
        long_recording.write("run.csv", options.readings)
        making = {label: make_page(options.repository, program, "run.csv", f"{label}.html")
                  for label, program in programs.items()}
        opening = {label: [] for label in programs}
        for _ in range(options.runs):
            for label in programs:
                opening[label].append(open_page(f"{label}.html"))
        print(f"{options.readings} readings of {len(long_recording.COLUMNS)} sensors, "
              f"{os.path.getsize('run.csv') / 1e6:.1f} MB; medians of {options.runs}")
        print(f"{'':12}{'size':>10}{'longest line':>15}{'made in':>10}{'opens in':>10}")
        for label in programs:
            with open(f"{label}.html", "rb") as file:
                longest = max(map(len, file))
            size = os.path.getsize(f"{label}.html")
            print(f"{label:12}{size / 1e6:7.1f} MB{longest / 1e3:12.1f} kB{making[label]:8.1f} s"
                  f"{statistics.median(opening[label]):8.2f} s")
        os.chdir("/")


if __name__ == "__main__":
    main()

#!/usr/bin/python3
"""hold_cost.py <repository> [--seconds N] [--board NAME]

What a hold costs while it holds at one reading a second: processor time and memory of the supervisor and of its worker, on
a simulated board under Wine. The machine should have nothing else to do.
"""

import argparse
import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time


def processor_seconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def private_megabytes(pid):
    """What the process has written to and has for itself, as Windows counts the private working set: pages of program files
    can be shared."""
    lines = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii").splitlines()
    return sum(int(line.split()[1]) for line in lines if line.startswith("Private_Dirty")) / 1024


def worker_of(folder):
    for line in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
        try:
            words = line.read_bytes()
        except OSError:
            continue
        if b"hold-worker" in words and folder.encode() in words:
            return int(line.parent.name)
    raise SystemExit("there is no worker")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("repository", type=pathlib.Path)
    parser.add_argument("--seconds", type=int, default=300)
    parser.add_argument("--board", default="overdriven")
    arguments = parser.parse_args()
    repository = arguments.repository.resolve()
    with tempfile.TemporaryDirectory() as folder:
        # A copy, whose path tells this hold's worker from others.
        board = shutil.copy(repository / f"boards/{arguments.board}.json", folder)
        environment = {**os.environ, "GPUTUNE_STATE_DIRECTORY": "Z:" + folder.replace("/", "\\")}
        with subprocess.Popen(
                [str(repository / "scripts/wine"), str(repository / "build/bin/gputunectl.exe"), "--simulate",
                 board, "--json",
                 "hold", "--fan", "40:30", "60:50", "90:100", "--hysteresis", "3"],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True, encoding="utf-8", env=environment) as hold:
            for line in hold.stdout:
                if json.loads(line)["fan_speed_percent"] is not None:
                    break
            pids = {"supervisor": hold.pid, "worker": worker_of(os.path.basename(folder))}
            before = {name: processor_seconds(pid) for name, pid in pids.items()}
            begin = time.monotonic()
            readings = 0
            while time.monotonic() - begin < arguments.seconds:
                hold.stdout.readline()
                readings += 1
            elapsed = time.monotonic() - begin
            total = [0.0, 0.0]
            for name, pid in pids.items():
                used = processor_seconds(pid) - before[name]
                memory = private_megabytes(pid)
                total = [total[0] + used, total[1] + memory]
                print(f"{name}: {used / elapsed * 3600:.1f} s of processor time an hour, {memory:.1f} MB")
            print(f"together: {total[0] / elapsed * 100:.2f} % of a core, {total[1]:.1f} MB "
                  f"({readings} readings in {elapsed:.0f} s)")
            hold.send_signal(signal.SIGINT)
            hold.stdout.read()


if __name__ == "__main__":
    main()

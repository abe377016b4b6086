"""What processes under Wine cost, for hold_cost.py, serve_cost.py and fleet.py."""

import os
import pathlib


def processor_seconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text(encoding="ascii").rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def private_megabytes(pid):
    """What the process has written to and has for itself, as Windows counts the private working set: pages of program files
    can be shared."""
    lines = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii").splitlines()
    return sum(int(line.split()[1]) for line in lines if line.startswith("Private_Dirty")) / 1024


def worker_of(folder):
    """The worker whose board file lies in this folder."""
    for line in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
        try:
            words = line.read_bytes()
        except OSError:
            continue
        if b"hold-worker" in words and folder.encode() in words:
            return int(line.parent.name)
    raise SystemExit("there is no worker")


class Cost:
    """Of processes by name, from now on."""

    def __init__(self, pids):
        self.pids = pids
        self.before = {name: processor_seconds(pid) for name, pid in pids.items()}

    def report(self, elapsed, what):
        total = [0.0, 0.0]
        for name, pid in self.pids.items():
            used = processor_seconds(pid) - self.before[name]
            memory = private_megabytes(pid)
            total = [total[0] + used, total[1] + memory]
            print(f"{name}: {used / elapsed * 3600:.1f} s of processor time an hour, {memory:.1f} MB")
        print(f"together: {total[0] / elapsed * 100:.2f} % of a core, {total[1]:.1f} MB ({what} in {elapsed:.0f} s)")

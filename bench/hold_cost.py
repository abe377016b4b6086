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

from processes import Cost, worker_of


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
            cost = Cost({"supervisor": hold.pid, "worker": worker_of(os.path.basename(folder))})
            begin = time.monotonic()
            readings = 0
            while time.monotonic() - begin < arguments.seconds:
                hold.stdout.readline()
                readings += 1
            cost.report(time.monotonic() - begin, f"{readings} readings")
            hold.send_signal(signal.SIGINT)
            hold.stdout.read()


if __name__ == "__main__":
    main()

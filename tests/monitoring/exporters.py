"""`gputunectl serve` under Wine, on simulated boards."""

import json
import os
import signal
import subprocess

from prometheus import PATIENCE

TOKEN = "a-token-of-a-test"


def command(repository, options, *words):
    return [f"{repository}/scripts/wine", f"{repository}/build/bin/gputunectl.exe", *options, *words]


def tool(repository, options, *words):
    """The result of a command."""
    done = subprocess.run(command(repository, [*options, "--json"], *words), stdin=subprocess.DEVNULL, check=True,
                          capture_output=True, timeout=PATIENCE)
    return json.loads(done.stdout)


class Exporter:
    """An exporter of the board of these options, until the end of the `with`. What it says is in the file serve.log."""

    def __init__(self, repository, options, *words, asks_token=False):
        if asks_token:
            with open("exporter.token", "w", encoding="ascii") as file:
                file.write(TOKEN + "\n")
            words += ("--token-file", "exporter.token")
        self._command = command(repository, [*options, "--json"], "serve", "--listen", "127.0.0.1:0", *words)
        self.address = ""
        self.process = None

    def __enter__(self):
        with open("serve.log", "ab") as log:
            self.process = subprocess.Popen(self._command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=log)
        line = self.process.stdout.readline()
        if not line:
            raise SystemExit("FAILED: gputunectl serve does not start, see serve.log")
        self.address = json.loads(line)["listen"]
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            os.kill(self.process.pid, signal.SIGINT)
        try:
            self.process.wait(PATIENCE / 4)
        finally:
            self.process.kill()

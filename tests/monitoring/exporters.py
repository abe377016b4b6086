"""`gputunectl serve` under Wine, on simulated boards."""

import json
import os
import signal
import subprocess
import urllib.error
import urllib.request

from prometheus import PATIENCE, eventually, free_port

TOKEN = "a-token-of-a-test"


def command(repository, options, *words):
    return [f"{repository}/scripts/wine", f"{repository}/build/bin/gputunectl.exe", *options, *words]


def tool(repository, options, *words):
    """The result of a command."""
    done = subprocess.run(command(repository, [*options, "--json"], *words), stdin=subprocess.DEVNULL, check=True,
                          capture_output=True, timeout=PATIENCE)
    return json.loads(done.stdout)


class Exporter:
    """An exporter of the board of these options, until the end of the `with`. What it says is in a file serve-<port>.log."""

    def __init__(self, repository, options, *words, asks_token=False):
        if asks_token:
            with open("exporter.token", "w", encoding="ascii") as file:
                file.write(TOKEN + "\n")
            words += ("--token-file", "exporter.token")
        self._command = command(repository, options, "serve", *words)
        self.address = ""
        self.process = None

    def __enter__(self):
        # Another process can have taken the port meanwhile.
        for _ in range(5):
            port = free_port()
            self.address = f"127.0.0.1:{port}"
            with open(f"serve-{port}.log", "ab") as log:
                self.process = subprocess.Popen([*self._command, "--listen", self.address], stdin=subprocess.DEVNULL,
                                                stdout=log, stderr=log)
            eventually(lambda: self.process.poll() is not None or self._answers(), f"{self.address}, see its log")
            if self.process.poll() is None:
                return self
        raise SystemExit("FAILED: gputunectl serve does not start, see its log")

    def __exit__(self, *_):
        if self.process.poll() is None:
            os.kill(self.process.pid, signal.SIGINT)
        self.process.wait(PATIENCE)

    def _answers(self):
        request = urllib.request.Request(f"http://{self.address}/healthz", headers={"Authorization": f"Bearer {TOKEN}"})
        try:
            with urllib.request.urlopen(request, timeout=PATIENCE):
                return True
        except OSError:
            return False

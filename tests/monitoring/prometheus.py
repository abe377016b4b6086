"""The real Prometheus for tests: where it is, a server of their own, and what its answers say."""

import json
import os
import shutil
import socket
import subprocess
import sys
import time
import urllib.error
import urllib.parse
import urllib.request

# Long enough for the slowest machine: what is waited for comes, or the test has failed.
PATIENCE = 200
_SKIPPED = 77


def program(repository, name):
    """The installed program, or the one that scripts/setup has unpacked; ends the test as skipped when there is none."""
    unpacked = f"{repository}/build/deps/prometheus/usr/bin/{name}"
    found = shutil.which(name) or (unpacked if os.access(unpacked, os.X_OK) else None)
    if not found:
        print(f"skipped: this machine has no {name}; scripts/setup all fetches it")
        sys.exit(_SKIPPED)
    return found


def free_port():
    """A port of 127.0.0.1 that nobody uses now."""
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


def eventually(condition, what):
    """Waits for the condition, and returns what it returned."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        result = condition()
        if result:
            return result
        time.sleep(0.2)
    sys.exit(f"FAILED: never {what() if callable(what) else what}")


class Prometheus:
    """A server, or an agent, with a port of its own, until the end of the `with`. `name` is that of its folder; its output
    is in <name>.log."""

    def __init__(self, repository, configuration, name="data", agent=False):
        kind = ["--enable-feature=agent", f"--storage.agent.path={name}"] if agent else [
            f"--storage.tsdb.path={name}", "--web.enable-admin-api", "--web.enable-remote-write-receiver"]
        self._command = [program(repository, "prometheus"), f"--config.file={configuration}", *kind]
        self._log = f"{name}.log"
        self.address = ""
        self.process = None

    def __enter__(self):
        # Another process can have taken the port meanwhile.
        for _ in range(5):
            self.address = f"127.0.0.1:{free_port()}"
            with open(self._log, "ab") as log:
                self.process = subprocess.Popen([*self._command, f"--web.listen-address={self.address}"],
                                                stdin=subprocess.DEVNULL, stdout=log, stderr=log)
            eventually(lambda: self.process.poll() is not None or self._is_ready(), f"ready, see {self._log}")
            if self.process.poll() is None:
                return self
        sys.exit(f"FAILED: Prometheus does not start, see {self._log}")

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(PATIENCE)

    def _is_ready(self):
        try:
            with urllib.request.urlopen(f"http://{self.address}/-/ready", timeout=PATIENCE):
                return True
        except OSError:
            return False

    def ask(self, path, method="GET", **arguments):
        """What the API's `path` answers to these arguments; a list is an argument several times."""
        query = urllib.parse.urlencode(arguments, doseq=True)
        request = urllib.request.Request(f"http://{self.address}/api/v1/{path}?{query}", method=method)
        try:
            with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
                return json.load(answer)["data"]
        except urllib.error.HTTPError as error:
            sys.exit(f"FAILED: {path} {arguments}: {error.read().decode()}")

    def query(self, expression):
        """The series that the expression has now: their labels, as sorted pairs, with their values."""
        return {tuple(sorted(series["metric"].items())): float(series["value"][1])
                for series in self.ask("query", query=expression)["result"]}

    def value(self, expression):
        """The one value that the expression has now; None when there is none."""
        values = list(self.query(expression).values())
        if len(values) > 1:
            sys.exit(f"FAILED: {expression} has several values: {values}")
        return values[0] if values else None

    def alerts(self, state):
        """Pairs of alert and instance, of the alerts in this state."""
        return {(alert["labels"]["alertname"], alert["labels"].get("instance", ""))
                for alert in self.ask("alerts")["alerts"] if alert["state"] == state}

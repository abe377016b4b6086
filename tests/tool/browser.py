"""A headless Chromium that a test looks at a page with, over its debugging protocol on a pair of pipes."""

import json
import os
import select
import shutil
import subprocess
import tempfile
import time


class Browser:
    """Opens one file; afterwards `events` holds what the browser reported since."""

    def __init__(self, program="chromium", patience=15):
        """`patience`: after how many seconds without an answer the browser is given up."""
        self._patience = patience
        self._profile = tempfile.mkdtemp(prefix="page-test-")
        command_out, self._commands = os.pipe()
        self._answers, answer_in = os.pipe()
        # The browser expects its end of the pipes as descriptors 3 and 4.
        def take_pipes():
            low, high = os.dup(command_out), os.dup(answer_in)
            os.dup2(low, 3)
            os.dup2(high, 4)

        self._process = subprocess.Popen(
            [program, "--headless=new", "--no-sandbox", "--disable-gpu", "--no-first-run", "--hide-scrollbars",
             "--disable-background-networking", "--disable-component-update", "--disable-sync", "--disable-quic", "--remote-debugging-pipe",
             f"--user-data-dir={self._profile}", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            close_fds=False, preexec_fn=take_pipes)
        os.close(command_out)
        os.close(answer_in)
        self._buffer = b""
        self._number = 0
        self._session = None
        self.events = []
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")

    def close(self):
        self._process.terminate()
        self._process.wait(10)
        os.close(self._commands)
        os.close(self._answers)
        shutil.rmtree(self._profile, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def call(self, method, **parameters):
        self._number += 1
        message = {"id": self._number, "method": method, "params": parameters}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._commands, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._next()
            if answer.get("id") == self._number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def open(self, path):
        self.events.clear()
        self.call("Page.navigate", url="file://" + os.path.abspath(path))
        while not any(event["method"] == "Page.loadEventFired" for event in self.events):
            self._next()

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def drag(self, start, end):
        for kind, point in (("mouseMoved", start), ("mousePressed", start), ("mouseMoved", end), ("mouseReleased", end)):
            self.call("Input.dispatchMouseEvent", type=kind, x=point[0], y=point[1], button="left",
                      buttons=1, clickCount=1)

    def double_click(self, point):
        for count in (1, 2):
            for kind in ("mousePressed", "mouseReleased"):
                self.call("Input.dispatchMouseEvent", type=kind, x=point[0], y=point[1], button="left",
                          clickCount=count)

    def requests(self):
        """What the page asked for besides itself."""
        urls = [event["params"]["request"]["url"] for event in self.events
                if event["method"] == "Network.requestWillBeSent"]
        return [url for url in urls if not url.startswith(("file:", "data:"))]

    def complaints(self):
        """Errors and warnings, of scripts and of the browser."""
        found = []
        for event in self.events:
            if event["method"] == "Runtime.exceptionThrown":
                found.append(event["params"]["exceptionDetails"])
            elif event["method"] == "Log.entryAdded" and event["params"]["entry"]["level"] in ("error", "warning"):
                found.append(event["params"]["entry"]["text"])
            elif event["method"] == "Runtime.consoleAPICalled" and event["params"]["type"] in ("error", "warning"):
                found.append(event["params"]["args"])
        return found

    def _next(self):
        deadline = time.monotonic() + self._patience
        while b"\0" not in self._buffer:
            if not select.select([self._answers], [], [], max(0, deadline - time.monotonic()))[0]:
                raise RuntimeError("the browser does not answer")
            data = os.read(self._answers, 1 << 20)
            if not data:
                raise RuntimeError("the browser has ended")
            self._buffer += data
        message, self._buffer = self._buffer.split(b"\0", 1)
        message = json.loads(message)
        if "method" in message:
            self.events.append(message)
        return message

"""A headless Chromium that a test looks at a page with, over its debugging protocol on a pair of pipes."""

import base64
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

# What is drawn between the axes of a chart. Read from a copy, as the browser warns of reading a canvas that is drawn on.
PIXELS = """
(chart) => {
    const {left, top, width, height} = chart.bbox;
    const copy = new OffscreenCanvas(width, height).getContext('2d', {willReadFrequently: true});
    copy.drawImage(chart.ctx.canvas, left, top, width, height, 0, 0, width, height);
    return copy.getImageData(0, 0, width, height).data;
}
"""

# Counts the pixels of a chart that have the colour of a custom property, or a mixture close to it.
COUNT_PIXELS = """
(chart, name) => {
    const probe = new OffscreenCanvas(1, 1).getContext('2d', {willReadFrequently: true});
    probe.fillStyle = getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    probe.fillRect(0, 0, 1, 1);
    const wanted = probe.getImageData(0, 0, 1, 1).data;
    const pixels = (%s)(chart);
    let count = 0;
    for (let i = 0; i < pixels.length; i += 4) {
        if (pixels[i + 3] > 100 && Math.abs(pixels[i] - wanted[0]) + Math.abs(pixels[i + 1] - wanted[1]) +
                Math.abs(pixels[i + 2] - wanted[2]) < 30) {
            ++count;
        }
    }
    return count;
}
""" % PIXELS

# Two frames on, what was asked for is on the screen.
DRAWN = "new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done))))"


class Browser:
    """Opens one page; afterwards `events` holds what the browser reported since."""

    def __init__(self, program="chromium", patience=100):
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

    def open(self, place):
        """Opens an address or a file."""
        self.events.clear()
        self.call("Page.navigate", url=place if "://" in place else "file://" + os.path.abspath(place))
        while not any(event["method"] == "Page.loadEventFired" for event in self.events):
            self._next()

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def set_view(self, width, height, scheme):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        # So that observers of size and scheme have had their turn.
        self.evaluate(DRAWN)

    def screenshot(self, name):
        """Into the directory that the environment names, if it names one."""
        directory = os.environ.get("GPUTUNE_SCREENSHOTS")
        if directory:
            data = self.call("Page.captureScreenshot", captureBeyondViewport=True)["data"]
            with open(f"{directory}/{name}.png", "wb") as file:
                file.write(base64.b64decode(data))

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

"""A headless browser that a test steers over a pair of pipes (the DevTools protocol)."""

import base64
import json
import os
import pathlib
import select
import shutil
import subprocess
import tempfile
import time

DEADLINE = 120  # seconds for any one answer; only a browser that hangs takes so long


def executable():
    return shutil.which("chromium") or shutil.which("chromium-browser")


class Browser:
    """One page of a browser with a profile of its own."""

    def __init__(self, *arguments):
        self.profile = tempfile.mkdtemp(prefix="browser.")
        commands, self.output = os.pipe()
        self.input, answers = os.pipe()
        # The browser reads file descriptor 3 and writes file descriptor 4.
        self.process = subprocess.Popen(
            ["sh", "-c", f'exec "$@" 3<&{commands} 4>&{answers}', "sh", executable(), "--headless", "--no-sandbox",
             "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run", "--hide-scrollbars",
             "--remote-debugging-pipe", "--disable-background-networking", "--disable-component-update",
             f"--user-data-dir={self.profile}", *arguments, "about:blank"],
            pass_fds=(commands, answers), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL)
        os.close(commands)
        os.close(answers)
        self.buffer = b""
        self.number = 0
        self.session = None
        self.events = []
        target = next(t for t in self.call("Target.getTargets")["targetInfos"] if t["type"] == "page")
        self.session = self.call("Target.attachToTarget", targetId=target["targetId"], flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log", "Accessibility"):
            self.call(f"{domain}.enable")

    def close(self):
        self.session = None
        try:
            self.call("Browser.close")  # its helpers end with it
            self.process.wait(DEADLINE)
        except (OSError, RuntimeError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
        os.close(self.output)
        os.close(self.input)
        shutil.rmtree(self.profile, ignore_errors=True)

    def receive(self):
        until = time.monotonic() + DEADLINE
        while b"\0" not in self.buffer:
            ready, _, _ = select.select([self.input], [], [], max(0, until - time.monotonic()))
            data = os.read(self.input, 1 << 16) if ready else b""
            if not data:
                raise RuntimeError("the browser does not answer")
            self.buffer += data
        message, self.buffer = self.buffer.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.output, json.dumps(message).encode() + b"\0")
        while True:
            answer = self.receive()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            self.events.append(answer)

    def open(self, file, width=1280, scheme="light"):
        """Loads a file; what the page did meanwhile is in `events`."""
        self.events = []
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=900, deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.call("Page.navigate", url=pathlib.Path(file).resolve().as_uri())
        while not any(event.get("method") == "Page.loadEventFired" for event in self.events):
            self.events.append(self.receive())

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["exception"]["description"])
        return result["result"].get("value")

    def press(self, key, modifiers=0):
        codes = {"Tab": 9, "Escape": 27, "End": 35, "Home": 36, "ArrowLeft": 37, "ArrowUp": 38, "ArrowRight": 39,
                 "ArrowDown": 40}
        for kind in ("rawKeyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=key, windowsVirtualKeyCode=codes[key],
                      modifiers=modifiers)

    def hover(self, selector):
        box = self.evaluate(f"(() => {{ const r = document.querySelector({json.dumps(selector)})"
                            ".getBoundingClientRect(); return [r.x + r.width / 2, r.y + r.height / 2]; })()")
        self.call("Input.dispatchMouseEvent", type="mouseMoved", x=box[0], y=box[1])

    def accessible_texts(self):
        """Names that a screen reader is given, with the role of each."""
        nodes = self.call("Accessibility.getFullAXTree")["nodes"]
        return [(node.get("role", {}).get("value"), node.get("name", {}).get("value", "")) for node in nodes
                if not node.get("ignored")]

    def screenshot(self, file):
        pathlib.Path(file).parent.mkdir(parents=True, exist_ok=True)
        size = self.call("Page.getLayoutMetrics")["cssContentSize"]
        image = self.call("Page.captureScreenshot", captureBeyondViewport=True, clip={
            "x": 0, "y": 0, "width": size["width"], "height": size["height"], "scale": 1})
        pathlib.Path(file).write_bytes(base64.b64decode(image["data"]))

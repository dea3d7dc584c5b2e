"""The GTK example: its outline shows what was recorded, and follows."""

import os
import pathlib
import select
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest

from screen import Screen

PROGRAM = sys.argv[1]
SCREENSHOTS = pathlib.Path(sys.argv[2])
DEADLINE = 120  # seconds; only a window that never shows the rows takes so long


class Outline:
    """The example on a screen of its own."""

    def __init__(self, screen, folder):
        options = {name: os.environ.get(name, "") + ":" + value for name, value in (
            # The toolkit keeps much until the process ends, and it is not built with either sanitizer.
            ("ASAN_OPTIONS", "detect_leaks=0"), ("TSAN_OPTIONS", "report_bugs=0"))}
        self.process = subprocess.Popen(
            [PROGRAM, "--simulated", folder, "--print"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            env={**os.environ, **options, "DISPLAY": screen.name, "GDK_BACKEND": "x11", "GSK_RENDERER": "cairo",
                 "GTK_A11Y": "none", "GSETTINGS_BACKEND": "memory"})
        self.buffer = b""

    def tell(self, *parts):
        self.process.stdin.write("\t".join(map(str, parts)).encode() + b"\n")
        self.process.stdin.flush()

    def wait_for(self, rows):
        """Waits until these rows, (depth, name, duration), are shown, and returns their colours."""
        until = time.monotonic() + DEADLINE
        shown = None
        while True:
            while b"\n\n" in self.buffer:
                state, self.buffer = self.buffer.split(b"\n\n", 1)
                parts = [line.split("\t") for line in state.decode().strip().split("\n")]
                shown = [(int(depth), name, duration) for depth, _, name, duration in parts]
                if shown == rows:
                    return [color for _, color, _, _ in parts]
            ready, _, _ = select.select([self.process.stdout], [], [], max(0, until - time.monotonic()))
            data = os.read(self.process.stdout.fileno(), 1 << 16) if ready else b""
            if not data:
                raise AssertionError(f"expected {rows}, last shown {shown}")
            self.buffer += data

    def end(self):
        """Ends its input, and with it the program; its exit status."""
        self.process.stdin.close()
        status = self.process.wait(DEADLINE)
        self.process.stdout.close()
        return status

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
            self.end()


class GtkOutline(unittest.TestCase):
    def setUp(self):
        self.screen = Screen(560, 420)  # the window's size
        self.addCleanup(self.screen.close)
        self.folder = pathlib.Path(tempfile.mkdtemp())

    def wait_for_picture(self, parts):
        """Waits until all these pixels are on the screen. It gets a picture a moment after the program has given it."""
        until = time.monotonic() + DEADLINE
        missing = list(parts)
        while missing:
            picture = b"".join(self.screen.rows())
            missing = [part for part in missing if part not in picture]
            self.assertTrue(not missing or time.monotonic() < until, missing)

    def test_outline_follows_the_recording(self):
        outline = Outline(self.screen, self.folder)
        self.addCleanup(outline.kill)
        outline.tell("use", "org.example.Editor", "notes.txt", 1500)
        outline.tell("use", "org.example.Browser", "news", 600)
        colors = outline.wait_for([(0, "Editor", "0:25:00"), (0, "Web Browser", "0:10:00")])
        self.assertEqual(colors, ["3884f4ff", "f08030ff"])

        # Rows change, come and move.
        outline.tell("use", "org.example.Browser", "more news", 1800)
        outline.tell("use", "org.example.Mail", "inbox", 300)
        outline.wait_for([(0, "Web Browser", "0:40:00"), (0, "Editor", "0:25:00"), (0, "Mail", "0:05:00")])

        # A group takes applications in; its row is as long as theirs together.
        outline.tell("group", "Talk", "7c3aedff", "org.example.Mail")
        rows = [(0, "Web Browser", "0:40:00"), (0, "Editor", "0:25:00"), (0, "Talk", "0:05:00"),
                (1, "Mail", "0:05:00")]
        self.assertEqual(outline.wait_for(rows)[2], "7c3aedff")
        outline.tell("use", "org.example.Mail", "answer", 3600)
        outline.wait_for([(0, "Talk", "1:05:00"), (1, "Mail", "1:05:00"), (0, "Web Browser", "0:40:00"),
                          (0, "Editor", "0:25:00")])
        # The bars are there, in the applications' colours.
        self.wait_for_picture(bytes.fromhex(color) * 20 for color in ("3884f4", "f08030", "7c3aed"))
        self.screen.screenshot(SCREENSHOTS / "gtk-outline.png")

        self.assertEqual(outline.end(), 0)
        with sqlite3.connect(f"file:{self.folder / 'Orvane' / 'Orvaning.db'}?mode=ro", uri=True) as database:
            (seconds,) = database.execute("SELECT SUM(endDate - startDate) FROM Recording").fetchone()
        self.assertEqual(seconds, 65 * 60 + 40 * 60 + 25 * 60)


if __name__ == "__main__":
    if not shutil.which("Xvfb"):
        print("no display: Xvfb is not installed")
        sys.exit(77)
    unittest.main(argv=["gtk_outline_test"])

"""A display of a test's own whose picture can be read."""

import pathlib
import struct
import subprocess
import tempfile
import zlib


class Screen:
    def __init__(self, width, height):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        # Told a descriptor, the server writes its display number there once it is ready.
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", "1", "-screen", "0", f"{width}x{height}x24", "-nolisten", "tcp", "-fbdir",
             self.folder], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        number = self.server.stdout.readline().strip()
        if not number:
            raise RuntimeError("Xvfb did not start")
        self.name = ":" + number

    def close(self):
        self.server.kill()
        self.server.wait()
        self.server.stdout.close()

    def rows(self):
        """Rows of pixels, each three bytes: red, green, blue. The server keeps the picture as an X window dump
        (XWD version 7): a header of big-endian words, a table of colours, then four bytes a pixel, blue first."""
        data = (self.folder / "Xvfb_screen0").read_bytes()
        words = struct.unpack(">25I", data[:100])
        width, height, line, colors = words[4], words[5], words[12], words[19]
        start = words[0] + 12 * colors
        for y in range(height):
            row = data[start + y * line:start + y * line + 4 * width]
            rgb = bytearray(3 * width)
            rgb[0::3], rgb[1::3], rgb[2::3] = row[2::4], row[1::4], row[0::4]
            yield bytes(rgb)

    def screenshot(self, file):
        """Writes the picture as PNG (RFC 2083)."""
        rows = list(self.rows())

        def chunk(kind, content):
            return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

        header = struct.pack(">IIBBBBB", len(rows[0]) // 3, len(rows), 8, 2, 0, 0, 0)
        pixels = zlib.compress(b"".join(b"\0" + row for row in rows))
        pathlib.Path(file).parent.mkdir(parents=True, exist_ok=True)
        pathlib.Path(file).write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", pixels) +
                                       chunk(b"IEND", b""))

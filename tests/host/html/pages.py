"""Stores to report on, and the pages that the program makes of them."""

import datetime
import html.parser
import json
import os
import pathlib
import subprocess
import sys
import tempfile

PROGRAM = sys.argv[1]
EPOCH = datetime.datetime(2026, 1, 1, tzinfo=datetime.timezone.utc)


def seconds(text):
    """Seconds from the trace's epoch to a date and time in UTC."""
    return (datetime.datetime.fromisoformat(text + "+00:00") - EPOCH).total_seconds()


def make_store(applications, recordings, groups=()):
    """A folder with a store. `applications`: identifier to (name, colour, group); `recordings`: (identifier, start,
    end, title, idle). Each application has a second's use on 1 January too, through which it came to be known."""
    folder = pathlib.Path(tempfile.mkdtemp())
    lines = [{"trace": 1, "epoch": EPOCH.isoformat().replace("+00:00", "Z"), "defaults": {"OrvaneEnabled": True}}]
    for at, identifier in enumerate(applications, 1):
        lines += [{"at": at, "desktop": {
            "frontmost": {"bundleIdentifier": identifier, "processIdentifier": 7},
            "windows": [{"kCGWindowOwnerPID": 7, "kCGWindowLayer": 0, "kCGWindowOwnerName": "x"}]}},
            {"at": at, "call": "poll"}]
    at = len(applications) + 1
    lines += [{"at": at, "defaults": {"OrvaneEnabled": False}}]
    lines += [{"at": at, "edit": {"insertGroup": name, "color": color}} for name, color in groups]
    for identifier, (name, color, group) in applications.items():
        lines += [{"at": at, "edit": {"application": identifier, "name": name, "color": color, "group": group}}]
    for identifier, start, end, title, idle in recordings:
        lines += [{"at": at, "edit": {"save": False, "insertRecording": {
            "application": identifier, "start": seconds(start), "end": seconds(end), "window": title,
            "idle": idle}}}]
    lines += [{"at": at, "edit": {"insertGroup": "Unused"}}]
    subprocess.run([PROGRAM, "replay", "--support", folder, "-"], input="\n".join(map(json.dumps, lines)), text=True,
                   check=True, stdout=subprocess.DEVNULL)
    return folder / "Orvane"


def report(store, *arguments, zone="UTC", check=True):
    return subprocess.run([PROGRAM, "report", "--store", store, *arguments], text=True, check=check,
                          capture_output=True, env={**os.environ, "TZ": zone})


def make_page(store, *arguments, zone="UTC"):
    """Path of a page."""
    file = pathlib.Path(tempfile.mkdtemp()) / "page.html"
    report(store, *arguments, "--html", file, zone=zone)
    return file


def durations(store, range_text):
    """(name, seconds) of each group and application with use, in the order and the form of the JSON report."""
    result = []
    for item in json.loads(report(store, range_text, "--json").stdout)["items"]:
        if item["kind"] == "app" or item["applications"]:
            result += [(part["name"], part["duration"]) for part in (item, *item.get("applications", []))]
    return result


class Node:
    def __init__(self, tag, attributes):
        self.tag = tag
        self.attributes = attributes
        self.children = []

    def all(self, tag=None, class_name=None):
        """The elements beneath, in order."""
        for child in self.children:
            if isinstance(child, Node):
                classes = (child.attributes.get("class") or "").split()
                if tag in (None, child.tag) and (class_name is None or class_name in classes):
                    yield child
                yield from child.all(tag, class_name)

    def first(self, tag=None, class_name=None):
        return next(self.all(tag, class_name))

    def text(self):
        return "".join(c.text() if isinstance(c, Node) else c for c in self.children).strip()


class PageParser(html.parser.HTMLParser):
    """A tree of the page. Every element that has an end must have it in its place."""

    def __init__(self):
        super().__init__()
        self.root = Node("", {})
        self.open = [self.root]

    def handle_starttag(self, tag, attributes):
        node = Node(tag, dict(attributes))
        self.open[-1].children.append(node)
        if tag not in ("meta", "br"):
            self.open.append(node)

    def handle_endtag(self, tag):
        assert self.open[-1].tag == tag, f"</{tag}> closes <{self.open[-1].tag}> at {self.getpos()}"
        self.open.pop()

    def handle_data(self, data):
        self.open[-1].children.append(data)


def parse(file):
    parser = PageParser()
    parser.feed(file.read_text())
    assert len(parser.open) == 1, f"<{parser.open[-1].tag}> has no end"
    return parser.root

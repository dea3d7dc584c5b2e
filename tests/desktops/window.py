#!/usr/bin/python3
"""A program with one window. Its argument is the title; lines of input change it."""

import os
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk  # noqa: E402

window = Gtk.Window(title=sys.argv[1])
window.set_default_size(320, 200)
window.connect("destroy", lambda *_: Gtk.main_quit())


def shown(*_):
    native = window.get_window()
    print("shown", native.get_xid() if hasattr(native, "get_xid") else 0, flush=True)


def read(*_):
    lines = os.read(0, 65536).decode()
    if not lines:
        Gtk.main_quit()
        return False
    for line in lines.splitlines():
        command, _, argument = line.partition(" ")
        if command == "title":
            window.set_title(argument)
        elif command == "minimize":
            window.iconify()
        elif command == "restore":
            window.deiconify()
            window.present()
        elif command == "close":
            window.close()
    return True


if os.environ.get("GDK_BACKEND") == "x11":
    gi.require_version("GdkX11", "3.0")
    from gi.repository import GdkX11  # noqa: E402,F401
window.connect("map-event", shown)
GLib.io_add_watch(0, GLib.PRIORITY_DEFAULT, GLib.IOCondition.IN | GLib.IOCondition.HUP, read)
window.show_all()
Gtk.main()

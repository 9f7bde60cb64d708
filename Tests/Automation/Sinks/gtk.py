#!/usr/bin/python3
"""A program to type into and to scroll, with GTK. usage: gtk.py 3|4

Says on standard output what reaches it, a JSON object a line: {"text": …}, {"down": pixels}, {"right": pixels}; and
{"ready": true} once it has painted.
"""

import json
import sys

import gi

VERSION = sys.argv[1]
gi.require_version("Gtk", VERSION + ".0")
from gi.repository import GLib, Gtk  # noqa: E402

ROWS = 400
said = {}


def line(i):
    return f"Row {i}: " + " ".join(f"{(i + 1) * (k + 3) * 7919 % 10007} of {i * i + k}," for k in range(40))


def say(what, value):
    if said.get(what) != value:
        said[what] = value
        print(json.dumps({what: value}), flush=True)


def put(parent, child, expand=False):
    if VERSION == "3":
        parent.pack_start(child, expand, expand, 0)
    else:
        child.set_vexpand(expand)
        parent.append(child)


def place(parent, child):
    parent.add(child) if VERSION == "3" else parent.set_child(child)


def build(window):
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    place(window, box)
    view = Gtk.TextView()
    view.set_wrap_mode(Gtk.WrapMode.CHAR)
    text = Gtk.ScrolledWindow()
    text.set_size_request(600, 120)
    place(text, view)
    put(box, text)
    rows = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    for i in range(ROWS):
        put(rows, Gtk.Label(label=line(i), xalign=0))
    scrolled = Gtk.ScrolledWindow()
    place(scrolled, rows)
    put(box, scrolled, True)

    # A buffer of thousands of characters is read a few times a second, not at each of them.
    buffer = view.get_buffer()
    dirty = []
    buffer.connect("changed", lambda _: dirty.append(True))

    def tell():
        if dirty:
            dirty.clear()
            say("text", buffer.get_text(buffer.get_start_iter(), buffer.get_end_iter(), True))
        return True

    GLib.timeout_add(40, tell)
    scrolled.get_vadjustment().connect("value-changed", lambda a: say("down", a.get_value()))
    scrolled.get_hadjustment().connect("value-changed", lambda a: say("right", a.get_value()))
    view.grab_focus()

    frames = []

    def paint(*_):
        frames.append(True)
        if len(frames) == 5:
            say("ready", True)
        view.queue_draw()
        return len(frames) < 5

    view.add_tick_callback(paint)


def main():
    if VERSION == "4":
        Gtk.init()
    window = Gtk.Window(title="Sink")
    window.set_default_size(600, 480)
    build(window)
    window.show_all() if VERSION == "3" else window.present()
    GLib.MainLoop().run()


main()

#!/usr/bin/python3
"""A GTK 4 window with widgets that people click, and what was done to them in the file $GALLERY_LOG."""

import os
import sys

import gi

gi.require_version("Gtk", "4.0")
from gi.repository import Gio, GLib, Gtk  # noqa: E402


def tell(*words):
    with open(os.environ["GALLERY_LOG"], "a", encoding="utf-8") as log:
        print(*words, file=log)


def button(label):
    made = Gtk.Button(label=label, use_underline=True)
    made.connect("clicked", lambda _: tell("clicked", label))
    return made


def menu_button(application):
    menu = Gio.Menu()
    for name in ("Preferences", "About"):
        action = Gio.SimpleAction.new(name.lower(), None)
        action.connect("activate", lambda it, _: tell("chosen", it.get_name()))
        application.add_action(action)
        menu.append(name, "app." + name.lower())
    return Gtk.MenuButton(label="Options", menu_model=menu)


def notice_over(overlay):
    notice = Gtk.Frame(halign=Gtk.Align.START, valign=Gtk.Align.START)
    notice.set_size_request(60, 40)
    notice.set_child(Gtk.Label(label="Please wait"))
    made = Gtk.Button(label="Notice")
    made.connect("clicked", lambda _: overlay.add_overlay(notice))
    return made


def rows():
    box = Gtk.ListBox()
    for number in range(1, 61):
        box.append(Gtk.Label(label=f"Row {number}", xalign=0))
    box.connect("row-activated", lambda _, row: tell("row", row.get_index() + 1))
    scrolled = Gtk.ScrolledWindow(min_content_height=200)
    scrolled.set_child(box)
    return scrolled


def buttons(count):
    lines = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    for first in range(0, count, 40):
        line = Gtk.Box()
        for number in range(first, min(first + 40, count)):
            line.append(button(f"Button {number}"))
        lines.append(line)
    return Gtk.ScrolledWindow(child=lines, min_content_height=100)


def column(count):
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    for number in range(1, count + 1):
        box.append(button(f"Line {number}"))
    return Gtk.ScrolledWindow(child=box, min_content_height=240)


def activate(application):
    window = Gtk.ApplicationWindow(application=application, title="Gallery of GTK 4")
    window.set_default_size(600, 420)
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=6)
    line = Gtk.Box(spacing=6)
    off = button("Disabled one")
    off.set_sensitive(False)
    entry = Gtk.Entry(placeholder_text="Search notes")
    entry.connect("changed", lambda it: tell("typed", it.get_text()))
    check = Gtk.CheckButton(label="Bold")
    check.connect("toggled", lambda it: tell("bold", it.get_active()))
    overlay = Gtk.Overlay(child=box)
    for each in (button("Save"), button("_Inform"), off, menu_button(application), notice_over(overlay), check, entry):
        line.append(each)
    box.append(line)
    box.append(rows())
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 0
    if count:
        many = column if sys.argv[2:] == ["column"] else buttons
        box.append(many(count))
    box.append(Gtk.PasswordEntry(text="hunter2", placeholder_text="Password"))
    window.set_child(overlay)
    window.present()
    tell("ready")


application = Gtk.Application(application_id="org.tavaro.gallery4", flags=Gio.ApplicationFlags.NON_UNIQUE)
application.connect("activate", activate)
application.run([])

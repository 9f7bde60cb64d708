"""A window with an open field, which has the keyboard, and a password field after it. usage: form.py NAME TITLE"""

import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk

GLib.set_prgname(sys.argv[1])
window = Gtk.Window(title=sys.argv[2])
box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
for isOpen in (True, False):
    box.add(Gtk.Entry(visibility=isOpen))
window.add(box)
window.show_all()
box.get_children()[0].grab_focus()
Gtk.main()

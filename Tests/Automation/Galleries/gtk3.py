#!/usr/bin/python3
"""A GTK 3 window with a widget of every kind that people click, and what was done to them in the file $GALLERY_LOG."""

import os
import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402


def tell(*words):
    with open(os.environ["GALLERY_LOG"], "a", encoding="utf-8") as log:
        print(*words, file=log)


def button(label, act=None):
    made = Gtk.Button(label=label, use_underline=True)
    made.connect("clicked", act or (lambda _: tell("clicked", label)))
    return made


def menu_item(label, items=None):
    made = Gtk.MenuItem(label=label, use_underline=True)
    if items:
        menu = Gtk.Menu()
        for item in items:
            menu.append(item)
        made.set_submenu(menu)
    else:
        made.connect("activate", lambda _: tell("chosen", label))
    return made


def menus():
    bar = Gtk.MenuBar()
    bar.append(menu_item("_File", [menu_item("_Open…"), menu_item("_Export", [menu_item("As _Picture"), menu_item("As Text")])]))
    bar.append(menu_item("_Edit", [menu_item("Undo")]))
    return bar


def ask(window):
    dialog = Gtk.MessageDialog(transient_for=window, modal=True, text="Sure?")
    dialog.set_title("Question")
    dialog.add_buttons("Not now", 0, "Do it", 1)
    dialog.connect("response", lambda _, answer: (tell("answered", answer), dialog.destroy()))
    dialog.show_all()


def later(window, line):
    """What changes once the pointer leaves the button: Save moves or is renamed, a dialog comes, or the program ends."""

    def armed(change):
        def on_leave(it, event):
            if event.mode == Gdk.CrossingMode.NORMAL and it.is_armed:
                it.is_armed = False
                GLib.idle_add(lambda: change() and False)

        made = button(label, lambda it: setattr(it, "is_armed", True))
        made.is_armed = False
        made.connect("leave-notify-event", on_leave)
        return made

    save = line.get_children()[0]
    box = Gtk.Box(spacing=6)
    for label, change in (
        ("Move later", lambda: line.reorder_child(save, -1)),
        ("Rename later", lambda: save.set_label("Store")),
        ("Ask later", lambda: ask(window)),
        ("Quit later", lambda: os._exit(0)),
    ):
        box.pack_start(armed(change), False, False, 0)
    return box


def toast(_):
    notice = Gtk.Window(type=Gtk.WindowType.POPUP)
    notice.add(Gtk.Label(label="Saved"))
    notice.move(20, 20)
    notice.show_all()


def fields():
    box = Gtk.Box(spacing=6)
    label = Gtk.Label(label="_Name:", use_underline=True)
    name = Gtk.Entry()
    label.set_mnemonic_widget(name)
    name.connect("changed", lambda entry: tell("typed", entry.get_text()))
    search = Gtk.Entry(placeholder_text="Search notes")
    secret = Gtk.Entry(visibility=False, text="hunter2", placeholder_text="Password")
    for each in (label, name, search, secret):
        box.pack_start(each, False, False, 0)
    return box


def story():
    view = Gtk.TextView()
    view.get_accessible().set_name("Story")
    text = view.get_buffer()
    text.set_text("\n".join([" ".join(["alpha beta gamma delta"] * 6)] * 3))

    def selected(*_):
        ends = text.get_selection_bounds()
        if ends:
            tell("selected", text.get_text(*ends, False).strip())

    view.connect("event-after", lambda _, event: event.type == Gdk.EventType.BUTTON_RELEASE and selected())
    return view


def context_menu(widget):
    menu = Gtk.Menu()
    menu.append(menu_item("Inspect"))
    menu.show_all()
    widget.connect("button-press-event", lambda _, event: event.button == 3 and (menu.popup_at_pointer(event) or True))
    return widget


def choices():
    box = Gtk.Box(spacing=6)
    check = Gtk.CheckButton(label="Bold")
    check.connect("toggled", lambda it: tell("bold", it.get_active()))
    first = Gtk.RadioButton(label="Left")
    second = Gtk.RadioButton(label="Right", group=first)
    second.connect("toggled", lambda it: tell("right", it.get_active()))
    combo = Gtk.ComboBoxText()
    for text in ("Small", "Medium", "Large"):
        combo.append_text(text)
    combo.set_active(0)
    combo.connect("changed", lambda it: tell("size", it.get_active_text()))
    scale = Gtk.Scale.new_with_range(Gtk.Orientation.HORIZONTAL, 0, 10, 1)
    scale.set_size_request(120, -1)
    for each in (check, first, second, combo, scale):
        box.pack_start(each, False, False, 0)
    return box


def rows():
    box = Gtk.ListBox()
    for number in range(1, 61):
        box.add(Gtk.Label(label=f"Row {number}", xalign=0))
    box.connect("row-activated", lambda _, row: tell("row", row.get_index() + 1))
    scrolled = Gtk.ScrolledWindow(min_content_height=160)
    scrolled.add(box)
    return scrolled


def buttons(count):
    if len(sys.argv) > 2:
        return {"table": table, "column": column}[sys.argv[2]](count)
    lines = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    for first in range(0, count, 40):
        line = Gtk.Box()
        for number in range(first, min(first + 40, count)):
            line.pack_start(button(f"Button {number}"), False, False, 0)
        lines.pack_start(line, False, False, 0)
    scrolled = Gtk.ScrolledWindow(min_content_height=100)
    scrolled.add(lines)
    return scrolled


def table(count):
    store = Gtk.ListStore(str)
    for number in range(1, count + 1):
        store.append([f"Line {number}"])
    view = Gtk.TreeView(model=store)
    view.append_column(Gtk.TreeViewColumn("Heading", Gtk.CellRendererText(), text=0))
    scrolled = Gtk.ScrolledWindow(min_content_height=240)
    scrolled.add(view)
    return scrolled


def column(count):
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    for number in range(1, count + 1):
        box.add(button(f"Line {number}"))
    scrolled = Gtk.ScrolledWindow(min_content_height=240)
    scrolled.add(box)
    return scrolled


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 0
    window = Gtk.Window(title="Gallery of GTK 3")
    window.set_default_size(700, 480)
    window.connect("destroy", Gtk.main_quit)
    window.connect("key-press-event", lambda _, event: tell("key", Gtk.accelerator_name(event.keyval, 0)))
    box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL, spacing=6)
    line = Gtk.Box(spacing=6)
    off = button("Disabled one")
    off.set_sensitive(False)
    ask_first = button("Ask", lambda _: ask(window))
    freeze = button("Freeze", lambda _: GLib.timeout_add(50, hang))
    for each in (button("Save"), button("Save As…"), context_menu(button("Café")), ask_first, off, freeze, button("Toast", toast)):
        line.pack_start(each, False, False, 0)
    for each in (menus(), line, later(window, line), fields(), choices(), story(), rows()) + ((buttons(count),) if count else ()):
        box.pack_start(each, False, False, 0)
    window.add(box)
    window.show_all()
    tell("ready")
    Gtk.main()


def hang():
    import time

    tell("frozen")
    time.sleep(60)


main()

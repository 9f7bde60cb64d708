#!/usr/bin/python3
"""A window with an open field, which has the keyboard, and a password field after it. usage: Form.py gtk3|gtk4|qt5"""

import sys

TITLE = "Form"


def gtk(version):
    import gi
    gi.require_version("Gtk", version)
    from gi.repository import GLib, Gtk

    def show(window):
        box = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
        fields = [Gtk.Entry(), Gtk.PasswordEntry() if version == "4.0" else Gtk.Entry(visibility=False)]
        for field in fields:
            box.append(field) if version == "4.0" else box.add(field)
        window.set_title(TITLE)
        if version == "4.0":
            window.set_child(box)
            window.present()
        else:
            window.add(box)
            window.show_all()
        fields[0].grab_focus()

    if version == "4.0":
        application = Gtk.Application()
        application.connect("activate", lambda it: show(Gtk.ApplicationWindow(application=it)))
        application.run()
    else:
        show(Gtk.Window())
        GLib.MainLoop().run()


def qt():
    from PyQt5.QtWidgets import QApplication, QLineEdit, QVBoxLayout, QWidget
    application = QApplication([TITLE])
    window = QWidget()
    window.setWindowTitle(TITLE)
    box = QVBoxLayout(window)
    box.addWidget(QLineEdit())
    password = QLineEdit()
    password.setEchoMode(QLineEdit.Password)
    box.addWidget(password)
    window.show()
    application.exec_()


if __name__ == "__main__":
    {"gtk3": lambda: gtk("3.0"), "gtk4": lambda: gtk("4.0"), "qt5": qt}[sys.argv[1]]()

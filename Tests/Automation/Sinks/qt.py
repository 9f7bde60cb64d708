#!/usr/bin/python3
"""A program to type into and to scroll, with Qt; says the same as gtk.py."""

import json
import sys

from PyQt5.QtCore import QTimer
from PyQt5.QtWidgets import QApplication, QLabel, QPlainTextEdit, QScrollArea, QVBoxLayout, QWidget

ROWS = 400
said = {}


def line(i):
    return f"Row {i}: " + " ".join(f"{(i + 1) * (k + 3) * 7919 % 10007} of {i * i + k}," for k in range(40))


def say(what, value):
    if said.get(what) != value:
        said[what] = value
        print(json.dumps({what: value}), flush=True)


app = QApplication(sys.argv)
window = QWidget()
window.setWindowTitle("Sink")
window.resize(600, 480)
box = QVBoxLayout(window)
view = QPlainTextEdit()
view.setFixedHeight(120)
box.addWidget(view)
rows = QWidget()
column = QVBoxLayout(rows)
for i in range(ROWS):
    column.addWidget(QLabel(line(i)))
scrolled = QScrollArea()
scrolled.setWidget(rows)
box.addWidget(scrolled)
dirty = []
view.textChanged.connect(lambda: dirty.append(True))


def tell():
    if dirty:
        dirty.clear()
        say("text", view.toPlainText())


timer = QTimer()
timer.timeout.connect(tell)
timer.start(40)
scrolled.verticalScrollBar().valueChanged.connect(lambda value: say("down", value))
scrolled.horizontalScrollBar().valueChanged.connect(lambda value: say("right", value))
window.show()
view.setFocus()
QTimer.singleShot(300, lambda: say("ready", True))
sys.exit(app.exec())

#!/usr/bin/python3
"""A Qt 5 window with widgets that people click, and what was done to them in the file $GALLERY_LOG."""

import os
import sys

from PyQt5.QtCore import Qt
from PyQt5.QtWidgets import (QAction, QApplication, QCheckBox, QComboBox, QHBoxLayout, QLineEdit, QListWidget,
                             QMainWindow, QPlainTextEdit, QPushButton, QScrollArea, QTabWidget, QVBoxLayout, QWidget)


def tell(*words):
    with open(os.environ["GALLERY_LOG"], "a", encoding="utf-8") as log:
        print(*words, file=log)


def button(label):
    made = QPushButton(label)
    made.clicked.connect(lambda: tell("clicked", label))
    return made


def buttons(count):
    grid = QWidget()
    lines = QVBoxLayout(grid)
    for first in range(0, count, 40):
        line = QWidget()
        row = QHBoxLayout(line)
        for number in range(first, min(first + 40, count)):
            row.addWidget(button(f"Button {number}"))
        lines.addWidget(line)
    scrolled = QScrollArea()
    scrolled.setWidget(grid)
    return scrolled


def password():
    secret = QLineEdit("hunter2")
    secret.setEchoMode(QLineEdit.Password)
    secret.setPlaceholderText("Password")
    return secret


def add_menu(window):
    menu = window.menuBar().addMenu("&File")
    menu.addAction("&Open...").triggered.connect(lambda: tell("chosen Open"))
    menu.addMenu("&Export").addAction("As &Picture").triggered.connect(lambda: tell("chosen Picture"))


def story():
    view = QPlainTextEdit("\n".join([" ".join(["alpha beta gamma delta"] * 6)] * 3))
    view.setAccessibleName("Story")
    view.setMaximumHeight(70)
    view.selectionChanged.connect(lambda: tell("selected", view.textCursor().selectedText().strip()))
    return view


def context_menu(widget):
    action = QAction("Inspect", widget)
    action.triggered.connect(lambda: tell("chosen Inspect"))
    widget.addAction(action)
    widget.setContextMenuPolicy(Qt.ActionsContextMenu)
    return widget


def widgets():
    check = QCheckBox("&Bold")
    check.toggled.connect(lambda on: tell("bold", on))
    field = QLineEdit()
    field.setPlaceholderText("Search notes")
    field.textChanged.connect(lambda text: tell("typed", text))
    sizes = QComboBox()
    sizes.addItems(["Small", "Medium", "Large"])
    sizes.currentTextChanged.connect(lambda text: tell("size", text))
    rows = QListWidget()
    rows.addItems([f"Row {number}" for number in range(1, 61)])
    rows.itemClicked.connect(lambda row: tell("row", row.text()))
    tabs = QTabWidget()
    tabs.addTab(button("On the first"), "First")
    tabs.addTab(button("On the second"), "Second")
    off = button("Disabled one")
    off.setEnabled(False)
    return button("Save"), context_menu(button("Save As…")), off, check, field, sizes, story(), rows, tabs


def main():
    application = QApplication(sys.argv)
    window = QMainWindow()
    window.setWindowTitle("Gallery of Qt 5")
    add_menu(window)
    content = QWidget()
    layout = QVBoxLayout(content)
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 0
    for widget in widgets() + ((buttons(count),) if count else ()):
        layout.addWidget(widget)
    layout.addWidget(password())
    window.setCentralWidget(content)
    window.resize(500, 620)
    window.show()
    tell("ready")
    application.exec_()


main()

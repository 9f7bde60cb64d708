"""What tavaro-studio may be doing when it is to end, how it is made to do that, and what has to be there afterwards; and the
ways to end it."""

import fcntl
import json
import os
import signal
import subprocess
import time

from Killing import lengths_of, seconds_of, titles_of
from Session import Fault, await_it, key, window_of, xdotool

LATENESS = 0.4  # of the time that the recorder's bar shows, in seconds


def asked(program):
    program.process.send_signal(signal.SIGTERM)


def closed(program):
    """As from the desktop's list of windows, also where it is minimized."""
    xdotool("windowactivate", "--sync", await_it("its window", lambda: window_of(program)))
    key("alt+F4")


class State:
    """Something that goes on. `lasts`: the share of a second in which it is ended."""

    lasts = 1

    def reach(self, tree):
        raise NotImplementedError

    def look(self, tree):
        """At what shows just before the end."""

    def then(self, tree, way):
        """After it was asked."""

    def faults(self, home, way):
        """Of what is on the disk afterwards."""
        return []


class Playing(State):
    def reach(self, tree):
        tree.press("Play (Space)", "push button")


class Dragging(State):
    """A hand holds something of the timeline."""

    def reach(self, tree):
        x, y, width, height = tree.expect("Timeline", "list").where()
        xdotool("mousemove", x + width // 3, y + height // 2, "mousedown", 1, "mousemove", x + width // 3 + 40, y + height // 2)


class Titled(State):
    """Edited, and not saved yet."""

    def reach(self, tree):
        self.before = titles_of(tree.program.home.movies / "Tour.recproj")
        for _ in range(3):
            tree.press("Add Title", "push button")
            time.sleep(0.1)

    def faults(self, home, way):
        titles = titles_of(home.movies / "Tour.recproj") - self.before
        return [] if titles == 3 else [f"of 3 titles, {titles} are left"]


class InUse(State):
    """Edited while another program has the project. Who closes the window is told; who asks it to end waits for a moment."""

    lasts = 0

    def reach(self, tree):
        project = tree.program.home.movies / "Tour.recproj"
        self.before = titles_of(project)
        self.folder = os.open(project / "assets", os.O_RDONLY)
        fcntl.flock(self.folder, fcntl.LOCK_EX)
        tree.press("Add Title", "push button")

    def then(self, tree, way):
        if way is closed:
            tree.expect("That did not work")
            tree.press("OK", "push button")
        else:
            time.sleep(1)
        os.close(self.folder)
        if way is closed:
            closed(tree.program)

    def faults(self, home, way):
        return [] if titles_of(home.movies / "Tour.recproj") == self.before + 1 else ["the last edit is lost"]


class ListOpen(State):
    def reach(self, tree):
        tree.press("Record", "page tab")
        tree.press("Countdown", "combo box")
        tree.expect("None", "list item")


class MenuOpen(State):
    def reach(self, tree):
        tree.press("All commands", "push button")
        tree.press("Clip", "menu item")
        tree.expect("Change Speed…", "menu item")


class ContextMenuOpen(State):
    def reach(self, tree):
        x, y, width, height = tree.expect("Timeline", "list").where()
        xdotool("mousemove", x + width // 2, y + height // 2, "click", 3)
        tree.settled()


class DialogOpen(State):
    def reach(self, tree):
        tree.press("Export", "push button")
        tree.press("Custom", "radio button")
        tree.expect("Width in pixels", "spin button")


class SheetOpen(State):
    def reach(self, tree):
        key("F1")
        tree.expect("Search the shortcuts")


class FilesOpen(State):
    """Our dialog for files."""

    def reach(self, tree):
        tree.press("Library", "page tab")
        tree.press("Bring in", "push button")
        tree.expect("Name, or a path")


class InTheTrash(State):
    """A project is gone, and can be brought back for a moment."""

    def reach(self, tree):
        tree.press("Library", "page tab")
        tree.press("More for Tour", "push button")
        tree.press("Move to the trash", "menu item")
        tree.expect("“Tour” is in the trash")


class Exporting(State):
    """Two films wait to be made. Closing the window leaves them to be made; who asks the program to end does not wait."""

    lasts = 3
    count = 2

    def reach(self, tree):
        for _ in range(self.count):
            tree.press("Export", "push button")
            tree.press("Export the film", "push button")
            tree.expect_gone("Export the film")

    def faults(self, home, way):
        films = [file for file in home.path.rglob("*.mp4") if ".recproj" not in str(file)]
        broken = [file.name for file in films if length_of(file) < 5.5]
        memory = json.loads((home.path / "state/Tavaro/exports.json").read_text())["exports"]
        states = sorted(each["state"] for each in memory)
        faults = [f"half films: {broken}"] if broken else []
        if way is closed and (states != ["done"] * self.count or len(films) != self.count):
            faults.append(f"the window's exports are {states}, and {len(films)} films are there")
        if way is asked and (states.count("done") != len(films) or len(states) != self.count or
                             not set(states) <= {"done", "waiting", "interrupted"}):
            faults.append(f"the exports are {states}, and {len(films)} films are there")
        return faults


class CountingDown(State):
    countdown = None
    shown = 0

    def reach(self, tree):
        tree.press("Record", "page tab")
        tree.expect("screen, ")
        if self.countdown:
            tree.press("Countdown", "combo box")
            tree.press(self.countdown, "list item")
        tree.press("Record", "push button")

    def look(self, tree):
        self.shown = max([0, *[seconds_of(each.name) for each in tree.look() if each.role == "label"]])


class Recording(CountingDown):
    """A take that is under way is saved."""

    countdown = "None"

    def reach(self, tree):
        super().reach(tree)
        tree.expect("0:01", "label")

    def faults(self, home, way):
        takes = lengths_of(home, "Recording")
        if len(takes) != 1:
            return [f"there are {len(takes)} takes"]
        return [] if takes[0] >= self.shown - LATENESS else [f"of a take that showed {self.shown} s, {takes[0]:.2f} s are left"]


class Paused(Recording):
    def reach(self, tree):
        super().reach(tree)
        tree.press("Pause", "push button")


class Saving(Recording):
    """The take is ended already."""

    lasts = 0.3

    def reach(self, tree):
        super().reach(tree)
        self.look(tree)
        tree.press("Stop", "push button")

    def look(self, tree):
        self.shown = max(self.shown, 1)


STATES = [Playing, Dragging, Titled, InUse, ListOpen, MenuOpen, ContextMenuOpen, DialogOpen, SheetOpen, FilesOpen, InTheTrash,
          Exporting, CountingDown, Recording, Paused, Saving]


def length_of(film):
    """In seconds; 0 for what cannot be read."""
    said = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0", str(film)],
                          capture_output=True, text=True, check=False).stdout.strip()
    return float(said) if said else 0

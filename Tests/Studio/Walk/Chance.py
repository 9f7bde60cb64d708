"""Actions without a plan on an open project, through the tree, by key and by mouse; each can be taken back and done
again, to the last byte."""

import json
import shutil
import time

from Session import Fault, Home, Program, await_it, key, polished_project, xdotool
from Tree import PRESSED, Tree

PROJECT = "Tour"
# Not edits of the project: they leave its page or the program, or ask the desktop for something.
LEFT_ALONE = ("Close ", "Library", "Record", "Settings", "Undo", "Redo", "Quit", "Export", "Show in ", "Bring in", "Import",
              "Choose a file", "Save as", "Copy frame", "Tour")
KEYS = ["s", "q", "w", "i", "o", "x", "z", "t", "c", "r", "h", "m", "a", "b", "l", "n", "Delete", "space", "Left", "Right",
        "Up", "Down", "Home", "End", "Escape", "Tab", "shift+Tab", "Return", "ctrl+a", "ctrl+c", "ctrl+v", "ctrl+x",
        "ctrl+d", "ctrl+z", "ctrl+shift+z", "shift+Left", "shift+Right", "shift+Delete", "shift+t", "Menu", "Prior", "Next"]
TYPED = ["hello", "3.5", "-1", "zero", "ÄÖ", "100000"]
BATCH = 50  # actions between two looks at the way back


class Chance:
    def __init__(self, studio, fixtures, random):
        self.random, self.done = random, []
        self.home = Home("chance", {"com.tavaro.studio.firstTakeMade": True})
        self.project = self.home.movies / f"{PROJECT}.recproj"
        shutil.copytree(polished_project(studio, fixtures), self.project)
        self.program = Program(studio, self.home, self.project)
        self.tree = Tree(self.program)
        self.tree.expect("Timeline", "list")
        self.tree.expect("The film of ")
        self.told = 0
        self.normalise()
        self.before = self.document()

    def normalise(self):
        """One step and back, so that the file is as this version writes it."""
        self.tree.press("Add Title", "push button")
        await_it("the first step", lambda: self.next_step("Undo"))
        self.undo_all()

    def step(self):
        """One action; at the end of each batch the way back and forth."""
        self.come_home()
        act = self.random.choices([self.press, self.type_key, self.click, self.drag, self.write], [6, 5, 2, 3, 1])[0]
        act()
        if not self.program.is_running():
            raise Fault(f"the program ended after {self.done[-8:]}: {self.program.last_words()}")
        if new := self.program.complaints()[self.told:]:
            self.told += len(new)
            raise Fault(f"{new} after {self.done[-3:]}")
        self.count += 1
        if self.count % BATCH == 0:
            self.there_and_back()

    count = 0

    def note(self, text):
        self.done.append(text)

    def press(self):
        seen = [each for each in self.tree.look() if each.role in PRESSED and each.is_enabled
                and not each.name.startswith(LEFT_ALONE)]
        if not seen:
            return
        chosen = self.random.choice(seen)
        self.note(f"press {chosen}")
        self.tree.act(chosen)

    def type_key(self):
        name = self.random.choice(KEYS)
        self.note(f"key {name}")
        key(name)

    def write(self):
        text = self.random.choice(TYPED)
        self.note(f"type {text}")
        xdotool("type", "--", text)

    def point(self):
        """Anywhere on the project's page, more often on its timeline."""
        film = self.tree.find("Timeline", "list") if self.random.random() < 0.6 else self.tree.find("The film of ")
        if not film:
            return None
        x, y, width, height = film.where()
        # What is zoomed into may begin outside of the display.
        return max(x + self.random.randrange(2, max(3, width - 2)), 0), max(y + self.random.randrange(2, max(3, height - 2)), 0)

    def click(self):
        if at := self.point():
            button = self.random.choice([1, 1, 1, 3])
            self.note(f"click {button} at {at}")
            xdotool("mousemove", *at, "click", button)

    def drag(self):
        begin, end = self.point(), self.point()
        if not begin or not end:
            return
        self.note(f"drag from {begin} to {end}")
        middle = [(a + b) // 2 for a, b in zip(begin, end)]
        xdotool("mousemove", *begin, "mousedown", 1, "mousemove", *middle, "mousemove", *end, "mouseup", 1)

    def come_home(self):
        """Back to the project's page, out of menus and dialogs."""
        for _ in range(4):
            seen = self.tree.look()
            if any(each.name == "Timeline" and each.role == "list" for each in seen) and not any(each.is_modal for each in seen):
                return
            key("Escape")
        self.program.second_start(self.project)  # the window comes to the front, and shows it
        self.tree.expect("Timeline", "list")

    def there_and_back(self):
        """To the bottom of the undo list and to its top: both are as they were."""
        key("Escape")
        self.await_saved()
        after = self.document()
        steps = self.undo_all()
        if self.document() != self.before:
            raise Fault(f"{steps} steps undone are not the document as it was: {difference(self.before, self.document())}"
                        f", after {self.done[-BATCH:]}")
        self.walk_steps("Redo", steps)
        if self.document() != after:
            raise Fault(f"{steps} steps done again are not the document as it was: {difference(after, self.document())}"
                        f", after {self.done[-BATCH:]}")
        self.walk_steps("Undo", steps)  # so that the list never grows over what it keeps

    def next_step(self, way):
        """The button that takes back, or does again, what it names; nothing where there is no such step."""
        button = self.tree.expect(way, "push button")
        return button if button.name != way else None

    def undo_all(self):
        steps = 0
        while button := self.next_step("Undo"):
            self.tree.act(button)
            steps += 1
            if steps > 10 * BATCH:
                raise Fault("undo has no bottom")
        self.await_saved()
        return steps

    def walk_steps(self, name, count):
        for _ in range(count):
            button = self.next_step(name)
            if not button:
                raise Fault(f"of {count} steps, one cannot be gone by {name}")
            self.tree.act(button)
        self.await_saved()

    def await_saved(self):
        """Saves are made half a second after an edit."""
        file = self.project / "project.json"
        stamp, since = None, time.monotonic()
        end = since + 20
        while time.monotonic() - since < 1.2 and time.monotonic() < end:
            if (now := file.stat().st_mtime_ns) != stamp:
                stamp, since = now, time.monotonic()
            time.sleep(0.05)

    def document(self):
        """The bytes of the project, but for when it was saved."""
        text = (self.project / "project.json").read_text()
        document = json.loads(text)
        return text.replace(json.dumps(document.get("modifiedAt")), "")

    def abandon(self):
        self.program.kill()
        self.home.remove()

    def end(self):
        faults = self.program.end()
        self.home.remove()
        return faults


def difference(before, after):
    at = next((i for i, (a, b) in enumerate(zip(before, after)) if a != b), min(len(before), len(after)))
    return f"…{before[max(0, at - 60):at + 60]!r} became …{after[max(0, at - 60):at + 60]!r}"

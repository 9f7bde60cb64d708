"""The program killed at any moment of an edit or a take: the next start shows the last edit, or offers the take. What is
older than a second is never lost."""

import json
import shutil
import time

from Session import Fault, Home, Program, await_it, polished_project
from Tree import Tree

MOST_LOST = 1.0  # seconds
LATENESS = 0.35  # the shown time is of up to a third of a second ago, and a kill takes its time


class Killing:
    def __init__(self, studio, fixtures, random):
        self.studio, self.random = studio, random
        self.fixture = polished_project(studio, fixtures)
        self.count, self.lost = 0, {}

    def step(self):
        self.count += 1
        home = Home(f"killed-{self.count}", {"com.tavaro.studio.firstTakeMade": True})
        kind = self.take if self.count % 3 == 0 else self.edits
        try:
            kind(home)
        finally:
            home.remove()

    def edits(self, home):
        project = home.movies / "Tour.recproj"
        shutil.copytree(self.fixture, project)
        begun = titles_of(project)
        program = Program(self.studio, home, project)
        try:
            tree = Tree(program)
            button = await_it("the page", lambda: tree.find("The film of ") and (it := tree.find("Add Title")) and it.is_enabled and it)
            moments, end = [], time.monotonic() + self.random.uniform(0.1, 4)
            while time.monotonic() < end:
                tree.act(button)
                moments.append(time.monotonic())
                time.sleep(self.random.choice([0, 0.05, 0.3, 0.9]))
        finally:
            lived, killed = program.kill(), time.monotonic()
        if not lived:
            raise Fault(f"it ended by itself, after {len(moments)} titles: {program.last_words()}")
        expected = begun + sum(killed - moment > MOST_LOST for moment in moments)
        self.look_again(home, project, expected, begun + len(moments))

    def look_again(self, home, project, least, most):
        found = titles_of(project)
        if not least <= found <= most:
            raise Fault(f"killed after {most} titles, of which {least} were older than a second: {found} are left")
        program = Program(self.studio, home, project)
        try:
            tree = Tree(program)
            tree.expect("The film of Tour")
            tree.expect("Timeline", "list")
            if alert := tree.find("That did not work"):
                raise Fault(f"the next start says: {[each.name for each in tree.look() if each.window == alert.window]}")
            if faults := program.end():
                raise Fault("; ".join(faults))
        finally:
            program.kill()
        if titles_of(project) != found:
            raise Fault(f"the next start made {titles_of(project)} of {found} titles")

    def take(self, home):
        shown = self.killed_take(home)
        program = Program(self.studio, home)
        try:
            tree = Tree(program)
            made = await_it("the library", lambda: self.what_is_offered(tree, home, shown))
            if made == "nothing":
                return
            if made == "take":
                tree.press("Keep", "push button")
                await_it("the project of the take", lambda: lengths_of(home), 60)
            if faults := program.end():
                raise Fault("; ".join(faults))
        finally:
            program.kill()
        length = lengths_of(home)[0]
        if length < shown - MOST_LOST - LATENESS:
            raise Fault(f"of a take that showed {shown} s, {length:.2f} s are left")

    def killed_take(self, home):
        """What the recorder's bar showed last, in seconds; it is killed while it records or saves."""
        program, shown = Program(self.studio, home), 0
        try:
            tree = Tree(program)
            tree.press("Record", "page tab")
            tree.expect("screen, ")
            tree.press("Countdown", "combo box")
            tree.press("None", "list item")
            tree.press("Record", "push button")
            is_stopped = self.random.random() < 0.3
            end = time.monotonic() + self.random.uniform(0.2, 7)
            while time.monotonic() < end:
                shown = max([shown, *[seconds_of(each.name) for each in tree.look() if each.role == "label"]])
            if is_stopped:
                tree.press("Stop", "push button")
                time.sleep(self.random.uniform(0, 1))
        finally:
            lived = program.kill()
        if not lived:
            raise Fault(f"it ended by itself in a take of {shown} s{', which was stopped' * is_stopped}: {program.last_words()}")
        return shown

    def what_is_offered(self, tree, home, shown):
        """The unfinished take, or the project that it became before the kill."""
        if lengths_of(home):
            return "project"
        if tree.find("We found an unfinished recording"):
            return "take"
        return "nothing" if shown < MOST_LOST + LATENESS and tree.find("Your recordings will be here") else None

    def end(self):
        return []


def titles_of(project):
    return len(json.loads((project / "project.json").read_text())["overlays"])


def lengths_of(home, begin=""):
    found = []
    for file in home.movies.glob(f"{begin}*.recproj/project.json"):
        lengths = json.loads(file.read_text())["assetDurations"]
        found.append(max(lengths.values()))
    return found


def seconds_of(text):
    """Of "0:03", as the recorder's bar has it."""
    parts = text.split(":")
    return int(parts[0]) * 60 + int(parts[1]) if len(parts) == 2 and all(part.isdigit() for part in parts) else 0

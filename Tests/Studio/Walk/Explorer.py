"""Goes everywhere: presses each thing that can be pressed once, from the start window on, breadth first, and looks at
what comes of it. Nobody tells it which pages, menus and dialogs there are."""

import collections
import shutil

from Focus import focus_faults
from Session import Fault, Home, Program, await_it, make_empty_projects, polished_project
from Tree import PRESSED, USABLE, Tree

# Ends the program: there is nothing to look at behind it.
LEFT_OUT = {"Quit"}


class Place:
    """Somewhere in the program: which presses lead there from the start, and what is to be pressed there."""

    def __init__(self, way):
        self.way, self.waiting = way, None

    def __str__(self):
        return " › ".join(name for _, name in self.way) or "the start"


class Explorer:
    def __init__(self, studio, fixtures):
        self.studio, self.fixtures = studio, fixtures
        self.places = collections.deque([Place(())])
        self.met, self.pressed, self.homes = set(), set(), 0
        self.home = self.program = self.tree = self.at = None

    def step(self):
        """Presses one thing more, somewhere. The faults that it shows; nothing where all has been seen."""
        while self.places:
            place = self.places[0]
            if place.waiting is None:
                return self.arrive(place)
            while place.waiting:
                wanted = place.waiting.popleft()
                if wanted not in self.pressed:
                    self.pressed.add(wanted)
                    return self.press(place, wanted)
            self.places.popleft()
        return None

    def arrive(self, place):
        """For the first time: looks around, and goes through it by the keyboard."""
        self.go_to(place)
        seen = self.tree.settled()
        self.met |= {each.key() for each in seen}
        keys = dict.fromkeys(each.key() for each in within_reach(seen))
        place.waiting = collections.deque(key for key in keys if key[1] and not key[1].split()[0].strip("…") in LEFT_OUT)
        faults = self.tree.faults(place, seen) + focus_faults(self.tree, place)
        self.at = None  # Tab may have opened or changed something
        return faults + self.complaints()

    def press(self, place, wanted):
        try:
            return self.pressed_at(place, wanted)
        except Fault as fault:
            self.at = None
            raise Fault(f"{Place(place.way + (wanted,))}: {fault}") from None

    def pressed_at(self, place, wanted):
        self.go_to(place)
        before = self.tree.look()
        target = next((each for each in before if each.key() == wanted), None)
        if target is None:
            return []  # what another press did, which the tree did not show
        self.tree.act(target)
        after = self.tree.settled()
        reached = Place(place.way + (wanted,))
        if names_of(after) == names_of(before):
            return self.complaints()
        self.at = None
        if is_for_files(after):
            return self.complaints()
        new = {each.key() for each in within_reach(after)} - self.met
        if new:
            self.met |= new
            self.places.append(reached)
        return self.tree.faults(reached, after) + self.complaints()

    def go_to(self, place):
        if self.at is place and self.program.is_running():
            return
        self.leave()
        self.homes += 1
        self.home = Home(f"home-{self.homes}", {"com.tavaro.studio.firstTakeMade": True})
        make_empty_projects(self.home.movies, ["Onboarding"])
        shutil.copytree(polished_project(self.studio, self.fixtures), self.home.movies / "Tour.recproj")
        self.program = Program(self.studio, self.home)
        self.tree = Tree(self.program)
        self.tree.expect("Tour, ")
        for wanted in place.way:
            self.tree.settled()
            self.act(wanted)
        self.tree.settled()
        self.at = place

    def act(self, wanted):
        target = await_it(f"a {wanted[0]} “{wanted[1]}”",
                          lambda: next((each for each in self.tree.look() if each.key() == wanted and each.is_enabled), None))
        self.tree.act(target)

    def complaints(self):
        new = self.program.complaints()[self.told:] if self.program else []
        self.told += len(new)
        return new

    told = 0

    def leave(self):
        """The faults of its end are told by nobody but the last: a program that hangs is killed."""
        if self.program:
            self.program.kill()
            self.home.remove()
        self.told, self.program = 0, None

    def end(self):
        self.at = None
        if not self.program:
            return []
        faults = self.program.end()
        self.leave()
        return faults


def within_reach(seen):
    """What can be pressed now: behind a modal dialog nothing can."""
    modal = [each for each in seen if each.is_modal]
    windows = {each.path for each in modal}
    reach = [each for each in seen if each.role in PRESSED and each.is_enabled]
    return [each for each in reach if each.window.path in windows] or reach if modal else reach


def is_for_files(seen):
    """Our dialog for files: what is in the folders is not ours to be pressed."""
    return any(each.name == "Name, or a path" for each in seen)


def names_of(seen):
    return [each.key() for each in seen if each.role in USABLE]

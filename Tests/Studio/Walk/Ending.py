"""The program asked to end, or its window closed, whatever it is doing: it ends by itself, without a crash or a complaint
of Qt, no half film has a name, and what was edited, recorded or asked for is there afterwards."""

import shutil
import subprocess
import time

from Session import Fault, Home, Program, polished_project, xdotool
from States import STATES, asked, closed
from Tree import Tree

LONGEST = 90  # seconds, in which the films of these projects are exported beside anything else


class Ending:
    def __init__(self, studio, fixtures, random):
        self.studio, self.random, self.count = studio, random, 0
        self.fixture = polished_project(studio, fixtures)
        self.waiting = []

    def step(self):
        """One state and one way to end it; each pair once, then all again in another order."""
        if not self.waiting:
            self.waiting = [(state, way) for state in STATES for way in (asked, closed)]
            self.random.shuffle(self.waiting)
        state, way = self.waiting.pop()
        self.count += 1
        home = Home(f"ended-{self.count}", {"com.tavaro.studio.firstTakeMade": True})
        try:
            self.end_in(state(), way, home)
        except (Fault, subprocess.CalledProcessError) as fault:
            raise Fault(f"{state.__name__}, {way.__name__}: {fault}") from None
        finally:
            home.remove()

    def end_in(self, state, way, home):
        project = home.movies / "Tour.recproj"
        shutil.copytree(self.fixture, project)
        program = Program(self.studio, home, project)
        try:
            tree = Tree(program)
            tree.expect("The film of Tour")
            tree.expect("Timeline", "list")
            state.reach(tree)
            time.sleep(self.random.choice([0, 0, 0.05, 0.3, 1]) * state.lasts)
            state.look(tree)
            way(program)
            state.then(tree, way)
            faults = await_end(program)
        finally:
            program.kill()
            xdotool("mouseup", 1)  # nobody else lets go of what was dragged
        faults += state.faults(home, way)
        if faults:
            raise Fault("; ".join(faults))

    def end(self):
        return []


def await_end(program):
    """What was wrong with it."""
    try:
        code = program.process.wait(LONGEST)
    except subprocess.TimeoutExpired:
        raise Fault(f"it has not ended after {LONGEST} s") from None
    return program.complaints() + ([f"it ended with {code}: {program.last_words()}"] if code else [])

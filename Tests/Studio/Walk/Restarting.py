"""The program started again at any moment of its end: somebody who starts it gets a window, be it of the one that was about
to end or of a new one, and no two run in the end."""

import shutil
import subprocess
import time

from Session import Fault, Home, PATIENCE, Program, await_it, polished_project
from States import Exporting, Recording, State, Titled, asked, closed, window_of
from Tree import Tree

MOMENTS = [each / 25 for each in range(16)] + [1, 2, 4]  # seconds after it was to end


class Idle(State):
    def reach(self, tree):
        pass


STATES = [Idle, Titled, Recording, Exporting]


class Restarting:
    def __init__(self, studio, fixtures, random):
        self.studio, self.random, self.count = studio, random, 0
        self.fixture = polished_project(studio, fixtures)
        self.waiting = []

    def step(self):
        """One state, one way to end it and one moment; each of them once, then all again in another order."""
        if not self.waiting:
            self.waiting = [(state, way, moment) for state in STATES for way in (asked, closed) for moment in MOMENTS]
            self.random.shuffle(self.waiting)
        state, way, moment = self.waiting.pop()
        self.count += 1
        home = Home(f"again-{self.count}", {"com.tavaro.studio.firstTakeMade": True})
        try:
            self.start_again(state(), way, moment + self.random.random() / 25, home)
        except (Fault, subprocess.CalledProcessError) as fault:
            raise Fault(f"{state.__name__}, {way.__name__}, again after {moment:.2f} s: {fault}") from None
        finally:
            home.remove()

    def start_again(self, state, way, moment, home):
        project = home.movies / "Tour.recproj"
        shutil.copytree(self.fixture, project)
        programs = [Program(self.studio, home, project)]
        try:
            tree = Tree(programs[0])
            tree.expect("Timeline", "list")
            state.reach(tree)
            way(programs[0])
            time.sleep(moment)
            programs.append(Program(self.studio, home))
            left = await_it("one program with a window", lambda: the_one_left(programs))
            time.sleep(1)
            if the_one_left(programs) is not left:
                raise Fault("the window that was there is gone again")
            faults = state.faults(home, way) if state.__class__ is not Exporting else []
            if left is not programs[0] or way is asked:
                faults += state_of_end(programs[0])
            faults += left.end()
        finally:
            for program in programs:
                program.kill()
        if faults:
            raise Fault("; ".join(faults))

    def end(self):
        return []


def is_seen(program):
    window = window_of(program)
    shown = subprocess.run(["xdotool", "search", "--all", "--onlyvisible", "--pid", str(program.process.pid), "--name", "Tavaro$"],
                           check=False, capture_output=True, text=True).stdout.split()
    return window is not None and window in shown


def the_one_left(programs):
    """The only one that runs, once its window shows; none while another runs."""
    running = [program for program in programs if program.is_running()]
    if not running:
        raise Fault("none runs: " + programs[-1].last_words())
    return running[0] if len(running) == 1 and is_seen(running[0]) else None


def state_of_end(program):
    code = program.process.wait(PATIENCE)
    return [f"it ended with {code}: {program.last_words()}"] if code else []

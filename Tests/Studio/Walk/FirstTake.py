"""From the first start to a polished take that plays: by names and actions of the tree, or by the keyboard alone."""

import time

from Session import Fault, Home, Program, await_it, key, xdotool
from Tree import Tree

LIMIT = 60  # seconds


def by_tree(tree):
    tree.press("Make a recording", "push button")
    tree.expect("Step 1 of 3")
    tree.press("screen, ")
    for step in (2, 3):
        tree.press("Next", "push button")
        tree.expect(f"Step {step} of 3")
    tree.press("Film ", "push button")
    work(tree)
    tree.expect("The film of Recording", patience=40)
    tree.expect("Timeline", "list")
    if not tree.find("Pause (Space)"):
        tree.press("Play (Space)", "push button")


def by_keys(tree):
    def go(name, role="push button", press="space"):
        tree.tab_to(name, role)
        key(press)

    tree.expect("Make a recording")
    go("Make a recording", press="Return")
    tree.expect("Step 1 of 3")
    go("screen, ", None)
    for step in (2, 3):
        go("Next")
        tree.expect(f"Step {step} of 3")
    go("Film ")
    work(tree)
    tree.expect("The film of Recording", patience=40)
    tree.expect("Timeline", "list")
    if not tree.find("Pause (Space)"):
        go("Play (Space)")


def work(tree):
    """Something to polish: what is filmed is clicked."""
    tree.expect("0:01", "label")
    xdotool("mousemove", 700, 450, "click", 1)


def first_take(studio, way):
    """Seconds from the start of the program to the take that plays."""
    home = Home(f"first-{way.__name__}")
    began = time.monotonic()
    program = Program(studio, home)
    try:
        tree = Tree(program)
        way(tree)
        tree.expect("Pause (Space)")
        moment = await_it("the time", lambda: time_of(tree))
        await_it("the film to play", lambda: time_of(tree) not in (None, moment))
        seconds = time.monotonic() - began
        faults = program.end()
    finally:
        program.kill()
    polished = list(home.movies.glob("*.recproj/project.json"))
    if len(polished) != 1:
        faults.append(f"there are {len(polished)} takes")
    elif '"isAutomatic":true' not in polished[0].read_text().replace(" ", ""):
        faults.append("the take is not polished")
    if seconds > LIMIT:
        faults.append(f"it took {seconds:.0f} s")
    if faults:
        raise Fault("; ".join(faults))
    return seconds


def time_of(tree):
    label = tree.find("Time ")
    return label.name if label else None

"""The way of the keyboard through a page: Tab goes from one thing that has a name to the next and comes round, and
Shift+Tab goes back."""

import time

from Session import key, window_of

GOES_BACK = 6  # steps that are tried
MOST_STOPS = 150


def focus_faults(tree, page):
    tree.settled()
    if not window_of(tree.program, "--onlyvisible"):
        return []  # minimized for a take: the keys are the recorded program's
    order, faults = [], []
    while len(order) < MOST_STOPS:
        stop = press_and_see(tree, "Tab", order[-1] if order else None)
        if stop is None:
            faults.append(f"{page}: Tab leads from {order[-1] if order else 'the start'} to nothing that the tree has")
            break
        if not stop.name:
            faults.append(f"{page}: Tab leads to {stop} without a name")
        if any(stop.path == each.path for each in order):
            if stop.path != order[0].path:
                faults.append(f"{page}: Tab leads from {order[-1]} back to {stop}, and not round")
            break
        order.append(stop)
    return faults + [f"{page}: {fault}" for fault in faults_back(tree, order)]


def press_and_see(tree, name, before):
    """What has the keyboard then; the same as before only where the key moves nothing."""
    key(name)
    end, focus = time.monotonic() + 1.5, None
    while time.monotonic() < end:
        focus = tree.focused()
        if focus and (before is None or focus.path != before.path):
            return focus
    return focus


def faults_back(tree, order):
    """From the first stop, where Tab came back to, or from wherever it got stuck."""
    if len(order) < 2:
        return []
    now = tree.focused()
    at = next((i for i, each in enumerate(order) if now and each.path == now.path), None)
    if at is None:
        return []
    for _ in range(min(GOES_BACK, len(order) - 1)):
        stop = press_and_see(tree, "shift+Tab", order[at])
        at = (at - 1) % len(order)
        if stop is None or stop.path != order[at].path:
            return [f"Shift+Tab leads to {stop}, not back to {order[at]}"]
    return []

"""The accessibility tree of the program: what shows, what is pressed, what has the keyboard, and what is wrong with it."""

import time
import warnings

from Session import Fault, await_it, key, without_numbers

warnings.simplefilter("ignore", DeprecationWarning)  # of names that older bindings have only
PRESSED = {"push button", "toggle button", "check box", "radio button", "combo box", "page tab", "menu item", "list item", "link"}
TYPED_INTO = {"text", "entry", "slider", "spin button"}
USABLE = PRESSED | TYPED_INTO
SMALLEST = 16  # pixels of what can be used


class Seen:
    """A node as it was when it was looked at."""

    def __init__(self, tree, node, window, outer=None):
        atspi = tree.atspi
        self.node, self.window, self.outer = node, window, outer  # outer: what it is in
        self.role, self.name, self.path = node.get_role_name(), node.get_name() or "", node.path
        if self.role == "password text":
            self.name = self.name or node.get_description()  # Qt 6.4 tells no name of these, the placeholder it does
        states = node.get_state_set()
        self.is_enabled = self.role not in USABLE or not node.get_description()  # Qt has no state for it
        self.has_focus = states.contains(atspi.StateType.FOCUSED)
        self.is_modal = states.contains(atspi.StateType.MODAL)
        self.place = None

    def key(self):
        """Names what it is for: lists of things of one kind have one, and how old something is does not matter."""
        return self.role, without_numbers(self.name.split(",")[0] if self.role == "list item" else self.name)

    def where(self):
        if self.place is None:
            place = self.node.get_extents(0)  # of the screen
            self.place = place.x, place.y, place.width, place.height
        return self.place

    def is_scrolled_away(self):
        """Qt has it as showing also where a pane that it is in shows nothing of it."""
        x, y, width, height = self.where()
        pane = self.outer
        while pane:
            left, top, room, rows = pane.where()
            if pane.role == "panel" and room > 0 and rows > 0 and (
                    x >= left + room or x + width <= left or y >= top + rows or y + height <= top):
                return True
            pane = pane.outer
        return False

    def __str__(self):
        return f"a {self.role} “{self.name}”"


class Tree:
    def __init__(self, program):
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, GLib
        self.atspi, self.failure, self.program = Atspi, GLib.Error, program
        self.application = await_it("the program in the tree", self.look_for_program)

    def look_for_program(self):
        if not self.program.is_running():
            raise self.ended()
        desktop = self.atspi.get_desktop(0)
        desktop.clear_cache()
        for i in range(desktop.get_child_count()):
            try:
                child = desktop.get_child_at_index(i)
                if child and child.get_process_id() == self.program.process.pid and child.get_child_count() > 0:
                    return child
            except self.failure:
                continue
        return None

    def look(self):
        """Everything that shows now, in the order of the tree."""
        try:
            return self.look_now()
        except self.failure:
            # The bus knows of its end before the one that started it does.
            await_it("the program, which has left the tree, to end", lambda: not self.program.is_running())
            raise self.ended() from None

    def ended(self):
        return Fault(f"the program ended by itself with {self.program.process.returncode}: {self.program.last_words()}")

    def look_now(self):
        if not self.program.is_running():
            raise self.ended()
        self.application.clear_cache()
        showing, found, waiting = self.atspi.StateType.SHOWING, [], []
        for i in reversed(range(self.application.get_child_count())):
            if window := self.child(self.application, i):
                waiting.append((window, window, None))
        while waiting:
            node, window, outer = waiting.pop()
            try:
                if not node.get_state_set().contains(showing):
                    continue
                seen = Seen(self, node, window, outer)
                found.append(seen)
                waiting.extend((child, window, seen) for i in reversed(range(node.get_child_count()))
                               if (child := self.child(node, i)))
            except self.failure:
                continue  # it has gone meanwhile
        return found

    def child(self, node, i):
        try:
            return node.get_child_at_index(i)
        except self.failure:
            return None

    def settled(self, patience=4):
        """What shows when nothing changes any more."""
        before, end = None, time.monotonic() + patience
        while True:
            seen = self.look()
            keys = [(each.role, each.name) for each in seen]
            if keys == before or time.monotonic() > end:
                return seen
            before = keys
            time.sleep(0.08)

    def find(self, name, role=None):
        return next((each for each in self.look() if each.name.startswith(name) and role in (None, each.role)), None)

    def expect(self, name, role=None, patience=None):
        return await_it(f"“{name}”", lambda: self.find(name, role), *[patience] if patience else [])

    def expect_gone(self, name):
        await_it(f"“{name}” to go", lambda: not self.find(name))

    def press(self, name, role=None):
        """As soon as it is there and can be pressed."""
        self.act(await_it(f"“{name}” to be pressed", lambda: (seen := self.find(name, role)) and seen.is_enabled and seen))

    def act(self, seen, action="press"):
        node = seen.node
        try:
            for i in range(node.get_n_actions()):
                if node.get_action_name(i).lower() == action:
                    node.do_action(i)
                    return
        except self.failure:
            if not self.program.is_running():
                raise Fault(f"{seen} ends the program: {self.program.last_words()}") from None
            return  # it has gone meanwhile
        raise Fault(f"{seen} has no action {action}")

    def actions(self, seen):
        return {seen.node.get_action_name(i).lower() for i in range(seen.node.get_n_actions())}

    def focused(self, seen=None):
        return next((each for each in reversed(seen or self.look()) if each.has_focus and each.role not in WINDOWS), None)

    def tab_to(self, name, role=None, most=90):
        """Goes there by the keyboard alone."""
        passed = []
        for _ in range(most):
            key("Tab")
            focus = await_it("something to have the keyboard", self.focused)
            if focus.name.startswith(name) and role in (None, focus.role):
                return focus
            passed.append(focus.name)
        raise Fault(f"Tab does not lead to “{name}”, but to {passed}")

    def faults(self, page, seen=None):
        """What cannot be used by who does not see it. What is still on its way to its place is looked at again."""
        found = self.faults_now(page, seen or self.settled())
        if not found:
            return []
        time.sleep(0.3)
        again = self.faults_now(page, self.settled())
        return [fault for fault in found if fault in again]

    def faults_now(self, page, seen):
        found = []
        for each in seen:
            if each.role in USABLE:
                try:
                    found += [f"{page}: {each} {fault}" for fault in self.faults_of(each)]
                except self.failure:
                    continue  # it has gone meanwhile
        return found

    def faults_of(self, seen):
        if seen.is_scrolled_away():
            return
        x, y, width, height = seen.where()
        bounds = seen.window.get_extents(0)
        if not seen.name:
            yield f"at {x}, {y} has no name"
        if x < bounds.x or x + width > bounds.x + bounds.width or y < bounds.y:
            yield f"at {x}, {y}, {width} wide, is outside of the window"
        if width < SMALLEST or height < SMALLEST:
            yield f"is {width}×{height}"
        if seen.role in PRESSED and seen.is_enabled and not self.actions(seen) & {"press", "toggle"}:
            yield "cannot be pressed"


WINDOWS = {"frame", "window", "filler", "application", "dialog", "layered pane", "panel"}

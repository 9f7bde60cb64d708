"""What is tried on an application. Each action is a method that raises Failed; what has no such thing lacks the method."""

import json
import time
from collections import namedtuple

from stage import Failed

ACTIONS = ["open", "open again", "list", "by title", "by id", "by point", "submenu", "dialog", "check box", "text", "wheel",
           "row", "far element", "picture"]

Element = namedtuple("Element", "id role title frame enabled visible")


def spelled(title):
    """Some releases write three points."""
    return title.replace("...", "…")


def center(frame):
    x, y, width, height = frame
    return x + width / 2, y + height / 2


class Application:
    """`needs` is the file that is there where it is installed; `name` is what it is asked for by."""

    needs = name = ""
    fewest_elements = 8

    def __init__(self, stage):
        self.stage = stage

    def prepare(self):
        pass

    # What is there

    def elements(self, query=""):
        """Those of its windows, what is seen first."""
        said = self.stage.ui("elements", self.name, "--json", "--limit", 1000, *(["--query", query] if query else []))
        return [Element(one["id"], one["role"], one["title"],
                        tuple(round(one["frame"][side]) for side in ("x", "y", "width", "height")), one["enabled"],
                        one["visible"]) for one in json.loads(said)["elements"]]

    def all(self, title, role=""):
        return [each for each in self.elements(title) if spelled(each.title) == spelled(title) and role in ("", each.role)]

    def one(self, title, role=""):
        for element in self.all(title, role):
            return element
        raise Failed(f"there is no “{title}”")

    def largest(self, *roles):
        found = [each for each in self.elements() if each.visible and each.role in roles]
        if not found:
            raise Failed(f"nothing has the role {roles[0]}")
        return max(found, key=lambda each: each.frame[2] * each.frame[3])

    def titles(self):
        """Of the windows of the display, but for the curtain."""
        return [window["title"] for window in self.stage.windows() if window["title"] != "Curtain"]

    def front(self):
        return self.stage.windows()[0]["title"]

    # What is done

    def click(self, title, role="", hold=0.4, **more):
        words = [word for name, value in more.items() for word in (f"--{name}", value)]
        return self.stage.ui("click", "--app", self.name, "--title", title, "--glide", 0.3, "--hold", hold, *words,
                             *(["--role", role] if role else []))

    def path(self, *titles):
        """Through menus."""
        for title in titles:
            self.click(title)

    def click_element(self, element, hold=0.4):
        return self.stage.ui("click", "--app", self.name, "--element", element.id, "--glide", 0.3, "--hold", hold)

    def click_point(self, frame, hold=0.4):
        x, y = center(frame)
        return self.stage.ui("click", "--x", x, "--y", y, "--glide", 0.3, "--hold", hold)

    def keys(self, text="", *shortcuts):
        self.stage.ui("keys", *(["--text", text] if text else []), *shortcuts, "--hold", 0.4)

    def copied(self):
        self.keys("", "cmd+a", "cmd+c")
        return self.stage.clipboard()

    def bring(self, title, role="", over=None, down=300):
        """Scrolls until the element shows; `over` is a point, for lists that tell only of what shows."""
        for _ in range(25):
            found = self.all(title, role)
            if found and found[0].visible:
                return found[0]
            if not found and not over:
                break
            where = ["--x", over[0], "--y", over[1]] if over else ["--element", found[0].id]
            self.stage.ui("scroll", "--app", self.name, *where, "--down", down, "--glide", 0.2, "--hold", 0.3)
        raise Failed(f"“{title}” does not come into view")

    # What came of it

    def expect(self, is_so, what):
        for _ in range(30):
            if is_so():
                return
            time.sleep(0.1)
        raise Failed(what() if callable(what) else what)

    def expect_shown(self, title, role=""):
        self.expect(lambda: any(each.visible for each in self.all(title, role)), f"“{title}” did not appear")

    def expect_gone(self, title, role=""):
        self.expect(lambda: not self.all(title, role), f"“{title}” is still there")

    def expect_window(self, part):
        self.expect(lambda: any(part in title for title in self.titles()), lambda: f"“{part}” is in none of {self.titles()}")

    def expect_no_window(self, part):
        self.expect(lambda: not any(part in title for title in self.titles()), f"the window “{part}” is still there")

    def expect_text(self, file, is_right):
        def text():
            with open(file, encoding="utf-8", newline="") as lines:
                return lines.read()
        self.expect(lambda: is_right(text()), lambda: f"the file reads {text()[:60]!r}")

    def expect_copied(self, text):
        copied = self.copied()
        if copied != text:
            raise Failed(f"it reads {copied[:60]!r}")

    def toggles(self, title, role="CheckBox", part=None):
        """Three clicks: after the second it looks otherwise than after the first, after the third the same."""
        seen = []
        for _ in range(3):
            self.click(title, role, hold=1)
            seen.append(self.stage.picture().part(*(part or (lambda frame: frame))(self.one(title, role).frame)))
        changed, stayed = different(seen[0], seen[1]), different(seen[0], seen[2])
        if changed < 0.01 or stayed > changed / 4:
            raise Failed(f"{changed:.3f} of the box changes with a click, {stayed:.3f} with two")

    def selects(self, title, role="Cell"):
        """Clicked, a row looks otherwise, and its neighbour does not."""
        x, y, width, height = self.one(title, role).frame

        def parts():
            picture = self.stage.picture()
            return [picture.part(x, y + way * height, width, height) for way in (0, 1)]
        before = parts()
        self.click(title, role, hold=0.8)
        after = parts()
        if different(before[0], after[0]) < 0.2 or different(before[1], after[1]) > 0.2:
            raise Failed(f"“{title}” was not selected")

    def shows_in(self, frame, action):
        """That part of the display looks otherwise afterwards."""
        before = self.stage.picture().part(*frame)
        action()
        self.expect(lambda: different(before, self.stage.picture().part(*frame)) > 0.002, "nothing changed where it should")

    def scrolls(self, x, y):
        """What is below moves up by the pixels that are reported, which are about those that were asked for."""
        x, y, reach = int(x), int(y), 40
        before = self.stage.picture()
        said = self.stage.ui("scroll", "--x", x, "--y", y, "--down", 200, "--glide", 0.3, "--hold", 0.8)
        went = int(said.split()[1])
        if not 120 <= went <= 280:  # an editor's wheel goes by lines, faster the longer it turns
            raise Failed(said.strip())
        shown, now = before.part(x - 60, y, 120, reach), self.stage.picture()
        if len(set(b"".join(shown))) < 8:
            raise Failed("there is nothing to see it by")
        if different(shown, now.part(x - 60, y - went, 120, reach)) > 0.02:
            raise Failed(f"it did not go {went} pixels")

    # Actions of every application

    def open(self):
        self.stage.ui("open", self.name)
        if not self.titles():
            raise Failed("it has no window")

    def open_again(self):
        """From behind another window; no second one comes."""
        before = len(self.titles())
        self.stage.ui("open", "Curtain")
        if self.front() != "Curtain":
            raise Failed("no other window came before it")
        self.stage.ui("open", self.name)
        if self.front() == "Curtain" or len(self.titles()) != before:
            raise Failed(f"in front is {self.front()}, open are {self.titles()}")

    def list(self):
        seen = [each for each in self.elements() if each.visible]
        if len(seen) < self.fewest_elements:
            raise Failed(f"{len(seen)} elements are listed")

    def picture(self):
        """The window's pixels are those of its place on the display; behind another window, its own still."""
        frame = json.loads(self.stage.ui("open", self.name, "--json"))["frame"]
        x, y, width, height = (int(frame[side]) for side in ("x", "y", "width", "height"))
        window, display = self.stage.picture("--app", self.name), self.stage.picture()
        # Of an odd side, a recording and a picture leave the last pixel out.
        if (window.width, window.height) != (width // 2 * 2, height // 2 * 2):
            raise Failed(f"{window.width} × {window.height} pixels of {width} × {height}")
        if different(window.part(0, 0, window.width, window.height), display.part(x, y, window.width, window.height)) > 0.005:
            raise Failed("the picture is not what the display shows")
        self.stage.ui("open", "Curtain")
        covered = self.stage.picture("--app", self.name)
        # Without the keyboard, carets and title bars look otherwise.
        if different(window.part(0, 0, window.width, window.height), covered.part(0, 0, covered.width, covered.height)) > 0.2:
            raise Failed("covered, the picture is of something else")


def different(one, other):
    """The share of bytes that differ."""
    if [len(row) for row in one] != [len(row) for row in other]:
        return 1
    return sum(a != b for rows in zip(one, other) for a, b in zip(*rows)) / max(1, sum(map(len, one)))

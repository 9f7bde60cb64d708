"""Applications of Qt 5 and Qt 6."""

from application import Application, center


class FeatherPad(Application):
    needs, name = "/usr/bin/featherpad", "FeatherPad"

    def prepare(self):
        self.file = self.stage.write("texts/words.txt", "".join(f"line {i}, {i * 7919 % 1009}\n" for i in range(300)))
        self.stage.override("featherpad.desktop", f"featherpad {self.file}")

    def tabs(self):
        return sorted((each for each in self.elements() if each.role == "Tab"), key=lambda each: each.frame)

    def by_title(self):
        self.click("New")
        self.expect(lambda: len(self.tabs()) == 2, "there is no second tab")

    def by_id(self):
        self.click_element(self.tabs()[0])
        self.expect_window("words.txt")

    def by_point(self):
        self.click_point(self.tabs()[1].frame)
        self.expect_window("Untitled")

    def submenu(self):
        self.path("Edit", "Paste Date and Time")
        self.expect_shown("*Untitled")

    def dialog(self):
        self.path("Options", "Preferences")
        self.expect_window("Preferences")
        self.click("Close", "Button")
        self.expect_no_window("Preferences")

    def check_box(self):
        if not self.all("Match Case (F5)"):
            self.keys("", "cmd+f")
        self.toggles("Match Case (F5)")

    def text(self):
        self.click_element(self.largest("TextArea"))
        self.keys("", "cmd+a")
        self.keys("Grüße, 世界!")
        self.expect_copied("Grüße, 世界!")

    def wheel(self):
        self.click_element(self.tabs()[0])
        x, y, width, height = self.largest("TextArea").frame
        self.scrolls(x + 80, y + height - 60)


class KCalc(Application):
    needs, name = "/usr/bin/kcalc", "KCalc"

    def by_title(self):
        for title in ("7", "+", "8", "="):
            self.click(title, "Button")
        self.expect_copied("15")


    def by_id(self):
        self.click_element(self.one("C", "Button"))
        self.click_element(self.one("4", "Button"))
        self.expect_copied("4")

    def by_point(self):
        self.click_point(self.one("9", "Button").frame)
        self.expect_copied("49")

    def submenu(self):
        self.path("Settings", "Science Mode")
        self.expect_shown("sin")
        self.path("Settings", "Simple Mode")
        self.expect_gone("sin")

    def configure(self):
        self.path("Settings", "Configure KCalc…")
        self.expect_window("Configure")

    def dialog(self):
        self.configure()
        self.click("Cancel", "Button")
        self.expect_no_window("Configure")

    def check_box(self):
        self.configure()
        self.toggles("Beep on error")
        self.click("Cancel", "Button")

    def row(self):
        self.configure()
        self.selects("Constants", "Row")
        self.click("Cancel", "Button")

    def text(self):
        self.click_element(self.one("C", "Button"))
        self.keys("12*12\n")
        self.expect_copied("144")


class FocusWriter(Application):
    needs, name = "/usr/bin/focuswriter", "FocusWriter"

    def by_title(self):
        self.click("New", "Button")
        self.expect_shown("(Untitled 2)", "Tab")

    def by_id(self):
        self.click_element(self.one("(Untitled 1)", "Tab"))
        self.expect_window("(Untitled 1)")

    def by_point(self):
        self.click_point(self.one("(Untitled 2)", "Tab").frame)
        self.expect_window("(Untitled 2)")

    def text(self):
        self.click_element(self.largest("TextArea"))
        self.keys("Grüße, 世界!")
        self.expect_copied("Grüße, 世界!")

    def preferences(self, tab):
        self.path("Settings", "Preferences…")
        self.click(tab, "Tab")

    def check_box(self):
        self.preferences("General")
        self.toggles("Smooth fonts")
        self.click("Cancel", "Button")

    def dialog(self):
        self.preferences("General")
        self.expect_window("Preferences")
        self.click("Cancel", "Button")
        self.expect_no_window("Preferences")

    def row(self):
        self.preferences("Shortcuts")
        self.selects("Align Center")
        self.click("Cancel", "Button")

    def far_element(self):
        self.preferences("Shortcuts")
        self.bring("Undo", "Cell", over=center(self.one("Align Center").frame), down=100)
        self.selects("Undo")
        self.click("Cancel", "Button")


APPLICATIONS = [FeatherPad, KCalc, FocusWriter]

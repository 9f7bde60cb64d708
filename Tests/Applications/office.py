"""LibreOffice."""

from application import Application


class Office(Application):
    def open(self):
        super().open()
        self.expect_shown("OK", "Button")  # the tip of the day of a new user
        self.click("OK", "Button")
        self.expect_gone("OK", "Button")

    def by_point(self):
        self.click_point(self.one("Edit", "MenuItem").frame)
        self.expect_shown("Select All")
        self.keys("", "esc")
        self.expect_gone("Select All")


class Calc(Office):
    needs, name = "/usr/bin/localc", "LibreOffice Calc"

    def by_title(self):
        self.click("Format", "MenuItem")
        self.expect_shown("Cells…")
        self.keys("", "esc")

    def by_id(self):
        self.click_element(self.one("C3", "Cell"))
        self.keys("by id\n")
        self.click_element(self.one("C3", "Cell"))
        self.keys("", "cmd+c")
        self.expect(lambda: self.stage.clipboard() == "by id", self.stage.clipboard)

    def submenu(self):
        self.path("Sheet", "Insert Rows", "Rows Above")

    def dialog(self):
        self.path("Tools", "Goal Seek…")
        self.expect_window("Goal Seek")
        self.click("Cancel", "Button")
        self.expect_no_window("Goal Seek")

    def text(self):
        self.click("B4", "Cell")
        self.keys("Grüße, 世界!\n")
        self.keys("", "up", "cmd+c")
        self.expect(lambda: self.stage.clipboard() == "Grüße, 世界!", self.stage.clipboard)


class Writer(Office):
    needs, name = "/usr/bin/lowriter", "LibreOffice Writer"

    def by_title(self):
        self.click("Format", "MenuItem")
        self.expect_shown("Paragraph…")
        self.keys("", "esc")

    def dialog(self):
        self.path("Tools", "Word Count…")
        self.expect_window("Word Count")
        self.click("Close", "Button")
        self.expect_no_window("Word Count")

    def text(self):
        self.click_element(self.largest("TextArea"))
        self.keys("Grüße, 世界!")
        self.expect_copied("Grüße, 世界!")


APPLICATIONS = [Calc, Writer]

"""Applications of GTK 3 and GTK 4."""

from application import Application


class TextFile(Application):
    """An editor that opens a text file, with others in the folder beside it."""

    entry = command = ""

    def prepare(self):
        self.file = self.stage.write("texts/words.txt", "".join(f"line {i}, {i * 7919 % 1009}\n" for i in range(300)))
        for i in range(60):
            self.stage.write(f"texts/note {i:02}.txt", f"note {i}\n")
        self.stage.override(self.entry, f"{self.command} {self.file}")

    def text(self):
        self.click_element(self.largest("TextArea"))
        self.keys("", "cmd+home")
        self.keys("Grüße, 世界! ")
        self.keys("", "cmd+s")
        self.expect_text(self.file, lambda text: text.startswith("Grüße, 世界! line 0"))

    def wheel(self):
        x, y, width, height = self.largest("TextArea").frame
        self.scrolls(x + 80, y + height - 60)


class FileChooserOfGTK3(TextFile):
    """Its rows are files; two of them are opened."""

    def choose(self):
        self.keys("", "cmd+o")
        self.expect_shown("Open", "Button")

    def row(self):
        self.choose()
        self.click_element(self.bring("note 58.txt"))
        self.click("Open", "Button")
        self.expect_window("note 58.txt")

    def far_element(self):
        self.choose()
        self.click_element(self.bring("note 02.txt", down=-300))
        self.click("Open", "Button")
        self.expect_window("note 02.txt")


class Geany(FileChooserOfGTK3):
    needs, name = "/usr/bin/geany", "Geany"
    entry = "geany.desktop"

    def prepare(self):
        self.stage.write("geany/geany.conf",
                         "[geany]\nsidebar_visible=false\nmsgwindow_visible=false\npref_main_load_session=false\n")
        self.command = f"geany -i -s -c {self.stage.path('geany')}"
        super().prepare()

    def by_title(self):
        self.click("Color Chooser", "Button")
        self.expect_shown("Cancel")
        self.click("Cancel")
        self.expect_gone("Cancel")

    def by_id(self):
        self.click_element(self.one("New", "Button"))
        self.expect_window("untitled")
        self.keys("", "cmd+w")

    def by_point(self):
        self.click_point(self.one("File", "MenuItem").frame)
        self.expect_shown("Save As…")
        self.keys("", "esc")
        self.expect_gone("Save As…")

    def submenu(self):
        self.path("Document", "Set Line Endings", "Convert and Set to CR/LF (Windows)")
        self.keys("", "cmd+s")
        self.expect_text(self.file, lambda text: "\r\nline 1, 856\r\n" in text)

    def dialog(self):
        self.path("Tools", "Word Count")
        self.expect_window("Word Count")
        self.click("Close", "Button")
        self.expect_no_window("Word Count")

    def check_box(self):
        self.path("Edit", "Preferences")
        self.toggles("Load files from the last session")
        self.click("Cancel")


class Gedit(TextFile):
    needs, name = "/usr/bin/gedit", "gedit"
    entry, command = "org.gnome.gedit.desktop", "gedit"

    def by_title(self):
        self.click("New")
        self.expect_window("Untitled Document 1")
        self.keys("", "cmd+w")
        self.expect_window("words.txt")

    def by_id(self):
        self.click_element([each for each in self.all("Menu") if each.visible][0])
        self.expect_shown("Save As…")
        self.keys("", "esc")
        self.expect_gone("Save As…")

    def submenu(self):
        self.modes()
        self.click("Cancel", "Button")
        self.expect_no_window("Highlight Mode")

    def dialog(self):
        self.keys("", "cmd+h")
        self.expect_window("Find and Replace")
        self.click("Close", "Button")
        self.expect_no_window("Find and Replace")

    def check_box(self):
        self.path("Menu", "Preferences")
        self.toggles("Display line numbers")
        self.keys("", "esc")


    def modes(self):
        self.path("Menu", "View", "Highlight Mode…")
        self.expect_window("Highlight Mode")

    def choose_mode(self, bring):
        """Its name is in the status bar, which tells of nothing."""
        x, y, width, height = self.largest("TextArea").frame

        def choose():
            self.modes()
            self.click_element(bring())
            self.click("Select", "Button")
        self.shows_in((x, y + height + 2, width, 24), choose)

    def row(self):
        self.choose_mode(lambda: self.one("ASP", "Row"))

    def far_element(self):
        self.choose_mode(lambda: self.bring("Python", "Row", down=500))


class Mousepad(FileChooserOfGTK3):
    needs, name = "/usr/bin/mousepad", "Mousepad"
    entry, command = "org.xfce.mousepad.desktop", "mousepad"
    fewest_elements = 7

    def by_title(self):
        self.path("File", "New")
        self.expect_window("Untitled")
        self.keys("", "cmd+w")

    def by_point(self):
        self.click_point(self.one("Edit", "MenuItem").frame)
        self.expect_shown("Select All")
        self.keys("", "esc")

    def submenu(self):
        self.path("Document", "Line Ending", "DOS / Windows (CR LF)")
        self.keys("", "cmd+s")
        self.expect_text(self.file, lambda text: "\r\nline 1, 856\r\n" in text)

    def dialog(self):
        self.path("Help", "About")
        self.expect_window("About")
        self.click("Close", "Button")
        self.expect_no_window("About")

    def check_box(self):
        self.path("Edit", "Preferences...")
        self.toggles("Wrap long lines")
        self.keys("", "esc")


class TextEditor(TextFile):
    needs, name = "/usr/share/applications/org.gnome.TextEditor.desktop", "Text Editor"
    entry, command = "org.gnome.TextEditor.desktop", "gnome-text-editor"

    def by_title(self):
        self.click("New tab (Ctrl+T)")
        self.expect_window("New Document")
        self.keys("", "cmd+w")
        self.expect_window("words.txt")

    def by_id(self):
        self.click_element(self.one("View", "Button"))
        self.expect_shown("Line Numbers")
        self.keys("", "esc")
        self.expect_gone("Line Numbers")

    def by_point(self):
        self.click_point(self.one("Menu", "Button").frame)
        self.expect_shown("New Window")
        self.keys("", "esc")

    def submenu(self):
        self.path("View", "Line Numbers")
        self.keys("", "esc")

    def dialog(self):
        self.click_element(self.largest("TextArea"))
        self.keys("x")
        self.keys("", "cmd+w")
        self.click("Cancel", "Button")
        self.expect_gone("Cancel", "Button")
        self.keys("", "cmd+z")

    def preferences(self):
        self.path("Menu", "Preferences")
        self.expect_window("Preferences")

    def check_box(self):
        self.preferences()
        self.toggles("Display Grid Pattern")
        self.keys("", "esc")
        self.expect_no_window("Preferences")

    def types(self):
        self.path("View", "Document Type")
        self.expect_shown("ABNF", "Row")

    def row(self):
        self.types()
        self.click("C++", "Row")
        self.keys("", "esc")

    def far_element(self):
        self.types()
        self.click_element(self.bring("Python", "Row", down=500))
        self.keys("", "esc")


class Calculator(Application):
    needs, name = "/usr/bin/gnome-calculator", "Calculator"

    def by_title(self):
        for title in ("7", "+", "8", "="):
            self.click(title, "Button")
        self.expect_copied("15")

    def by_id(self):
        self.click_element(self.one("Clear Display [Escape]"))
        self.click_element(self.one("4", "Button"))
        self.expect_copied("4")

    def by_point(self):
        self.click_point(self.one("9", "Button").frame)
        self.expect_copied("9")

    def submenu(self):
        self.path("Basic", "Programming")
        self.expect_shown("Programming", "Button")
        self.path("Programming", "Basic")
        self.expect_shown("Basic", "Button")

    def dialog(self):
        self.path("Primary menu", "Preferences")
        self.expect_window("Preferences")
        self.click("Close", "Button")
        self.expect_no_window("Preferences")

    def text(self):
        self.click_element(self.largest("TextArea"))
        self.keys("", "esc")
        self.keys("12*12\n")
        self.expect_copied("144")


APPLICATIONS = [Geany, Gedit, Mousepad, TextEditor, Calculator]

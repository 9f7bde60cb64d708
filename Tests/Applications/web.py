"""Browsers, with a page that has widgets of its own."""

import os

from application import Application

PAGE = """<!doctype html><title>page</title><style>
body { font: 18px sans-serif } div.w { width: 9em; padding: 1em; background: #cde } [role=menu] { display: none; position: absolute; background: #eee }
:focus-within > [role=menu] { display: block } [role=option]:focus { background: #8af }</style>
<button onclick="say('button')">Press me</button> <a href="#x" onclick="say('link')">Follow me</a>
<label><input type=checkbox onchange="say('check ' + this.checked)">Tick me</label>
<input aria-label="Write here" oninput="say('text ' + this.value)"> <input type=password aria-label="Secret">
<div class=w role=button tabindex=0 aria-label="Own widget" onclick="say('widget')">Own widget</div>
<div role=menubar><div role=menuitem tabindex=0 aria-label="Own menu">Own menu<div role=menu>
<div role=menuitem tabindex=0 aria-label="More">More<div role=menu>
<div role=menuitem tabindex=0 aria-label="Deepest" onclick="say('deepest')">Deepest</div></div></div></div></div></div>
<div role=listbox>%s</div>
<button onclick="document.querySelector('dialog').showModal()">Ask me</button>
<dialog><button onclick="say('yes'); this.parentElement.close()">Yes, do</button></dialog>
<ul>%s</ul><button onclick="say('far button')">Far below</button>
<script>function say(text) { document.title = text }</script>
""" % ("".join(f"<div role=option tabindex=0 onclick=\"say('row {i}')\">Choice {i}</div>" for i in range(5)),
       "".join(f"<li>Line {i} of many" for i in range(120)))


class Browser(Application):
    entry = command = ""

    def prepare(self):
        self.stage.override(self.entry, f"{self.command} {self.stage.write('page.html', PAGE)}")

    def by_title(self):
        self.expect_shown("Press me")
        self.click("Press me")
        self.expect_window("button")

    def by_id(self):
        self.click_element(self.one("Own widget"))
        self.expect_window("widget")

    def by_point(self):
        self.click_point(self.one("Follow me").frame)
        self.expect_window("link")

    def submenu(self):
        self.path("Own menu", "More", "Deepest")
        self.expect_window("deepest")

    def dialog(self):
        self.click("Ask me")
        self.click("Yes, do")
        self.expect_window("yes")

    def check_box(self):
        self.click("Tick me")
        self.expect_window("check true")
        self.click("Tick me")
        self.expect_window("check false")

    def text(self):
        self.click("Write here")
        self.keys("Grüße, 世界!")
        self.expect_window("text Grüße, 世界!")

    def row(self):
        self.click("Choice 3")
        self.expect_window("row 3")

    def wheel(self):
        self.scrolls(60 + self.one("Press me").frame[0], 850)
        self.keys("", "cmd+home")

    def far_element(self):
        self.click_element(self.bring("Far below", down=1500))
        self.expect_window("far button")


class Chromium(Browser):
    needs, name = "/usr/bin/chromium", "Chromium"
    entry = "chromium.desktop"

    def prepare(self):
        root = "--no-sandbox" if os.geteuid() == 0 else ""
        self.command = f"chromium {root} --no-first-run --password-store=basic"
        super().prepare()


class Firefox(Browser):
    needs, name = "/usr/bin/firefox-esr", "Firefox ESR"
    entry, command = "firefox-esr.desktop", "firefox-esr"


APPLICATIONS = [Chromium, Firefox]

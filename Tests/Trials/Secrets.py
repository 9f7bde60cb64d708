"""Passwords typed into real programs while a take is recorded: its log has what is typed beside them and none of their
letters."""

import json
import os
import shutil
import signal
import subprocess
import time

from Display import VirtualDisplay
from Stage import Fault, check, read

FORM = os.path.join(os.path.dirname(os.path.abspath(__file__)), "Form.py")
PAGE = "<title>Form</title><input autofocus><input type=password>"
PROMPT = "stty -echo; printf 'Password: '; read it; stty echo; read it"

# The open letters and those of the password have none in common.
OPEN, SECRET = "abcdef", "qrstuv"


class Secrets:
    def __init__(self, stage):
        self.stage = stage
        self.display = VirtualDisplay(stage, moves=False)
        stage.environment.pop("NO_AT_BRIDGE", None)
        stage.environment.pop("AT_SPI_BUS_ADDRESS", None)
        self.running = []
        self.keep_out_portals()
        bus = self.launch("dbus-daemon", "--session", "--nofork", "--print-address=1", stdout=subprocess.PIPE)
        stage.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().decode().strip()
        self.launch("openbox")
        self.window_manager = len(self.running)
        page = stage.path("form.html")
        with open(page, "w", encoding="utf-8") as file:
            file.write(PAGE)
        ways = {kind: (["/usr/bin/python3", FORM, kind], self.form) for kind in ("gtk3", "gtk4", "qt5")}
        ways["zenity"] = (["zenity", "--password"], self.prompt)
        ways["terminal"] = (["xterm", "-e", "sh", "-c", PROMPT], self.terminal)
        ways["page"] = (["chromium", "--no-sandbox", "--no-first-run", "--force-renderer-accessibility",
                         "--user-data-dir=" + stage.path("browser"), "file://" + page], self.form)
        self.ways = {name: way for name, way in ways.items() if shutil.which(way[0][0])}
        print("secrets: " + ", ".join(self.ways), flush=True)

    def keep_out_portals(self):
        """What programs would start of an installed desktop portal has no part in this, and leaves a mount behind."""
        folder = os.path.join(self.stage.environment["XDG_RUNTIME_DIR"], "dbus-1", "services")
        os.makedirs(folder)
        for name in ("org.freedesktop.portal.Desktop", "org.freedesktop.portal.Documents"):
            with open(os.path.join(folder, name + ".service"), "w", encoding="utf-8") as file:
                file.write(f"[D-BUS Service]\nName={name}\nExec=/bin/false\n")

    def launch(self, *command, **options):
        process = subprocess.Popen(command, env={**self.stage.environment, "ACCESSIBILITY_ENABLED": "1", "GDK_BACKEND": "x11"},
                                   stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True,
                                   **{"stdout": subprocess.DEVNULL, **options})
        self.running.append(process)
        return process

    def round(self, number):
        name = list(self.ways)[number % len(self.ways)]
        command, work = self.ways[name]
        made = self.stage.path("take.recproj")
        shutil.rmtree(made, ignore_errors=True)
        gap = self.stage.random.choice([20, 60, 150])
        take = None
        # Every other time the program is there before the take.
        if number % 2 == 0:
            take = self.begin_take(made)
        program = self.launch(*command)
        try:
            self.await_window(program)
            take = take or self.begin_take(made)
            work(gap)
            time.sleep(0.5)
            take.send_signal(signal.SIGINT)
            _, words = take.communicate(timeout=30)
            check(take.returncode == 0, f"{name}: the take ends with {take.returncode}: {words.decode()[-300:]}")
        finally:
            self.end_from(self.window_manager)
            if take and take.poll() is None:
                take.kill()
        keys = [key for stroke in json.loads(read(os.path.join(made, "project.json")))["metadata"]["keystrokes"]
                for key in stroke["keys"]]
        leaked = [key for key in keys if key in SECRET]
        check(not leaked, f"{name}, {gap} ms between keys: {leaked} of the password are in the log {keys}")
        check(all(key in keys for key in OPEN[:3]), f"{name}, {gap} ms: the log lacks open keys: {keys}")

    def begin_take(self, made):
        take = self.stage.start("record", "--no-polish", "-o", made)
        recordings = os.path.join(self.stage.home, "data", "Tavaro", "Recordings")
        self.until(lambda: any(name.startswith("segment") for _, _, names in os.walk(recordings) for name in names),
                   "the take does not begin")
        time.sleep(0.5)
        return take

    def await_window(self, program):
        self.until(lambda: subprocess.run(["xdotool", "getactivewindow"], env=self.stage.environment, check=False,
                                          capture_output=True).returncode == 0, "no window comes")
        time.sleep(3 if "chromium" in program.args[0] else 1.5)

    def until(self, holds, words):
        end = time.monotonic() + 20
        while not holds():
            if time.monotonic() > end:
                raise Fault(words)
            time.sleep(0.1)

    def type(self, text, gap):
        subprocess.run(["xdotool", "type", "--delay", str(gap), text], env=self.stage.environment, check=True)

    def press(self, key):
        subprocess.run(["xdotool", "key", key], env=self.stage.environment, check=True)

    def form(self, gap):
        """Goes from field to field as quickly as the fingers do."""
        self.type(OPEN, gap)
        self.press("Tab")
        self.type(SECRET, gap)
        self.press("shift+Tab")
        time.sleep(0.3)
        self.type(OPEN[:3], gap)

    def prompt(self, gap):
        """Whoever answers a prompt goes on in another program."""
        self.type(SECRET, gap)
        self.press("Return")
        self.launch("/usr/bin/python3", FORM, "gtk3")
        time.sleep(2)
        self.type(OPEN, gap)

    def terminal(self, gap):
        self.type(SECRET, gap)
        self.press("Return")
        time.sleep(0.3)
        self.type(OPEN, gap)

    def end_from(self, first):
        for process in self.running[first:]:
            try:
                os.killpg(process.pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
            process.wait()
        del self.running[first:]

    def end(self):
        self.end_from(0)
        self.display.end()

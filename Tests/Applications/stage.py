"""A display with a window manager, one bus and a user's folders, for applications to be worked on through `tavaro ui`."""

import json
import os
import re
import shutil
import signal
import subprocess
import tempfile


class Failed(Exception):
    pass


class Stage:
    """All of it goes with the object."""

    def __init__(self, bin_folder):
        self.bin = os.path.abspath(bin_folder)
        self.folder = tempfile.mkdtemp(prefix="tavaro-applications.")
        self.started = []
        self.environment = {name: value for name, value in os.environ.items()
                            if not name.startswith("XDG_") and name not in ("WAYLAND_DISPLAY", "NO_AT_BRIDGE")}
        self.environment |= {"HOME": self.path("home"), "XDG_RUNTIME_DIR": self.path("runtime"), "LANG": "C.UTF-8",
                             "GTK_THEME": "Adwaita"}
        os.makedirs(self.path("home/.local/share/applications"))
        os.makedirs(self.path("runtime"), 0o700)
        # What an installed portal would do is none of an application's work, and leaves a mount behind.
        for portal in ("Desktop", "Documents"):
            self.write(f"runtime/dbus-1/services/org.freedesktop.portal.{portal}.service",
                       f"[D-BUS Service]\nName=org.freedesktop.portal.{portal}\nExec=/bin/false\n")
        self.environment["DISPLAY"] = ":" + self.announced(
            ["Xvfb", "-displayfd", "FD", "-screen", "0", "1600x1000x24", "-nolisten", "tcp", "-noreset"])
        self.start(["openbox"])
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.announced(
            ["dbus-daemon", "--session", "--nofork", "--print-address=FD"])

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, name, text):
        file = self.path(name)
        os.makedirs(os.path.dirname(file), exist_ok=True)
        with open(file, "w", encoding="utf-8") as out:
            out.write(text)
        return file

    def start(self, command, **more):
        process = subprocess.Popen(command, env=self.environment, start_new_session=True, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, **more)
        self.started.append(process)

    def announced(self, command):
        """Starts what writes a line to the descriptor FD of its command, once it can be used; that line."""
        reading, writing = os.pipe()
        self.start([word.replace("FD", str(writing)) for word in command], pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as lines:
            return lines.readline().strip()

    def entry(self, name, title, command):
        """A desktop entry of the user's own."""
        self.write(f"home/.local/share/applications/{name}",
                   f"[Desktop Entry]\nType=Application\nName={title}\nExec={command}\n")

    def override(self, name, command):
        """A desktop entry of the user's that starts an installed application as this check needs it."""
        text = open(f"/usr/share/applications/{name}", encoding="utf-8").read()
        text = re.sub(r"^(DBusActivatable|TryExec)=.*\n", "", text, flags=re.M)
        text = re.sub(r"^Exec=.*", lambda _: f"Exec={command}", text, count=1, flags=re.M)
        self.write(f"home/.local/share/applications/{name}", text)

    def tavaro(self, *words):
        done = subprocess.run([f"{self.bin}/tavaro", *map(str, words)], env=self.environment, text=True,
                              capture_output=True, timeout=120)
        if done.returncode != 0:
            raise Failed(done.stderr.strip())
        return done.stdout

    def ui(self, *words):
        return self.tavaro("ui", *words)

    def windows(self):
        """Those of the desktop, the front one first."""
        return json.loads(self.tavaro("sources", "--json"))["windows"]

    def clipboard(self):
        script = ("import gi; gi.require_version('Gtk', '3.0'); from gi.repository import Gtk, Gdk; "
                  "print(Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD).wait_for_text())")
        return subprocess.run(["/usr/bin/python3", "-c", script], env=self.environment, text=True, capture_output=True,
                              timeout=20).stdout.strip()

    def picture(self, *words):
        """Of a window or the display, in full size."""
        file = self.path("picture.png")
        self.ui("screenshot", "-o", file, "--overwrite", "--max-width", 3840, *words)
        return Picture(file)

    def end(self):
        for process in reversed(self.started):
            try:
                os.killpg(process.pid, signal.SIGTERM)
            except ProcessLookupError:
                pass
            process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


class Picture:
    def __init__(self, file):
        raw = subprocess.run(["ffmpeg", "-v", "error", "-i", file, "-f", "image2pipe", "-c:v", "ppm", "-"], check=True,
                             capture_output=True).stdout
        head, size, _, self.pixels = raw.split(b"\n", 3)
        assert head == b"P6", "three bytes a pixel"
        self.width, self.height = map(int, size.split())

    def part(self, x, y, width, height):
        return [self.pixels[3 * (line * self.width + x):3 * (line * self.width + x + width)]
                for line in range(y, min(y + height, self.height))]

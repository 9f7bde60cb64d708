"""A desktop of its own for tavaro-studio: a display, a window manager, a bus, folders; and the program on it."""

import json
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SKIPPED = 77
PATIENCE = 20  # seconds for what is to happen
RENDERERS = {"software": {"QT_QUICK_BACKEND": "software"}, "opengl": {"LIBGL_ALWAYS_SOFTWARE": "1"}}


class Fault(Exception):
    """What the program did that it must not do."""


def begin(renderer):
    """Starts this script again with a session, a bus and a display of its own, unless it is there already."""
    if "WALK" in os.environ:
        return
    missing = [name for name in ["Xvfb", "openbox", "dbus-run-session", "xdotool"] if not shutil.which(name)]
    try:
        import gi
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError):
        missing.append("gir1.2-atspi-2.0")
    if missing:
        print("not installed:", *missing)
        sys.exit(SKIPPED)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # so that nothing is left behind
    with tempfile.TemporaryDirectory(prefix="tavaro-walk-", ignore_cleanup_errors=True) as folder:
        sys.exit(run_inside(Path(folder), renderer))


def run_inside(folder, renderer):
    environment = {key: value for key, value in os.environ.items()
                   if not key.startswith(("XDG_", "DBUS_", "WAYLAND_", "QT_", "GTK_", "PULSE_")) and key != "AT_SPI_BUS_ADDRESS"}
    (folder / "runtime").mkdir(mode=0o700)
    environment.update(HOME=str(folder), WALK=str(folder), XDG_RUNTIME_DIR=str(folder / "runtime"),
                       QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_QPA_PLATFORM="xcb", **RENDERERS[renderer])
    # Nothing here needs a portal, which leaves mounts behind.
    services = folder / "services"
    services.mkdir()
    for name in ["org.freedesktop.portal.Desktop", "org.freedesktop.portal.Documents"]:
        (services / f"{name}.service").write_text(f"[D-BUS Service]\nName={name}\nExec=/bin/false\n")
    bus = folder / "bus.conf"
    bus.write_text(f"<busconfig><servicedir>{services}</servicedir>"
                   "<include>/usr/share/dbus-1/session.conf</include></busconfig>")
    ends, given = os.pipe()
    display = subprocess.Popen(["Xvfb", "-displayfd", str(given), "-screen", "0", "1400x900x24", "-nolisten", "tcp"],
                               pass_fds=[given], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(given)
    session = None
    try:
        environment["DISPLAY"] = ":" + os.read(ends, 16).decode().strip()
        manager = subprocess.Popen(["openbox"], env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        session = subprocess.Popen(["dbus-run-session", f"--config-file={bus}", "--", sys.executable, *sys.argv], env=environment)
        code = session.wait()
        manager.kill()
        manager.wait()
        return code
    finally:
        if session and session.poll() is None:
            session.terminate()
        display.kill()
        display.wait()


def await_it(what, is_so, patience=PATIENCE):
    end = time.monotonic() + patience
    while time.monotonic() < end:
        if result := is_so():
            return result
        time.sleep(0.02)
    raise Fault(f"waited in vain for {what}")


def xdotool(*words):
    subprocess.run(["xdotool", *map(str, words)], check=True, stderr=subprocess.DEVNULL)


def key(name):
    xdotool("key", "--clearmodifiers", name)


def window_of(program, *which):
    """Its main window; with "--onlyvisible", where it is not minimized."""
    found = subprocess.run(["xdotool", "search", "--all", *which, "--pid", str(program.process.pid), "--name", "Tavaro$"],
                           check=False, capture_output=True, text=True).stdout.split()
    return found[0] if found else None


class Home:
    """Folders of one user of the program, below the session's."""

    def __init__(self, name, preferences=None):
        self.path = Path(os.environ["WALK"]) / name
        self.movies = self.path / "Movies/Tavaro"
        for part in ["data", "config/Tavaro", "cache", "state"]:
            (self.path / part).mkdir(mode=0o700, parents=True, exist_ok=True)
        if preferences:
            self.preferences_file().write_text(json.dumps(preferences))

    def preferences_file(self):
        return self.path / "config/Tavaro/preferences.json"

    def preferences(self):
        file = self.preferences_file()
        return json.loads(file.read_text()) if file.exists() else {}

    def environment(self):
        folders = {f"XDG_{name.upper()}_HOME": str(self.path / name) for name in ["data", "config", "cache", "state"]}
        return {**os.environ, **folders, "HOME": str(self.path)}

    def log(self):
        file = self.path / "state/Tavaro/tavaro.log"
        return file.read_text(errors="replace").splitlines() if file.exists() else []

    def remove(self):
        shutil.rmtree(self.path, ignore_errors=True)


class Program:
    """tavaro-studio, running in a home; it gets no sound server, so that all machines are alike."""

    def __init__(self, file, home, *files):
        self.file, self.home = file, home
        self.said = open(home.path / "said", "ab")
        self.process = subprocess.Popen([file, *map(str, files)], env=home.environment(), stdin=subprocess.DEVNULL,
                                        stdout=self.said, stderr=self.said)

    def second_start(self, *files):
        subprocess.run([self.file, *map(str, files)], env=self.home.environment(), check=True, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def is_running(self):
        return self.process.poll() is None

    def kill(self):
        """Also where it has ended. Whether it lived until then."""
        lived = self.is_running()
        self.process.kill()
        self.process.wait()
        self.said.close()
        return lived

    def end(self):
        """Asks it to end; what it did wrong while it ran."""
        faults = []
        if self.is_running():
            self.process.send_signal(signal.SIGTERM)
        try:
            code = self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            faults.append(f"it did not end within {PATIENCE} s of being asked to")
            code = 0
        self.kill()
        if code:
            faults.append(f"it ended with {code}: {self.last_words()}")
        return faults + self.complaints()

    def complaints(self):
        """Of Qt, in the log of this home."""
        return [line for line in self.home.log() if "Qt:" in line]

    def last_words(self):
        return (self.home.path / "said").read_text(errors="replace")[-2000:]


def polished_project(studio, folder):
    """A small project with a film, zooms, captions and clicks; it is made once."""
    project = folder / "Tour.recproj"
    if project.exists():
        return project
    movie, log, words = (folder / name for name in ["movie.mp4", "log.json", "script.txt"])
    folder.mkdir(parents=True, exist_ok=True)
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=s=320x180:r=30:d=6", "-f", "lavfi", "-i",
                    "sine=440:d=6", "-c:v", "libx264", "-preset", "ultrafast", "-c:a", "aac", str(movie)], check=True,
                   stdin=subprocess.DEVNULL)
    log.write_text(json.dumps({
        "clicks": [{"t": 2.1, "position": {"x": 0.31, "y": 0.62}}, {"t": 4, "position": {"x": 0.7, "y": 0.3}}],
        "keystrokes": [{"t": 3.0, "keys": ["⌘", "S"], "isShortcut": True}],
        "cursorSamples": [{"t": at / 20, "position": {"x": 0.5 + at / 400, "y": 0.5}} for at in range(100)]}))
    words.write_text("Here is the page. It saves by itself. That is all.")
    tavaro = Path(studio).parent / "tavaro"
    for words_of in [["import", movie, "--events", log, "-o", project], ["polish", project],
                     ["captions", project, "--from-script", words]]:
        subprocess.run([tavaro, *map(str, words_of)], check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                       stderr=subprocess.PIPE)
    return project


def make_empty_projects(folder, names):
    for name in names:
        package = folder / f"{name}.recproj"
        (package / "assets").mkdir(parents=True)
        (package / "project.json").write_text(json.dumps({"name": name}))


def without_numbers(text):
    return re.sub(r"[0-9]+", "#", text)

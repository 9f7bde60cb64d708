"""Processes killed at any instant: what had a name is complete, old or new, and what they left goes away by itself."""

import json
import os
import shutil
import time
import zipfile

from Display import VirtualDisplay
from Stage import Fault, check, leftovers, read


class Saving:
    """An edit killed while it saves leaves the old or the new document and a complete backup."""

    def __init__(self, stage):
        self.stage = stage
        self.project = stage.project()
        self.cuts = 0
        self.seconds = stage.seconds_of("edit", self.project, "set", "name=round 0")
        self.name = "round 0"

    def round(self, number):
        wanted = f"round {number}"
        self.stage.run_and_kill(self.stage.random.uniform(0, self.seconds * 1.3),
                                "edit", self.project, "set", f"name={wanted}")
        name = json.loads(read(os.path.join(self.project, "project.json")))["name"]
        check(name in (self.name, wanted), f"the document is of {name!r}, neither {self.name!r} nor {wanted!r}")
        json.loads(read(os.path.join(self.project, "project.previous.json")))
        self.name = name

    def end(self):
        self.stage.run("edit", self.project, "set", "name=the end")
        left = leftovers(self.project)
        check(not left, f"the next save leaves {left}")


class Making:
    """A command killed while it makes a file or a project leaves nothing under its name, or all of it; the next one
    removes what is left."""

    def __init__(self, stage):
        self.stage = stage
        self.project = stage.project()
        self.archive = stage.path("whole.zip")
        stage.run("archive", self.project, "-o", self.archive)
        stage.ffmpeg("-i", stage.movie(), "-f", "lavfi", "-i", "anoisesrc=d=6", "-map", 0, "-map", 1, "-c:v", "copy",
                     "-c:a", "pcm_s16le", stage.path("large.mov"))
        self.ways = {
            "import": (["import", stage.path("large.mov"), "-o"], "made.recproj", self.is_project),
            "archive": (["archive", self.project, "-o"], "made.zip", self.is_archive),
            "restore": (["restore", self.archive, "-o"], "restored", self.is_restored),
            "export": (["export", self.project, "--size", "320x180", "-o"], "made.mp4", self.is_film),
            "frame": (["frame", self.project, "--at", "1", "-o"], "made.png", self.is_picture),
            "captions": (["captions", self.project, "--json", "-o"], "made.srt", os.path.isfile),
        }
        self.seconds = {}

    def round(self, number):
        name = sorted(self.ways)[number % len(self.ways)]
        arguments, made, is_whole = self.ways[name]
        folder = self.stage.path("out")
        os.makedirs(folder, exist_ok=True)
        target = os.path.join(folder, made)
        if name not in self.seconds:
            self.seconds[name] = self.stage.seconds_of(*arguments, target)
        self.remove(target)
        self.stage.run_and_kill(self.stage.random.uniform(0, self.seconds[name] * 1.1), *arguments, target)
        check(not os.path.exists(target) or is_whole(target), f"{name}: killed, and {made} is not whole")
        self.remove(target)
        self.stage.run(*arguments, target)
        check(is_whole(target), f"{name}: after a kill {made} is not whole")
        left = leftovers(folder) + leftovers(self.project)
        check(not left, f"{name}: the next one leaves {left}")

    def end(self):
        pass

    @staticmethod
    def remove(path):
        if os.path.isdir(path):
            shutil.rmtree(path)
        elif os.path.exists(path):
            os.remove(path)

    def is_project(self, path):
        document = self.stage.document(path)
        return all(os.path.exists(os.path.join(path, "assets", name)) for name in document["assetDurations"])

    def is_restored(self, path):
        return all(self.is_project(os.path.join(path, name)) for name in os.listdir(path) if not name.startswith("."))

    def is_film(self, path):
        self.stage.ffmpeg("-i", path, "-f", "null", "-")
        return True

    @staticmethod
    def is_archive(path):
        with zipfile.ZipFile(path) as archive:
            return archive.testzip() is None

    @staticmethod
    def is_picture(path):
        return read(path)[-12:] == b"\0\0\0\0IEND\xaeB`\x82"


class Recording:
    """A recorder killed at any instant loses its last second at most. Needs a display: Xvfb is started."""

    def __init__(self, stage):
        self.stage = stage
        self.display = VirtualDisplay(stage)

    def round(self, _):
        stage = self.stage
        seconds = stage.random.uniform(2, 5)
        take = stage.start("record", "--no-polish", "-o", stage.path("take.recproj"))
        began = self.first_frame_time(take)
        time.sleep(seconds)
        take.kill()
        lived = time.monotonic() - began
        take.communicate()
        made = stage.path("recovered.recproj")
        shutil.rmtree(made, ignore_errors=True)
        stage.run("recover", "last", "--no-polish", "-o", made)
        length = max(stage.document(made)["assetDurations"].values())
        check(length > lived - 1.05, f"killed after {lived:.2f} s of film, {length:.2f} s are left")
        check(json.loads(stage.run("recover", "--json").output) == [], "the take is still unfinished after its recovery")

    def first_frame_time(self, take):
        recordings = os.path.join(self.stage.home, "data", "Tavaro", "Recordings")
        until = time.monotonic() + 20
        while time.monotonic() < until and take.poll() is None:
            for folder, _, files in os.walk(recordings):
                if any(name.startswith("segment") and os.path.getsize(os.path.join(folder, name)) > 0 for name in files):
                    return time.monotonic()
            time.sleep(0.01)
        take.kill()
        raise Fault("the take did not start: " + take.communicate()[1].decode(errors="replace"))

    def end(self):
        self.display.end()

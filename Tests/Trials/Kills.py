"""Processes killed at any instant: what had a name is complete, old or new, and what they left goes away by itself."""

import json
import os
import shutil
import signal
import time
import zipfile

from Stage import check, leftovers, read
from Takes import Desk, note_most, print_most


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
    """A recorder killed at any instant loses its last second at most, of the picture, the sounds and the log; what there
    is comes back by what a user is told. It is killed in the take, while it begins, and while it ends."""

    def __init__(self, stage):
        self.stage = stage
        self.desk = Desk(stage)
        self.take, self.made = stage.path("take.recproj"), stage.path("recovered.recproj")
        self.recordings = os.path.join(stage.home, "data", "Tavaro", "Recordings")
        self.lost = {}

    def round(self, number):
        for project in (self.take, self.made):
            shutil.rmtree(project, ignore_errors=True)
        moments = {0: self.killed_at_its_begin, 1: self.killed_at_its_end}
        moments.get(number % 5, self.killed_in_the_take)()
        check(json.loads(self.stage.run("recover", "--json").output) == [], "the take is still unfinished afterwards")

    def killed_in_the_take(self):
        process = self.stage.start(*self.desk.arguments(self.take))
        self.desk.await_film(process, self.recordings)
        time.sleep(self.stage.random.uniform(0.5, 12))
        self.judge_recovered(self.kill(process))

    def killed_at_its_begin(self):
        process = self.stage.start(*self.desk.arguments(self.take))
        time.sleep(self.stage.random.uniform(0, 2))
        self.kill(process)
        if json.loads(self.stage.run("recover", "--json").output):
            self.stage.run("recover", "last", "--no-polish", "-o", self.made)

    def killed_at_its_end(self):
        """There is the project or, until it is whole, the unfinished take."""
        process = self.stage.start(*self.desk.arguments(self.take))
        self.desk.await_film(process, self.recordings)
        time.sleep(self.stage.random.uniform(0.5, 3))
        process.send_signal(signal.SIGINT)
        ended = time.monotonic()
        time.sleep(self.stage.random.uniform(0, 0.6))
        self.kill(process)
        if not os.path.exists(self.take):
            return self.judge_recovered(ended)
        note_most(self.lost, self.desk.judge(self.take, ended))
        if json.loads(self.stage.run("recover", "--json").output):
            self.stage.run("recover", "last", "--discard")

    def judge_recovered(self, moment):
        offered = self.stage.run("library").said
        check("We found an unfinished recording" in offered, f"the take is not offered: {offered}")
        self.stage.run("recover", "last", "--no-polish", "-o", self.made)
        note_most(self.lost, self.desk.judge(self.made, moment))

    def kill(self, process):
        process.kill()
        killed = time.monotonic()
        self.desk.said = process.communicate()[1].decode(errors="replace")
        return killed

    def end(self):
        self.desk.end()
        print_most(self.lost)

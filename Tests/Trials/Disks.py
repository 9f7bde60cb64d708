"""Disks that are full, and machines that lose their power. Both mount file systems, so they need root."""

import json
import os
import shutil
import signal
import subprocess
import time

from Stage import check, leftovers, read
from Takes import Desk, note_most, print_most, times_shown


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def unmount(place):
    subprocess.run(["umount", place], check=True)


class FullDisk:
    """A full disk stops what is written with a sentence; what was there stays, no half file is left."""

    def __init__(self, stage):
        self.stage = stage
        self.disk = stage.path("disk")
        os.mkdir(self.disk)
        mount("-t", "tmpfs", "-o", "size=6m", "none", self.disk)
        self.project = os.path.join(self.disk, "tour.recproj")
        shutil.move(stage.project(), self.project)
        self.archive = stage.path("whole.zip")
        stage.run("archive", self.project, "-o", self.archive)
        self.ways = [
            ["edit", self.project, "set", "name={}"], ["polish", self.project, "--mode", "dashboard"],
            ["export", self.project, "--size", "640x360", "-o", self.disk + "/a.mp4"],
            ["export", self.project, "--size", "640x360", "-o", self.disk + "/a.gif"],
            ["frame", self.project, "--at", "1", "-o", self.disk + "/a.png"],
            ["archive", self.project, "-o", self.disk + "/a.zip"],
            ["restore", self.archive, "-o", self.disk],
            ["import", stage.movie(), "-o", self.disk + "/b.recproj"],
            ["captions", self.project, "-o", self.disk + "/a.srt"],
        ]

    def round(self, number):
        before = self.stage.document(self.project)
        names = sorted(os.listdir(self.disk))
        self.fill(self.stage.random.choice([0, 1, 2, 3]) * self.stage.random.randrange(100_000))
        way = [part.format(f"round {number}") for part in self.ways[number % len(self.ways)]]
        ended = self.stage.run(*way, expect=None)
        os.remove(self.disk + "/filler")
        check(ended.code in (0, 1), f"{way[0]}: exit {ended.code}")
        after = self.stage.document(self.project)
        if ended.code == 1:
            check(after == before, f"{way[0]} failed and changed the document")
            check("is full" in ended.said, f"{way[0]}: the sentence does not name the reason: {ended.said}")
            made = sorted(set(os.listdir(self.disk)) - set(names))
            check(not made, f"{way[0]} failed and left {made}")
            check(not leftovers(self.disk), f"{way[0]} failed and left {leftovers(self.disk)}")
        self.remove_what_is_new(names)

    def fill(self, room):
        status = os.statvfs(self.disk)
        with open(self.disk + "/filler", "wb") as filler:
            filler.write(bytes(max(0, status.f_bavail * status.f_frsize - room)))

    def remove_what_is_new(self, names):
        for name in set(os.listdir(self.disk)) - set(names):
            path = os.path.join(self.disk, name)
            shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)

    def end(self):
        unmount(self.disk)


class PowerCut:
    """What reached the disk at any instant of a save is the old or the new document. The disk is an ext4 image; it is
    copied while the program stands still, and the copy is what a machine finds when its power comes back."""

    def __init__(self, stage):
        self.stage = stage
        self.image, self.copy, self.disk = stage.path("disk.img"), stage.path("copy.img"), stage.path("disk")
        os.mkdir(self.disk)
        with open(self.image, "wb") as file:
            file.truncate(24 << 20)
        subprocess.run(["mkfs.ext4", "-q", "-J", "size=4", self.image], check=True)
        mount("-o", "loop", self.image, self.disk)
        self.project = os.path.join(self.disk, "tour.recproj")
        shutil.copytree(stage.project(), self.project)
        os.sync()
        self.seconds = stage.seconds_of("edit", self.project, "set", "name=round 0")
        self.name = "round 0"

    def round(self, number):
        wanted = f"round {number}"
        process = self.stage.start("edit", self.project, "set", f"name={wanted}")
        time.sleep(self.stage.random.uniform(0, self.seconds * 1.1))
        has_ended = process.poll() == 0
        process.send_signal(signal.SIGSTOP)
        subprocess.run(["cp", "--sparse=always", self.image, self.copy], check=True)
        process.send_signal(signal.SIGCONT)
        process.communicate()
        name = self.name_after_the_cut()
        allowed = (wanted,) if has_ended else (self.name, wanted)
        check(name in allowed, f"after the cut the document is of {name!r}, not of {allowed}")
        self.name = wanted

    def name_after_the_cut(self):
        place = stage_place(self.stage)
        mount("-o", "loop", self.copy, place)
        try:
            project = os.path.join(place, "tour.recproj")
            backup = os.path.join(project, "project.previous.json")
            if os.path.exists(backup):
                json.loads(read(backup))
            return json.loads(read(os.path.join(project, "project.json")))["name"]
        finally:
            unmount(place)

    def end(self):
        unmount(self.disk)


class PowerCutRecording:
    """A take on a machine that loses its power loses its last second at most, of the picture, the sounds and the log. The
    disk is an ext4 image that is copied while the recorder stands still: what it had not brought to the disk is lost."""

    def __init__(self, stage):
        self.stage = stage
        self.image, self.copy, self.disk = stage.path("disk.img"), stage.path("copy.img"), stage.path("disk")
        os.mkdir(self.disk)
        with open(self.image, "wb") as file:
            file.truncate(96 << 20)
        subprocess.run(["mkfs.ext4", "-q", "-J", "size=4", self.image], check=True)
        mount("-o", "loop", self.image, self.disk)
        self.desk = Desk(stage)
        self.lost = {}

    def round(self, _):
        stage = self.stage
        recordings = os.path.join(self.disk, "data")
        shutil.rmtree(recordings, ignore_errors=True)
        os.sync()
        stage.environment["XDG_DATA_HOME"] = recordings
        take = stage.start(*self.desk.arguments(os.path.join(self.disk, "take.recproj")))
        try:
            self.desk.await_film(take, recordings)
            time.sleep(stage.random.uniform(1, 14))
            take.send_signal(signal.SIGSTOP)
            stopped = time.monotonic()
            subprocess.run(["cp", "--sparse=always", self.image, self.copy], check=True)
        finally:
            take.kill()
            take.communicate()
        self.judge(stopped)

    def judge(self, stopped):
        stage, place = self.stage, stage_place(self.stage)
        mount("-o", "loop", self.copy, place)
        try:
            stage.environment["XDG_DATA_HOME"] = os.path.join(place, "data")
            made = os.path.join(place, "recovered.recproj")
            stage.run("recover", "last", "--no-polish", "-o", made)
            note_most(self.lost, self.desk.judge(made, stopped))
        finally:
            unmount(place)

    def end(self):
        self.desk.end()
        print_most(self.lost)
        unmount(self.disk)


class FullDiskRecording:
    """A take ends with a sentence before its disk of 64 MB is full, and plays to its end."""

    def __init__(self, stage):
        self.stage = stage
        self.disk = stage.path("disk")
        os.mkdir(self.disk)
        mount("-t", "tmpfs", "-o", "size=64m", "none", self.disk)
        stage.environment["XDG_DATA_HOME"] = os.path.join(self.disk, "data")
        self.desk = Desk(stage, noise=True)
        self.project = os.path.join(self.disk, "take.recproj")

    def round(self, _):
        shutil.rmtree(self.project, ignore_errors=True)
        ended = self.stage.run(*self.desk.arguments(self.project), limit=300)
        check("is nearly full" in ended.said, f"the sentence does not name the reason: {ended.said[-300:]}")
        shown = times_shown(os.path.join(self.project, "assets", "recording.mov"), time.monotonic())
        check(shown == sorted(shown), "frames are out of order")
        self.stage.run("edit", self.project, "set", "name=there is room for a save")
        self.stage.run("export", self.project, "--size", "320x180", "-o", self.stage.path("film.mp4"))
        check(json.loads(self.stage.run("recover", "--json").output) == [], "the take counts as unfinished")

    def end(self):
        self.desk.end()
        unmount(self.disk)


def stage_place(stage):
    place = stage.path("after")
    os.makedirs(place, exist_ok=True)
    return place

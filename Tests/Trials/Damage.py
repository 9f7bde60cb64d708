"""Bytes and files that nobody meant: damaged documents, links, pipes and endless devices."""

import json
import os
import shutil
import socket

from Stage import bounded_memory, check, read, write


class Damaged:
    """Damaged bytes of every kind of file that is read give a result or a sentence, never a crash, a hang or endless
    memory."""

    def __init__(self, stage):
        self.stage = stage
        self.project = stage.project()
        self.output = stage.path("out")
        self.files = {
            "project.json": read(os.path.join(self.project, "project.json")),
            "editor.json": b'{"playhead":1,"zoom":2}',
            "tour.zip": self.archive(),
            "log.json": read(stage.log()),
            "film.srt": b"1\n00:00:01,000 --> 00:00:02,500\nHello there\n\n2\n00:00:03,000 --> 00:00:04,000\nAgain\n",
            "look.cube": b"TITLE \"x\"\nLUT_3D_SIZE 2\n" + b"0 0 0\n1 0 0\n0 1 0\n1 1 0\n0 0 1\n1 0 1\n0 1 1\n1 1 1\n",
            "patch.json": b'{"camera":{"isEnabled":false},"zoomEvents":[]}',
            "movie.mp4": read(stage.movie("short.mp4", 1)),
        }
        shutil.copy(stage.movie(), os.path.join(self.project, "assets", "me.mp4"))
        stage.run("edit", self.project, "set", "cameraAsset=me.mp4", "camera.isEnabled=true", "camera.look=lut",
                  "camera.lutAsset=look.cube")

    def archive(self):
        path = self.stage.path("whole.zip")
        self.stage.run("archive", self.project, "-o", path)
        return read(path)

    def round(self, number):
        name = sorted(self.files)[number % len(self.files)]
        write(self.stage.path(name), self.damaged(self.files[name]))
        shutil.rmtree(self.output, ignore_errors=True)
        os.mkdir(self.output)
        for arguments in self.calls(name):
            self.stage.run(*arguments, expect=None, limit=30, preexec_fn=bounded_memory)

    def calls(self, name):
        path, out = self.stage.path(name), self.output
        if name in ("project.json", "editor.json", "look.cube"):
            copy = os.path.join(out, "copy.recproj")
            shutil.copytree(self.project, copy)
            shutil.copy(path, os.path.join(copy, "assets" if name == "look.cube" else "", name))
            return [["info", copy], ["frame", copy, "--at", "0.5", "--max-width", "160", "-o", out + "/a.png"],
                    ["edit", copy, "cut", "1", "2"]]
        return {
            "tour.zip": [["restore", path, "-o", out]],
            "log.json": [["import", self.stage.movie(), "--events", path, "-o", out + "/a.recproj"]],
            "film.srt": [["captions", self.project, "--import", path]],
            "patch.json": [["edit", self.project, "patch", path]],
            "movie.mp4": [["import", path, "-o", out + "/a.recproj"]],
        }[name]

    def damaged(self, content):
        chance = self.stage.random
        content = bytearray(content)
        for _ in range(chance.choice([1, 1, 2, 8, 64])):
            at = chance.randrange(len(content))
            way = chance.randrange(6)
            if way == 0:
                content[at] = chance.randrange(256)
            elif way == 1:
                del content[at:at + chance.randrange(1, 100)]
            elif way == 2:
                content[at:at] = content[chance.randrange(len(content)):][:chance.randrange(1, 300)]
            elif way == 3:
                content[at:at] = chance.choice([b"1e308", b"-1", b"null", b"\xff\xfe", b"\x1b[2J", b'"', b"[" * 3000, b"99999999999999999999"])
            elif way == 4:
                content[at:at + 4] = chance.randbytes(4)
            else:
                del content[at:]
            if not content:
                content = bytearray(b"{")
        return bytes(content)

    def end(self):
        pass


class Planted:
    """Links, pipes, sockets and endless devices under the names that are read or written: no hang, nothing beyond the
    project is read into it or written."""

    KINDS = ("pipe", "socket", "endless", "folder", "link", "missing")

    def __init__(self, stage):
        self.stage = stage
        self.victim = stage.path("victim")

    def round(self, number):
        stage = self.stage
        kind = self.KINDS[number % len(self.KINDS)]
        shutil.rmtree(stage.path("tour.recproj"), ignore_errors=True)
        project = stage.project()
        stage.run("edit", project, "set", 'background={"image":{"assetName":"back.png","blur":0}}', "cameraAsset=me.mp4",
                  "camera.isEnabled=true", "camera.look=lut", "camera.lutAsset=mine.cube")
        write(self.victim, "precious")
        for name in ("project.json.tmp", "project.previous.json.tmp", "editor.json", "assets/back.png", "assets/me.mp4",
                     "assets/mine.cube", "thumbnail.png",
                     "project.previous.json"):
            self.plant(kind, os.path.join(project, name))
        for name in ("log", "film.srt", "patch", "a.zip", "words.txt", "movie.mov"):
            self.plant(kind, stage.path("planted-" + name))
        for arguments in self.calls(project):
            stage.run(*arguments, expect=None, limit=15, preexec_fn=bounded_memory)
            check(read(self.victim) == b"precious", f"{arguments[0]} wrote through a planted link")
        self.plant(kind, os.path.join(project, "project.json"))
        stage.run("info", project, expect=1, limit=15, preexec_fn=bounded_memory)

    def calls(self, project):
        def path(name):
            return self.stage.path("planted-" + name)

        return [["info", project], ["edit", project, "cut", "1", "1.5"], ["edit", project, "patch", path("patch")],
                ["captions", project, "--import", path("film.srt")], ["captions", project, "--from-script", path("words.txt")],
                ["frame", project, "--at", "0", "--max-width", "160", "-o", path("f.png")],
                ["import", path("movie.mov"), "-o", path("b.recproj")],
                ["import", self.stage.movie(), "--events", path("log"), "-o", path("c.recproj")],
                ["archive", project, "-o", path("a.zip")], ["restore", path("a.zip"), "-o", path("out")],
                ["restore", project], ["library", self.stage.root], ["scan-text", path("words.txt")]]

    def plant(self, kind, path):
        if os.path.isdir(path) and not os.path.islink(path):
            shutil.rmtree(path)
        elif os.path.lexists(path):
            os.remove(path)
        if kind == "pipe":
            os.mkfifo(path)
        elif kind == "socket":
            with socket.socket(socket.AF_UNIX) as made:
                here = os.getcwd()
                os.chdir(os.path.dirname(path))
                made.bind(os.path.basename(path))
                os.chdir(here)
        elif kind == "endless":
            os.symlink("/dev/zero", path)
        elif kind == "folder":
            os.mkdir(path)
        elif kind == "link":
            os.symlink(self.victim, path)

    def end(self):
        pass


class ManyAtOnce:
    """Several programs at one project or one name: no edit and no film is lost, nothing is torn."""

    def __init__(self, stage):
        self.stage = stage
        self.project = stage.project()
        old = json.loads(read(os.path.join(self.project, "project.json")))
        for key in old["metadata"]["keystrokes"]:
            key["characters"] = "s"  # as older versions logged it; opening removes it
        self.old = old["metadata"]["keystrokes"]

    def round(self, number):
        if number % 4 == 3:
            self.one_name()
            return
        before = self.document()
        before["metadata"]["keystrokes"] = self.old
        write(os.path.join(self.project, "project.json"), json.dumps(before))
        edit = self.stage.start("edit", self.project, "set", f"name=round {number}")
        readers = [self.stage.start("info", self.project, "--json") for _ in range(4)]
        for process in [edit, *readers]:
            output, words = process.communicate(timeout=60)
            self.stage.judged(process.args, process.returncode, output, words, 0)
        document = self.document()
        check(document["name"] == f"round {number}", "an edit was lost")

    def document(self):
        return json.loads(read(os.path.join(self.project, "project.json")))

    def one_name(self):
        folder = self.stage.path("films")
        shutil.rmtree(folder, ignore_errors=True)
        os.mkdir(folder)
        for name in self.archives():
            os.remove(self.stage.path(name))
        exports = [self.stage.start("export", self.project, "--size", "320x180", "-o", folder + "/a.mp4") for _ in range(4)]
        archives = [self.stage.start("archive", self.project) for _ in range(2)]
        for process in exports + archives:
            output, words = process.communicate(timeout=120)
            self.stage.judged(process.args, process.returncode, output, words, 0)
        films = [name for name in os.listdir(folder) if name.endswith(".mp4")]
        check(len(films) == 4, f"four exports to one name left {films}")
        check(len(self.archives()) == 2, f"two archives to one name left {self.archives()}")
        for name in self.archives():
            out = self.stage.path("unpacked")
            self.stage.run("restore", self.stage.path(name), "-o", out)
            shutil.rmtree(out)

    def archives(self):
        return [name for name in os.listdir(self.stage.root) if name.endswith(".zip")]

    def end(self):
        pass

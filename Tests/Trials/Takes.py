"""Takes that are recorded while something goes wrong, and what has to be left of them."""

import json
import os
import shutil
import subprocess
import sys
import time

from ClockWindow import BITS, HEIGHT, STRIPE
from Display import VirtualDisplay
from Stage import Fault, check, read

HERE = os.path.dirname(os.path.abspath(__file__))
MOST_LOST = 1  # seconds
# The clock is drawn by a program that waits for the processor as all do.
LATENESS = 0.1


class Desk:
    """A display that shows the media clock and where the pointer moves and, where there is a sound server to install, a
    microphone and an output that are never silent."""

    def __init__(self, stage, noise=False):
        self.stage = stage
        self.said = ""  # by the last take, for who reads of a fault
        self.display = VirtualDisplay(stage)
        self.running = [self.launch(sys.executable, os.path.join(HERE, "ClockWindow.py"), *["--noise"] * noise)]
        self.sounds = ["microphone", "system-audio"] if shutil.which("pulseaudio") else []
        if self.sounds:
            self.running.append(self.sound_server())

    def launch(self, *command, **environment):
        return subprocess.Popen(command, env={**self.stage.environment, **environment}, stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)

    def sound_server(self):
        folder = self.stage.path("sound")
        os.mkdir(folder, 0o700)
        self.stage.environment["PULSE_SERVER"] = f"unix:{folder}/native"
        modules = [f"module-native-protocol-unix socket={folder}/native"]
        for name in ("out", "room"):
            modules += [f"module-null-sink sink_name={name} rate=48000", f"module-sine sink={name}"]
        modules.append("module-remap-source source_name=microphone master=room.monitor")
        loads = [word for module in modules for word in ("-L", module)]
        server = self.launch("pulseaudio", "-n", "--exit-idle-time=-1", *loads, XDG_RUNTIME_DIR=folder, HOME=folder)
        until = time.monotonic() + 20
        while not os.path.exists(f"{folder}/native"):
            check(time.monotonic() < until and server.poll() is None, "the sound server does not start")
            time.sleep(0.01)
        return server

    def end(self):
        for process in self.running:
            process.kill()
            process.wait()
        self.display.end()

    def arguments(self, project):
        """For a take of all there is."""
        return ["record", "--no-polish", *[f"--{sound}" for sound in self.sounds], "-o", project]

    def await_film(self, take, recordings):
        """Returns when the take's first fragment, of half a second, is written."""
        empty, until = None, time.monotonic() + 30
        while time.monotonic() < until and take.poll() is None:
            sizes = segment_sizes(recordings)
            empty = empty or max(sizes, default=0)
            if empty and max(sizes, default=0) > empty:
                return
            time.sleep(0.01)
        take.kill()
        raise Fault("the take did not start: " + take.communicate()[1].decode(errors="replace")[-300:])

    def judge(self, project, moment):
        """Nothing that is a second older than the moment is missing in picture, sound and log."""
        document = json.loads(read(os.path.join(project, "project.json")))
        shown = times_shown(os.path.join(project, "assets", "recording.mov"), moment)
        check(shown == sorted(shown), "frames are out of order")
        lived = moment - shown[0]
        lengths = {"picture": shown[-1] - shown[0], "log": document["metadata"]["cursorSamples"][-1]["t"]}
        for track in document["audioTracks"]:
            clip = track["clips"][0]
            lengths[track["role"]] = clip["start"] + document["assetDurations"][clip["asset"]] - clip["sourceStart"]
        check(len(lengths) == 2 + len(self.sounds), f"a stream is missing: there are {', '.join(lengths)}")
        for name, length in lengths.items():
            check(length > lived - MOST_LOST - LATENESS,
                  f"of {lived:.2f} s, {length:.2f} s of the {name} are left. The take said: {self.said[-1000:]}")
        return {name: lived - length for name, length in lengths.items()}


def segment_sizes(recordings):
    return [os.path.getsize(os.path.join(folder, name)) for folder, _, files in os.walk(recordings) for name in files
            if name.startswith("segment")]


def times_shown(movie, before):
    """Moments of the media clock that the movie's frames show, in seconds."""
    stripes = subprocess.run(
        ["ffmpeg", "-v", "error", "-i", movie, "-vf", f"crop={BITS * STRIPE}:{HEIGHT}:0:0,scale={BITS}:1:flags=area",
         "-pix_fmt", "gray", "-f", "rawvideo", "-"], check=True, stdin=subprocess.DEVNULL, capture_output=True).stdout
    frames = [stripes[at:at + BITS] for at in range(0, len(stripes), BITS)]
    check(frames, "the movie has no frame")
    rounds = int(before * 1000) >> BITS << BITS
    return [(rounds + sum((value > 127) << bit for bit, value in enumerate(frame))) / 1000 for frame in frames]


def note_most(most, lost):
    for name, seconds in lost.items():
        most[name] = max(most.get(name, 0), seconds)


def print_most(most):
    print("lost at most: " + ", ".join(f"{seconds:.2f} s of the {name}" for name, seconds in most.items()), flush=True)

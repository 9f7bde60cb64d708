"""The desktop application worked on a desktop of its own, one step a round: everywhere, without a plan, and killed."""

import os
import subprocess

from Stage import Fault

HERE = os.path.dirname(os.path.abspath(__file__))
DRIVER = os.path.join(os.path.dirname(HERE), "Studio", "Walk", "drive-studio")


class Driven:
    """`drive-studio` takes a step for each line, and answers by lines that end with "ok"."""

    def __init__(self, stage, what, renderer="software"):
        self.what, self.isDone = what, False
        studio = os.path.join(os.path.dirname(stage.program), "tavaro-studio")
        self.words = open(stage.path("words"), "w+b")
        self.process = subprocess.Popen([DRIVER, what, studio, str(stage.random.randrange(1 << 30)), renderer], text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=self.words, env=stage.environment)

    def round(self, _):
        if not self.isDone:
            self.ask("step")

    def end(self):
        try:
            self.ask("end")
        finally:
            self.process.stdin.close()
            self.process.wait()

    def ask(self, line):
        if self.process.poll() is None:
            self.process.stdin.write(line + "\n")
            self.process.stdin.flush()
        faults = []
        for answer in iter(self.process.stdout.readline, "ok\n"):
            if not answer:
                self.words.seek(0)
                raise Fault("the driver has ended: " + self.words.read().decode(errors="replace")[-3000:])
            self.isDone = self.isDone or answer == "done\n"
            faults += [answer.strip()] if answer.startswith("fault: ") else []
        if faults:
            raise Fault("\n  ".join(fault.removeprefix("fault: ") for fault in faults))


class WalkStudio(Driven):
    """Presses everything once, from the start window on, and looks at what shows."""

    def __init__(self, stage):
        super().__init__(stage, "walk")


class WalkStudioOpenGL(Driven):
    def __init__(self, stage):
        super().__init__(stage, "walk", "opengl")


class RandomStudio(Driven):
    """One action without a plan a round; every fifty of them are undone to the bottom and done again, byte for byte."""

    def __init__(self, stage):
        super().__init__(stage, "random")


class KillStudio(Driven):
    """Killed in edits and takes; the next start has what is older than a second."""

    def __init__(self, stage):
        super().__init__(stage, "kill")


class EndStudio(Driven):
    """Asked to end, or its window closed, whatever it is doing: nothing crashes, and nothing is lost."""

    def __init__(self, stage):
        super().__init__(stage, "end")


class RestartStudio(Driven):
    """Started again at any moment of its end: there is one window."""

    def __init__(self, stage):
        super().__init__(stage, "again")

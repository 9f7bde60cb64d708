"""A display that nobody sees, where something moves."""

import os
import subprocess
import time
from threading import Thread


class VirtualDisplay:
    def __init__(self, stage, moves=True):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "640x360x24", "-nolisten", "tcp",
                                        "-noreset"], pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as number:
            stage.environment["DISPLAY"] = ":" + number.readline().strip()
        stage.environment.pop("WAYLAND_DISPLAY", None)
        self.isMoving = moves
        self.mover = Thread(target=self.move, args=[stage.environment], daemon=True)
        self.mover.start()

    def move(self, environment):
        at = 0
        while self.isMoving:
            at = (at + 7) % 300
            subprocess.run(["xdotool", "mousemove", str(at), str(at)], env=environment, check=False)
            time.sleep(0.03)

    def end(self):
        self.isMoving = False
        self.mover.join()
        self.server.terminate()
        self.server.wait()

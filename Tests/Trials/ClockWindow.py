#!/usr/bin/env python3
"""A strip in the corner of the display that shows the media clock in stripes, sixty times a second, so that every frame
of a take tells when it was on the screen. `--noise` fills the rest with what no encoder makes small.

usage: ClockWindow.py [--noise], with $DISPLAY set; until killed
"""

import ctypes
import os
import sys
import time

BITS, STRIPE, HEIGHT = 24, 16, 16  # milliseconds, in as many bits; they come round every four hours
NOISE_WIDTH, NOISE_HEIGHT = 640, 320


class Rectangle(ctypes.Structure):
    _fields_ = [("x", ctypes.c_short), ("y", ctypes.c_short), ("width", ctypes.c_ushort), ("height", ctypes.c_ushort)]


def library():
    x = ctypes.CDLL("libX11.so.6")
    for name in ("XOpenDisplay", "XCreateGC", "XCreateImage", "XDefaultVisual"):
        getattr(x, name).restype = ctypes.c_void_p
    for name in ("XDefaultRootWindow", "XCreateSimpleWindow", "XCreatePixmap"):
        getattr(x, name).restype = ctypes.c_ulong
    return x


class ClockWindow:
    def __init__(self):
        self.x = library()
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(None))
        if not self.display:
            sys.exit("there is no display")
        root = ctypes.c_ulong(self.x.XDefaultRootWindow(self.display))
        self.window = ctypes.c_ulong(self.x.XCreateSimpleWindow(
            self.display, root, 0, 0, NOISE_WIDTH, HEIGHT + NOISE_HEIGHT, 0, ctypes.c_ulong(0), ctypes.c_ulong(0)))
        self.x.XMapRaised(self.display, self.window)
        self.pen = ctypes.c_void_p(self.x.XCreateGC(self.display, self.window, ctypes.c_ulong(0), None))
        # Drawn elsewhere and shown at once: no frame has half of an old time and half of a new one.
        self.strip = ctypes.c_ulong(self.x.XCreatePixmap(self.display, self.window, BITS * STRIPE, HEIGHT, 24))

    def show(self, milliseconds):
        self.fill(0, [Rectangle(0, 0, BITS * STRIPE, HEIGHT)])
        self.fill(0xffffff, [Rectangle(bit * STRIPE, 0, STRIPE, HEIGHT) for bit in range(BITS) if milliseconds >> bit & 1])
        self.x.XCopyArea(self.display, self.strip, self.window, self.pen, 0, 0, BITS * STRIPE, HEIGHT, 0, 0)

    def fill(self, color, rectangles):
        self.x.XSetForeground(self.display, self.pen, ctypes.c_ulong(color))
        self.x.XFillRectangles(self.display, self.strip, self.pen, (Rectangle * len(rectangles))(*rectangles),
                               len(rectangles))

    def noises(self):
        visual = ctypes.c_void_p(self.x.XDefaultVisual(self.display, 0))
        self.kept = [ctypes.create_string_buffer(os.urandom(NOISE_WIDTH * NOISE_HEIGHT * 4)) for _ in range(7)]
        return [ctypes.c_void_p(self.x.XCreateImage(self.display, visual, 24, 2, 0, pixels, NOISE_WIDTH, NOISE_HEIGHT, 32, 0))
                for pixels in self.kept]

    def run(self, noises):
        frame = 0
        while True:
            self.show(int(time.monotonic() * 1000) % (1 << BITS))
            if noises:
                self.x.XPutImage(self.display, self.window, self.pen, noises[frame % len(noises)], 0, 0, 0, HEIGHT,
                                 NOISE_WIDTH, NOISE_HEIGHT)
            self.x.XSync(self.display, 0)
            frame += 1
            time.sleep(1 / 60 - time.monotonic() % (1 / 60))


if __name__ == "__main__":
    clock = ClockWindow()
    clock.run(clock.noises() if "--noise" in sys.argv else None)

"""Where trials run: folders of their own, the program under test, what it may and may not do when it ends."""

import json
import os
import random
import resource
import shutil
import signal
import subprocess
import tempfile
import time

HALF_WRITTEN = (".tmp", ".part")

SUPPRESSIONS = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "cmake")

# How programs that were built with a sanitizer run. Leaks are told apart by functions of libraries without frame pointers.
SANITIZERS = {
    "ASAN_OPTIONS": "fast_unwind_on_malloc=0",
    "LSAN_OPTIONS": f"suppressions={SUPPRESSIONS}/lsan.supp:print_suppressions=0",
    "TSAN_OPTIONS": f"suppressions={SUPPRESSIONS}/tsan.supp:print_suppressions=0",
    "UBSAN_OPTIONS": "",
}


class Fault(Exception):
    """What the program did that it must not do; the text says what, and how to see it again."""


class Stage:
    """A home folder that nobody else uses, and the program in it. `random` is the only source of chance."""

    def __init__(self, program, seed):
        self.program = program
        self.random = random.Random(seed)
        self.root = tempfile.mkdtemp(prefix="tavaro-trial-")
        self.home = self.path("home")
        os.mkdir(self.home)
        self.environment = {**os.environ, "HOME": self.home, "XDG_DATA_HOME": f"{self.home}/data",
                            "XDG_CACHE_HOME": f"{self.home}/cache", "XDG_CONFIG_HOME": f"{self.home}/config",
                            "XDG_STATE_HOME": f"{self.home}/state", "XDG_RUNTIME_DIR": self.home}
        for name, usual in SANITIZERS.items():
            options = [usual, os.environ.get(name), "log_path=" + self.path("sanitizer")]
            self.environment[name] = ":".join(filter(None, options))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.root, ignore_errors=True)

    def path(self, *parts):
        return os.path.join(self.root, *parts)

    @staticmethod
    def remove(path):
        shutil.rmtree(path) if os.path.isdir(path) else os.remove(path)

    def check_sanitizers(self):
        """Programs that were built with a sanitizer report to files."""
        for name in sorted(os.listdir(self.root)):
            if name.startswith("sanitizer"):
                report = read(self.path(name)).decode(errors="replace")
                os.remove(self.path(name))
                raise Fault(f"a sanitizer reports:\n{report}")

    def start(self, *arguments, **options):
        return subprocess.Popen([self.program, *map(str, arguments)], env=self.environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True, **options)

    def run(self, *arguments, expect=0, limit=60, **options):
        """The program run to its end; its output. A crash, a hang and, unless `expect` is None, another exit code are
        faults."""
        process = self.start(*arguments, **options)
        try:
            output, words = process.communicate(timeout=limit)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            raise Fault(f"{shown(arguments)}: still running after {limit} s") from None
        return self.judged(arguments, process.returncode, output, words, expect)

    def judged(self, arguments, code, output, words, expect):
        said = words.decode(errors="replace").strip()
        if code < 0:
            raise Fault(f"{shown(arguments)}: died of {signal.Signals(-code).name}. {said[-300:]}")
        if expect is not None and code != expect:
            raise Fault(f"{shown(arguments)}: exit {code}, not {expect}. {said[-300:]}")
        if code == 1 and not said:
            raise Fault(f"{shown(arguments)}: failed without a word")
        if len(said) > 2000 or any(letter < " " and letter not in "\r\n" or letter in "\x7f\x9b" for letter in said):
            raise Fault(f"{shown(arguments)}: an unprintable or endless sentence: {said[:200]!r}")
        return Ended(code, output, said)

    def run_and_kill(self, seconds, *arguments):
        """The program killed after so many seconds; whether it was still running then."""
        process = self.start(*arguments)
        try:
            process.communicate(timeout=seconds)
            return False
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            return True

    def seconds_of(self, *arguments):
        began = time.monotonic()
        self.run(*arguments)
        return time.monotonic() - began

    def ffmpeg(self, *arguments):
        subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)], check=True, stdin=subprocess.DEVNULL)

    def movie(self, name="movie.mp4", seconds=6):
        """A small movie with a tone; it is made once."""
        path = self.path(name)
        if not os.path.exists(path):
            self.ffmpeg("-f", "lavfi", "-i", f"testsrc2=s=320x180:r=30:d={seconds}", "-f", "lavfi", "-i",
                        f"sine=440:d={seconds}", "-c:v", "libx264", "-preset", "ultrafast", "-c:a", "aac", path)
        return path

    def log(self):
        path = self.path("log.json")
        write(path, json.dumps({
            "clicks": [{"t": 2.1, "position": {"x": 0.31, "y": 0.62}}, {"t": 4, "position": {"x": 0.7, "y": 0.3}}],
            "keystrokes": [{"t": 3.0, "keys": ["⌘", "S"], "isShortcut": True}],
            "cursorSamples": [{"t": at / 20, "position": {"x": 0.5 + at / 400, "y": 0.5}} for at in range(100)]}))
        return path

    def project(self, name="tour.recproj"):
        path = self.path(name)
        self.run("import", self.movie(), "--events", self.log(), "-o", path)
        self.run("polish", path)
        words = self.path("script.txt")
        write(words, "Here is the page. It saves by itself. That is all.")
        self.run("captions", path, "--from-script", words)
        return path

    def document(self, project):
        """What the program reads of the project."""
        return json.loads(self.run("info", project, "--json").output)


class Ended:
    def __init__(self, code, output, said):
        self.code, self.output, self.said = code, output, said


def shown(arguments):
    return " ".join(map(str, arguments))


def write(path, content):
    with open(path, "wb") as file:
        file.write(content if isinstance(content, bytes) else content.encode())


def read(path):
    with open(path, "rb") as file:
        return file.read()


def check(holds, text):
    if not holds:
        raise Fault(text)


def leftovers(folder):
    """What is half-written or hidden below the folder."""
    return [os.path.join(place, name) for place, folders, files in os.walk(folder) for name in folders + files
            if name.startswith(".") or name.endswith(HALF_WRITTEN)]


def bounded_memory():
    """For `preexec_fn`: what takes more than 3 GiB of addresses dies of it."""
    resource.setrlimit(resource.RLIMIT_AS, (3 << 30, 3 << 30))

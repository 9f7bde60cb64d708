"""Calls of chance, valid and not, over the session and the socket, for as long as wanted."""

import json
import os
import subprocess
import time
from dataclasses import dataclass

from Agents import CLIENT, Agent, Connection, allow, application_id, memory, until
from Display import VirtualDisplay
from Stage import Fault, check

SECONDS = 10  # of a round
LIMIT = 120  # seconds that any call may take


@dataclass
class Count:
    well: int = 0
    badly: int = 0
    longest: float = 0

    def __str__(self):
        return f"{self.well} {self.badly} {self.longest:.1f}"


class AgentsRandom:
    """No call crashes or holds the application, every answer is well-formed, and memory does not grow without end."""

    def __init__(self, stage):
        self.stage, self.chance = stage, stage.random
        self.display = VirtualDisplay(stage, moves=False)
        allow(stage)
        self.library = os.path.join(stage.home, "Movies", "Tavaro")
        os.makedirs(self.library)
        self.ids = [stage.document(stage.project(os.path.join(self.library, f"{at}.recproj")))["id"] for at in range(2)]
        self.most = 0
        self.counts = {}
        self.start()
        self.tools = self.agent.answer(self.agent.ask("tools/list", {}))["tools"]

    def start(self):
        self.words = open(self.stage.path("words"), "w+b")
        self.application = subprocess.Popen([self.stage.program, "serve"], env=self.stage.environment, stdin=subprocess.DEVNULL,
                                            stdout=subprocess.DEVNULL, stderr=self.words, start_new_session=True)
        until("the application", 20, lambda: application_id(self.stage))
        self.agent = Agent(self.stage)
        self.settled = None  # MiB once the application has done everything a few times

    def fate(self):
        """How the application has ended, and its last words; nothing while it runs."""
        try:
            code = self.application.wait(1)
        except subprocess.TimeoutExpired:
            return ""
        self.words.seek(0)
        last = [line for line in self.words.read().decode(errors="replace").splitlines() if not line.startswith("[")]
        return f" The application has ended with {code}:\n" + "\n".join(last)[:8000]

    def round(self, number):
        deadline = time.monotonic() + SECONDS
        try:
            while time.monotonic() < deadline:
                self.chance.choice([self.call, self.call, self.call, self.line, self.connect, self.crowd])()
            self.check_status()
            self.check_memory(number)
            self.tidy()
        except Fault as fault:
            fate = self.fate()
            self.start_again()
            raise Fault(f"{fault}{fate}") from None

    def call(self):
        tool, arguments = self.request()
        began = time.monotonic()
        result = self.agent.call(tool, LIMIT, **arguments)
        count = self.counts.setdefault(tool, Count())
        count.well += not result["isError"]
        count.badly += result["isError"]
        count.longest = max(count.longest, time.monotonic() - began)

    def line(self):
        """A message that may be none: whatever it is, a ping after it is answered."""
        tool, arguments = self.request()
        identity = self.chance.choice([None, "a", -1, 1.5, [], {"x": 1}])
        message = {"jsonrpc": "2.0", "id": identity, "method": "tools/call", "params": {"name": tool, "arguments": arguments}}
        content = self.damaged(json.dumps(message).encode())
        for piece in content.split(b"\n"):
            self.agent.send(piece)
        self.agent.answer(self.agent.ask("ping", {}), 10)
        self.agent.answer(self.agent.begin("status"), LIMIT)  # behind what the line may have begun
        self.agent.kept.clear()

    def connect(self):
        """A request over the socket, whole or damaged, heard to its end or left."""
        tool, arguments = self.request()
        request = {"id": self.chance.randrange(-5, 1 << 40), "client": CLIENT, "tool": tool, "arguments": arguments}
        line = json.dumps(request).encode()
        with Connection(self.stage, LIMIT) as connection:
            is_whole = self.chance.random() < 0.6
            connection.send((line if is_whole else self.damaged(line)) + b"\n")
            if self.chance.random() < 0.7:
                result = connection.result(tool)
                check(result or not is_whole, f"{tool}: the connection ends without an answer")

    def crowd(self):
        """Several at once, none of them heard in order."""
        connections = [Connection(self.stage, LIMIT) for _ in range(self.chance.randrange(2, 8))]
        asked = []
        for connection in connections:
            tool, arguments = self.request()
            connection.ask(tool, **arguments)
            asked.append((connection, f"{tool} {json.dumps(arguments)[:200]}"))
        began = time.monotonic()
        self.chance.shuffle(asked)
        for at, (connection, what) in enumerate(asked):
            if self.chance.random() < 0.8:
                check(connection.result(what), f"{what} is not answered; {at} of the crowd were, in {time.monotonic() - began:.1f} s")
            connection.close()

    def request(self):
        tool = self.chance.choice(self.tools)
        arguments = self.value(tool["inputSchema"], "arguments")
        if tool["name"] == "export":
            arguments = {"width": 320, "height": 180, "fps": 10, **arguments}
        if self.chance.random() < 0.25:
            arguments[self.chance.choice(["project_id", "time", "nonsense", "", "patch"])] = self.nonsense()
        return tool["name"], arguments

    def value(self, schema, name):
        """One that the schema allows, mostly. What would take long is kept short."""
        chance = self.chance
        if chance.random() < 0.04:
            return {} if name == "arguments" else self.nonsense()
        if name == "project_id":
            return chance.choice(self.ids)
        if name in ("target", "patch", "options"):
            return {"target": self.target, "patch": self.patch, "options": self.options}[name]()
        if name == "output_path":
            return os.path.join(self.stage.root, chance.choice(["film.mp4", "film.gif", "missing/film.mp4", "film.mov"]))
        if name in ("camera", "microphone", "system_audio"):
            return chance.random() < 0.05
        if "enum" in schema:
            return chance.choice(schema["enum"])
        return {"object": lambda: self.members(schema), "boolean": lambda: chance.random() < 0.5,
                "string": lambda: chance.choice(["display-1", "display-1", "xterm", "Ä\u2028", "ctrl+a"]),
                "array": lambda: [chance.choice(["a", "esc", "ctrl+b"]) for _ in range(chance.randrange(3))],
                "integer": lambda: int(self.number(schema, name)), "number": lambda: self.number(schema, name)}[schema["type"]]()

    def members(self, schema):
        """Those that are required, and some of the others."""
        return {name: self.value(each, name) for name, each in schema["properties"].items()
                if name in schema["required"] or self.chance.random() < 0.4}

    def number(self, schema, name):
        low, high = schema.get("minimum", -100), schema.get("maximum", 100)
        high = {"seconds": 2, "countdown": 1, "glide": 0.2, "hold": 0.2, "width": 480, "height": 480, "max_width": 480, "fps": 20,
                "time": 5, "start": 5, "end": 6}.get(name, high)
        return self.chance.choice([low, self.chance.uniform(low, max(low, high)), self.chance.uniform(low, max(low, high))])

    def target(self):
        chance = self.chance
        area = {"display": "display-1", "x": 0, "y": 0, "width": chance.randrange(20, 700), "height": chance.randrange(20, 400)}
        return chance.choice([{"display": "display-1"}] * 4 + [{"area": area}, {"window": "window-1"}, {"app": "xterm"}, {},
                                                               {"display": "display-1", "window": "a"}])

    def options(self):
        return self.chance.choice([{}, {"smartZoom": False, "captions": True}, {"rate": 2}, {"max_pause": 0.3},
                                   {"from_word": 0, "to_word": 1}])

    def patch(self):
        chance, uniform = self.chance, self.chance.uniform
        words = [{"text": "um", "start": 0.1, "end": 0.4}, {"text": "so", "start": 1, "end": 1.5}]
        zoom = {"start": uniform(-1, 3), "duration": uniform(0, 2), "scale": uniform(-1, 9)}
        return chance.choice([
            {"name": "x" * chance.randrange(100)}, {"zoomEvents": []}, {"zoomEvents": [zoom]}, {"canvas": {"width": 640, "height": 360}},
            {"cursor": {"size": uniform(-1, 9)}}, {"camera": {"isEnabled": chance.random() < 0.5}}, {"captions": None}, {"timeline": {}},
            {"nonsense": 1}, {}, {"transcript": {"words": words}}, {"overlays": [{"start": 0, "duration": uniform(-1, 4)}]},
            {"background": self.nonsense()}, {"layout": self.nonsense()}, {"export": {"fps": chance.randrange(-5, 50)}},
            {"intro": {"title": "Hello", "duration": uniform(0, 2)}}])

    def nonsense(self):
        return self.chance.choice([None, True, -1, 0, 1e308, -1e-308, 2**63, 1.5, "", "\0", "x" * 20000, "\ud83d\ude00", [], {}, [[]] * 50,
                                   {"a": {"b": [None]}}, "../../etc/passwd", "NaN", ["a"] * 1000])

    def damaged(self, content):
        content = bytearray(content)
        for _ in range(self.chance.choice([0, 1, 1, 3, 20])):
            at = self.chance.randrange(len(content))
            way = self.chance.randrange(4)
            if way == 0:
                content[at] = self.chance.randrange(256)
            elif way == 1:
                del content[at:at + self.chance.randrange(1, 30)]
            elif way == 2:
                content[at:at] = self.chance.choice([b"{", b'"', b"[" * 2000, b"\xff", b"null,", b"\\u0000", b"1e999", b"\n"])
            else:
                content[at:at] = bytes(content[at:at + 50])
            content = content or bytearray(b"{")
        return bytes(content)

    def check_status(self):
        check(not self.agent.call("status", 10)["isError"], "the status fails")
        check(application_id(self.stage) == self.application.pid, "another application answers")

    def check_memory(self, number):
        """What a few rounds took is usual; three times that, or half a GiB more, is not."""
        taken = memory(self.application.pid)
        self.most = max(self.most, taken)
        if number == 6:
            self.settled = self.most
        if self.settled:
            check(taken < max(3 * self.settled, self.settled + 500), f"{taken:.0f} MiB in memory, after {self.settled:.0f} MiB at first")

    def tidy(self):
        """Ends a recording that goes on, and removes what rounds made, so that the next is like the first."""
        self.agent.call("cancel_recording", LIMIT)
        for name in os.listdir(self.library):
            if name not in ("0.recproj", "1.recproj"):
                self.stage.remove(os.path.join(self.library, name))
        for name in os.listdir(self.stage.root):
            if name.startswith("film"):
                os.remove(self.stage.path(name))

    def start_again(self):
        self.agent.kill()
        self.stop()
        self.start()

    def stop(self):
        self.application.terminate()
        try:
            code = self.application.wait(30)
        except subprocess.TimeoutExpired:
            self.application.kill()
            self.application.wait()
            raise Fault("the application runs on after a signal that asks for its end") from None
        finally:
            self.words.close()
        return code

    def end(self):
        print(f"agents-random: {memory(self.application.pid):.0f} MiB at the end, {self.most:.0f} MiB at most; done, refused, "
              "longest seconds: " + ", ".join(f"{tool} {count}" for tool, count in sorted(self.counts.items())))
        self.agent.end()
        code = self.stop()
        self.display.end()
        check(code == 0, f"the application ends with {code}")

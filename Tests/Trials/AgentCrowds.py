"""Many clients at once, and clients that do it wrong: each gets its own answer, and costs nobody else anything."""

import json
import os
import select
import socket
import time
from threading import Thread

from Agents import Agent, Connection, allow, application_id, code_of, end_application, memory, said, until
from Display import VirtualDisplay
from Stage import check, read


class Crowd:
    """A library with two projects, and the application."""

    def __init__(self, stage):
        self.stage = stage
        self.display = VirtualDisplay(stage)
        allow(stage)
        library = os.path.join(stage.home, "Movies", "Tavaro")
        os.makedirs(library)
        self.read, self.edited = (stage.project(os.path.join(library, name + ".recproj")) for name in ("read", "edited"))
        self.ids = [stage.document(project)["id"] for project in (self.read, self.edited)]
        self.started = Agent(stage)
        self.started.call("status")
        self.process = application_id(stage)

    def works(self):
        with Connection(self.stage) as connection:
            check(not connection.call("status")["isError"], "the status fails afterwards")
        check(application_id(self.stage) == self.process, "another process answers now")

    def threads(self):
        return len(os.listdir(f"/proc/{self.process}/task"))

    def end(self):
        self.started.end()
        end_application(self.stage)
        self.display.end()


def together(tasks):
    """Runs the tasks each on a thread of its own; what they give, or raises what one of them raised."""
    made = [None] * len(tasks)

    def run(at):
        try:
            made[at] = tasks[at]()
        except BaseException as error:  # a fault of any of them is the round's
            made[at] = error

    threads = [Thread(target=run, args=[at]) for at in range(len(tasks))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for each in made:
        if isinstance(each, BaseException):
            raise each
    return made


class AgentsMany(Crowd):
    """Fifty connections at once with calls of every kind: each is answered as if it were alone; edits are all made, one
    after another, and one export runs at a time. More connections than the application serves at once wait."""

    READING = (("status", {}), ("list_export_presets", {}), ("list_projects", {}), ("get_project", {}),
               ("render_frame", {"time": 1, "max_width": 320}), ("edit_timeline", {"op": "cut", "start": 2, "end": 1}))
    SERVED = 128

    def round(self, number):
        if number % 2 == 0:
            self.crowd_waits()
        else:
            self.fifty(number)
        self.works()

    def fifty(self, number):
        alone = [self.call(tool, more) for tool, more in self.READING]
        tasks = [(tool, more, wanted) for (tool, more), wanted in zip(self.READING * 5, alone * 5)]
        names = [f"{number}.{at}" for at in range(14)]
        readers = [lambda t=task: self.reads(*t) for task in tasks]
        editors = [lambda n=name: self.edits(n) for name in names]
        films = [lambda at=at: self.exports(at) for at in range(6)]
        mixed = readers + editors + films
        self.stage.random.shuffle(mixed)
        made = together(mixed)
        check(made.count("exported") >= 1, "no export of many was done")
        check(json.loads(read(os.path.join(self.edited, "project.json")))["name"] in names, "no edit of many is the last")

    def call(self, tool, more, project=0):
        named = {} if tool in ("status", "list_export_presets", "list_projects") else {"project_id": self.ids[project]}
        with Connection(self.stage) as connection:
            return connection.call(tool, **named, **more)

    def reads(self, tool, more, wanted):
        seen = self.call(tool, more)
        if tool in ("status", "list_projects"):  # the others' edits and exports show
            check(not seen["isError"], f"{tool} fails in a crowd")
        else:
            check(seen == wanted, f"{tool} in a crowd: {json.dumps(seen)[:200]}, alone {json.dumps(wanted)[:200]}")

    def edits(self, name):
        result = self.call("edit_project", {"patch": {"name": name}}, project=1)
        check(not result["isError"] and result["structuredContent"]["changed"] is True, f"an edit in a crowd: {result}")
        return "edited"

    def exports(self, at):
        film = self.stage.path(f"film-{at}.mp4")
        result = self.call("export", {"width": 160, "height": 90, "fps": 10, "output_path": film})
        if code_of(result) == "busy":
            return "busy"
        check(not result["isError"], f"an export in a crowd: {said(result)}")
        self.stage.ffmpeg("-xerror", "-i", result["structuredContent"]["path"], "-f", "null", "-")
        os.remove(result["structuredContent"]["path"])
        return "exported"

    def crowd_waits(self):
        """Of 150 connections the first 128 are served, and the rest as soon as those end."""
        connections = [Connection(self.stage) for _ in range(150)]
        before = memory(self.process)
        try:
            for connection in connections:
                connection.ask("status")
            served, waiting = connections[:self.SERVED], connections[self.SERVED:]
            check(all(together([lambda c=c: c.result("status") for c in served])), "one of the first connections is not answered")
            answered, _, _ = select.select([each.socket for each in waiting], [], [], 0.5)
            check(not answered, f"{len(answered)} connections more than {self.SERVED} are answered")
            for connection in served:
                connection.close()
            rest = together([lambda c=c: c.result("status") for c in waiting])
            check(all(rest), "a connection that had to wait is not answered")
        finally:
            for connection in connections:
                connection.close()
        until("the connections' end", 10, lambda: self.threads() < 40)
        check(memory(self.process) < before + 100, f"{memory(self.process) - before:.0f} MiB more after 150 connections")


class BadClients(Crowd):
    """What a client of the socket does wrong costs its connection and nothing else."""

    LINE = 64 << 20

    def round(self, number):
        ways = [self.half_lines, self.long_line, self.longest_line, self.bytes_of_chance, self.slow_reader, self.leaving,
                self.strange_requests, self.other_client]
        before = memory(self.process)
        ways[number % len(ways)]()
        self.works()
        until("the connections' end", 15, lambda: self.threads() < 40)
        check(memory(self.process) < before + 500, f"{memory(self.process) - before:.0f} MiB more than before")

    def half_lines(self):
        """They wait for ten seconds; others are served meanwhile, and so is one whose line comes in pieces."""
        line = b'{"id":1,"client":"trials","tool":"status","arguments":{}}\n'
        connections = [Connection(self.stage, 20) for _ in range(30)]
        for connection in connections:
            connection.send(line[:20])
        self.works()
        connections[0].send(line[20:])
        check(not connections[0].result("status")["isError"], "a request in two pieces fails")
        began = time.monotonic()
        for connection in connections[1:]:
            check(connection.result() is None, "half a line is answered")
        check(time.monotonic() - began < 15, "half a line is waited for without end")
        for connection in connections:
            connection.close()

    def long_line(self):
        """Sent without a newline until the application has enough."""
        with Connection(self.stage) as connection:
            sent = 0
            try:
                while sent < self.LINE * 2:
                    connection.send(b"x" * (1 << 20))
                    sent += 1 << 20
            except OSError:
                pass
            check(sent <= self.LINE + (4 << 20), f"{sent} bytes of one line are taken")
            check(connection.result() is None, "a line too long is answered")

    def longest_line(self):
        with Connection(self.stage) as connection:
            connection.ask("edit_project", project_id=self.ids[1], patch={"nonsense": "x" * (self.LINE - 1000)})
            check(code_of(connection.result("edit_project")) == "invalid_patch", "the longest line is not read")

    def bytes_of_chance(self):
        for _ in range(30):
            with Connection(self.stage, 15) as connection:
                try:
                    connection.send(self.stage.random.randbytes(self.stage.random.randrange(1, 5000)) + b"\n")
                except OSError:
                    pass
                check(connection.result() is None, "bytes of chance are answered")

    def slow_reader(self):
        """It asks for the whole document again and again and reads nothing."""
        with Connection(self.stage) as connection:
            connection.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1)
            try:
                for _ in range(200):
                    connection.ask("get_project", project_id=self.ids[0])
            except OSError:
                pass  # it was given up
            self.works()
        with Connection(self.stage) as connection:  # one that reads late gets all
            connection.ask("get_project", project_id=self.ids[0])
            time.sleep(1)
            check(not connection.result("get_project")["isError"], "a late reader gets no document")

    def leaving(self):
        """At once, in the middle of the line, and before the answer."""
        for at in range(300):
            connection = Connection(self.stage)
            if at % 3 == 1:
                connection.send(b'{"id":1,"cl')
            elif at % 3 == 2:
                connection.ask("render_frame", project_id=self.ids[0], time=1)
            connection.close()

    def strange_requests(self):
        """A line that is no request ends its connection; one with a strange member is answered with a failure."""
        for line in (b"[]", b"null", b"{}", b'{"id":1}', b'{"id":1,"client":"trials","tool":"status","arguments":[]}',
                     b'{"id":"x","client":"trials","tool":"status","arguments":{}}', b"[" * 100000, b'{"a":' * 50000,
                     b'"' + b"\\u0000" * 1000 + b'"'):
            with Connection(self.stage, 15) as connection:
                connection.send(line + b"\n")
                check(connection.result() is None, f"{line[:60]} is answered")
        with Connection(self.stage) as connection:
            check(code_of(connection.call("no such tool")) == "not_found", "a tool that there is not")
            check(not connection.call("status")["isError"], "a second request over one connection fails")

    def other_client(self):
        """Only those whom the user allowed are served, by exactly their names."""
        for name in ("", "Trials", "trials ", "trials\0", "t" * 100000, "\x1b[2J"):
            with Connection(self.stage) as connection:
                connection.ask("status", client=name)
                result = connection.result("status")
                check(code_of(result) == "consent_denied", f"the client {name[:20]!r} is served")
                check(len(said(result)) < 500, "a sentence as long as the client's name")

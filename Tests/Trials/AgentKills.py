"""The application or the agents' server killed in the middle of a call: the answer says so, the next call works, and
nothing that a user made is lost."""

import json
import os
import signal
import time

from Agents import Agent, allow, application_id, code_of, end_application, said, until
from Display import VirtualDisplay
from Stage import check, leftovers, read


class AgentKills:
    """Each round kills the application or the server, or asks it to end, in the middle of a call of another kind."""

    KINDS = ("record_for", "stop_recording", "edit_project", "edit_timeline", "auto_polish", "render_frame", "export",
             "get_project", "list_projects", "list_sources", "open_project")

    def __init__(self, stage):
        self.stage = stage
        self.display = VirtualDisplay(stage)
        allow(stage)
        self.library = os.path.join(stage.home, "Movies", "Tavaro")
        os.makedirs(self.library)
        self.project = stage.project(os.path.join(self.library, "tour.recproj"))
        self.id = stage.document(self.project)["id"]
        self.film = stage.path("film.mp4")
        self.seconds = {}

    def round(self, number):
        kind = self.KINDS[number % len(self.KINDS)]
        agent = Agent(self.stage)
        try:
            check(agent.call("status")["isError"] is False, "the application does not start")
            if kind not in self.seconds:
                self.seconds[kind] = self.seconds_of(agent, kind)
            kill = (self.kill_application, self.kill_application, self.end_application, self.kill_server)[number % 4]
            kill(agent, kind, number)
        finally:
            agent.kill()

    def seconds_of(self, agent, kind):
        self.prepare(agent, kind)
        began = time.monotonic()
        result = agent.answer(self.begin(agent, kind, "round 0"))
        check(not result["isError"], f"{kind} fails: {said(result)}")
        seconds = time.monotonic() - began
        self.settle(kind)
        return seconds

    def prepare(self, agent, kind):
        if kind == "stop_recording":
            started = agent.call("start_recording", target={"display": "display-1"}, countdown=0)
            check(not started["isError"], f"no recording starts: {said(started)}")
            time.sleep(1)

    def begin(self, agent, kind, name):
        def of_project(tool, **more):
            return agent.begin(tool, project_id=self.id, **more)

        return {
            "record_for": lambda: agent.begin("record_for", target={"display": "display-1"}, seconds=2, countdown=0),
            "edit_project": lambda: of_project("edit_project", patch={"name": name}),
            "edit_timeline": lambda: of_project("edit_timeline", op="split", time=self.stage.random.uniform(0.2, 4)),
            "auto_polish": lambda: of_project("run_action", action="auto_polish"),
            "render_frame": lambda: of_project("render_frame", time=self.stage.random.uniform(0, 4)),
            "export": lambda: of_project("export", width=640, height=360, output_path=self.film),
            "get_project": lambda: of_project("get_project"),
            "open_project": lambda: of_project("open_project"),
        }.get(kind, lambda: agent.begin(kind))()

    def kill_application(self, agent, kind, number):
        """Anywhere in a call, and a little after it."""
        before, films = self.document(), self.made()
        self.prepare(agent, kind)
        process = application_id(self.stage)
        call = self.begin(agent, kind, f"round {number}")
        began = time.monotonic()
        time.sleep(self.stage.random.uniform(0, self.seconds[kind] * 1.1))
        has_taken = self.has_taken()
        os.kill(process, signal.SIGKILL)
        result = agent.answer(call, 30)
        waited = time.monotonic() - began - self.seconds[kind] * 1.1
        check(not result["isError"] or code_of(result) == "interrupted", f"{kind}: {said(result)}")
        check(waited < 3 or not result["isError"], f"{kind}: the answer came {waited:.1f} s after the kill")
        until("the killed process's end", 5, lambda: application_id(self.stage) != process)
        after = self.document()
        self.check_document(kind, before, after, None if result["isError"] else f"round {number}")
        if has_taken or kind == "record_for" and not result["isError"]:
            self.check_take(films)
        self.go_on(agent, kind, number, process)
        self.settle(kind)

    def go_on(self, agent, kind, number, process):
        """After the end of the process the next call starts another, in which all works."""
        status = agent.call("status", 25)
        check(not status["isError"], f"the next call fails: {said(status)}")
        check(application_id(self.stage) != process, "the next call is answered by a dead process")
        if kind in ("edit_project", "edit_timeline", "auto_polish"):
            check(not agent.answer(self.begin(agent, "edit_project", f"mended {number}"))["isError"], "the next edit fails")
            check(not leftovers(self.project), f"the next edit leaves {leftovers(self.project)}")

    def end_application(self, agent, kind, number):
        """A signal that asks for the end: the recording is saved, the export is cancelled, all else is done or not."""
        before, films = self.document(), self.made()
        self.prepare(agent, kind)
        process = application_id(self.stage)
        call = self.begin(agent, kind, f"round {number}")
        time.sleep(self.stage.random.uniform(0, self.seconds[kind] * 1.1))
        has_taken = self.has_taken()
        end_application(self.stage)
        result = agent.answer(call, 30)
        check(not result["isError"] or code_of(result) in ("interrupted", "failed"), f"{kind}: {said(result)}")
        self.check_document(kind, before, self.document(), None if result["isError"] else f"round {number}")
        if has_taken or kind in ("stop_recording", "record_for") and not result["isError"]:
            check(self.made() > films, f"the end of the application left no project of its recording: {said(result)}")
        check(not self.offered(), "the end of the application left an unfinished recording")
        check(kind != "export" or os.path.exists(self.film) != result["isError"], f"an export that was answered with: {said(result)}")
        self.go_on(agent, kind, number, process)
        self.settle(kind)

    def check_document(self, kind, before, after, done):
        changed = {key for key in after if after[key] != before.get(key)} - {"modifiedAt"}
        if kind == "edit_project":
            check(changed <= {"name"}, f"an edit of the name changed {changed}")
            check(done is None or after["name"] == done, f"an edit that was answered is lost: {after['name']!r}, not {done!r}")
        elif kind == "edit_timeline":
            check(changed <= {"timeline"}, f"an edit of the timeline changed {changed}")
        elif kind != "auto_polish":
            check(not changed, f"{kind} changed {changed}")
        if kind == "export" and os.path.exists(self.film):
            self.stage.ffmpeg("-xerror", "-i", self.film, "-f", "null", "-")
        backup = os.path.join(self.project, "project.previous.json")
        if os.path.exists(backup):
            json.loads(read(backup))

    def has_taken(self):
        """Whether a recording under way has pictures."""
        recordings = os.path.join(self.stage.home, "data", "Tavaro", "Recordings")
        return any(name.startswith("segment") and size(os.path.join(place, name)) > 1 << 14
                   for place, _, names in os.walk(recordings) for name in names)

    def check_take(self, films):
        """What was recorded is a project of the library, or is offered for recovery and can be recovered."""
        if self.made() > films:
            return
        offered = self.offered()
        check(len(offered) == 1, f"a killed recording: {len(offered)} are offered for recovery")
        made = self.stage.path("recovered.recproj")
        self.stage.run("recover", "last", "-o", made)
        check(max(self.stage.document(made)["assetDurations"].values()) > 0, "the recovered recording is empty")
        self.stage.remove(made)

    def offered(self):
        """The unfinished recordings."""
        return [each["id"] for each in json.loads(self.stage.run("recover", "--json").output)]

    def kill_server(self, agent, kind, number):
        """The application goes on: what was asked for is done."""
        before, films = self.document(), self.made()
        self.prepare(agent, kind)
        process = application_id(self.stage)
        self.begin(agent, kind, f"round {number}")
        time.sleep(self.stage.random.uniform(0.05, max(0.06, self.seconds[kind])))
        has_taken = self.has_taken()
        agent.end(self.stage.random.choice(["input", signal.SIGTERM, signal.SIGKILL]))
        other = Agent(self.stage)
        try:
            until(f"rest after {kind}", 30, lambda: self.is_idle(other))
            check(application_id(self.stage) == process, f"{kind}: the application did not live on")
            if kind == "export":
                until("the film that nobody waits for", 5, lambda: os.path.exists(self.film))
            if kind == "stop_recording" or kind == "record_for" and has_taken:
                until("the project of the recording", 5, lambda: self.made() > films)
            self.check_document(kind, before, self.document(), None)
            check(not other.answer(self.begin(other, "edit_project", f"mended {number}"))["isError"], "the next edit fails")
        finally:
            other.end()
        self.settle(kind)

    def is_idle(self, agent):
        status = agent.call("status")["structuredContent"]
        return status["recorder"]["phase"] == "idle" and not status["exporting"]

    def document(self):
        return json.loads(read(os.path.join(self.project, "project.json")))

    def made(self):
        return {name for name in os.listdir(self.library) if name.endswith(".recproj")}

    def settle(self, kind):
        if kind == "export" and os.path.exists(self.film):
            os.remove(self.film)
        for identity in self.offered():
            self.stage.run("recover", identity, "--discard")
        for name in self.made() - {"tour.recproj"}:
            self.stage.remove(os.path.join(self.library, name))

    def end(self):
        end_application(self.stage)
        self.display.end()


def size(path):
    try:
        return os.path.getsize(path)
    except OSError:
        return 0

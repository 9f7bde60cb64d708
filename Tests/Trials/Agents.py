"""Agents: clients of the real `tavaro-mcp`, and clients of the application's socket itself."""

import json
import os
import queue
import signal
import socket
import struct
import subprocess
import time
from threading import Thread

from Stage import Fault, check, write

CODES = {"invalid_arguments", "permission_missing", "consent_denied", "mcp_disabled", "busy", "not_recording", "not_found",
         "invalid_patch", "needs_voice_key", "app_unreachable", "interrupted", "failed"}
CLIENT = "trials"


def allow(stage):
    """Lets the client of the trials do everything, also click and type."""
    folder = os.path.join(stage.home, "config", "Tavaro")
    os.makedirs(folder, exist_ok=True)
    write(os.path.join(folder, "preferences.json"),
          json.dumps({"com.tavaro.mcp.allowed": [CLIENT], "com.tavaro.mcp.clicks": [CLIENT]}))


def socket_path(stage):
    return os.path.join(stage.home, "data", "Tavaro", "mcp.sock")


def application_id(stage):
    """The process that answers at the socket; none where nobody does."""
    with socket.socket(socket.AF_UNIX) as made:
        try:
            made.connect(socket_path(stage))
        except OSError:
            return None
        return struct.unpack("3i", made.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12))[0]


def end_application(stage, how=signal.SIGTERM, limit=30):
    """Ends the application, if there is one, and waits for its end."""
    process = application_id(stage)
    if process is None:
        return
    os.kill(process, how)
    until(f"the application's end by {how.name}", limit, lambda: application_id(stage) != process)


def memory(process):
    """What the process keeps in memory, in MiB."""
    with open(f"/proc/{process}/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE") / (1 << 20)


def until(what, seconds, condition):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        made = condition()
        if made:
            return made
        time.sleep(0.01)
    raise Fault(f"waited {seconds} s for {what}")


def judged(tool, result):
    """The result of a tool, which is well-formed whatever was asked."""
    text = f"{tool}: {json.dumps(result)[:300]}"
    check(isinstance(result, dict) and isinstance(result.get("isError"), bool), "no result of a tool: " + text)
    check(result.get("content") and all(block["type"] in ("text", "image") for block in result["content"]), "no content: " + text)
    if result["isError"]:
        failure = result.get("structuredContent", {})
        check(failure.get("code") in CODES, "no code: " + text)
        check(failure.get("message") and failure["message"] == result["content"][0]["text"], "no sentence: " + text)
    return result


def code_of(result):
    return result["structuredContent"]["code"] if result["isError"] else None


def said(result):
    """The sentence of a result, behind its picture where it has one."""
    return result["content"][-1]["text"]


class Agent:
    """A client of a `tavaro-mcp` of its own."""

    def __init__(self, stage, client=CLIENT):
        self.process = subprocess.Popen([os.path.join(os.path.dirname(stage.program), "tavaro-mcp")], env=stage.environment,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.heard = queue.Queue()
        self.kept = {}
        self.progress = []
        self.count = 0
        self.listener = Thread(target=self.listen, daemon=True)
        self.listener.start()
        self.answer(self.ask("initialize", {"clientInfo": {"name": client}}))

    def listen(self):
        for line in self.process.stdout:
            self.heard.put(line)
        self.heard.put(None)

    def send(self, line):
        try:
            self.process.stdin.write(line + b"\n")
            self.process.stdin.flush()
        except OSError:
            raise Fault("tavaro-mcp reads no more") from None

    def ask(self, method, parameters):
        self.count += 1
        self.send(json.dumps({"jsonrpc": "2.0", "id": self.count, "method": method, "params": parameters}).encode())
        return self.count

    def begin(self, tool, /, **arguments):
        return self.ask("tools/call", {"name": tool, "arguments": arguments, "_meta": {"progressToken": self.count + 1}})

    def call(self, tool, limit=60, /, **arguments):
        return judged(tool, self.answer(self.begin(tool, **arguments), limit))

    def answer(self, number, limit=60):
        """What a request gives; what other requests gave meanwhile is kept for them."""
        deadline = time.monotonic() + limit
        while number not in self.kept:
            try:
                line = self.heard.get(timeout=max(0.001, deadline - time.monotonic()))
            except queue.Empty:
                raise Fault(f"no answer within {limit} s") from None
            if line is None:
                raise Fault("tavaro-mcp has ended")
            self.take(line)
        return self.kept.pop(number)

    def take(self, line):
        check(len(line) <= 9 << 20, f"a line of {len(line)} bytes")
        message = json.loads(line)
        check(message.get("jsonrpc") == "2.0", f"no message: {line[:200]}")
        if "method" in message:
            check(0 <= message["params"]["progress"] <= 1, f"no progress: {line[:200]}")
            self.progress.append(message["params"])
        else:
            check(("result" in message) != ("error" in message), f"no answer: {line[:200]}")
            self.kept[json_key(message["id"])] = message.get("result", message)

    def kill(self):
        self.process.kill()
        self.process.wait()

    def end(self, how="input"):
        """By the end of its input or by a signal, which takes a second at most."""
        try:
            self.process.stdin.close() if how == "input" else self.process.send_signal(how)
        except OSError:
            pass
        try:
            self.process.wait(1.5)
        except subprocess.TimeoutExpired:
            self.kill()
            raise Fault(f"tavaro-mcp runs on after {how}") from None


def json_key(identity):
    return identity if isinstance(identity, (int, str)) else json.dumps(identity)


class Connection:
    """A connection to the application's socket."""

    def __init__(self, stage, limit=60):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(limit)
        try:
            self.socket.connect(socket_path(stage))
        except OSError as error:
            raise Fault(f"no connection to the application: {error}") from None
        self.reader = self.socket.makefile("rb")

    def send(self, content):
        self.socket.sendall(content)

    def ask(self, tool, /, client=CLIENT, **arguments):
        self.send(json.dumps({"id": 1, "client": client, "tool": tool, "arguments": arguments}).encode() + b"\n")

    def result(self, tool=""):
        """The result, behind any progress; none where the connection ends."""
        while True:
            try:
                line = self.reader.readline()
            except TimeoutError:
                raise Fault(f"{tool}: no answer within {self.socket.gettimeout()} s") from None
            except OSError:
                return None
            if not line.endswith(b"\n"):
                return None
            reply = json.loads(line)
            if "result" in reply:
                return judged(tool, reply["result"])

    def call(self, tool, /, **arguments):
        self.ask(tool, **arguments)
        return self.result(tool)

    def close(self):
        self.reader.close()
        self.socket.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

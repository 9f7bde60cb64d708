"""An agent beside the user, by the real server: it asks, is answered by keys, patches the project that is open, and the
window follows; undo takes that back. Another is refused, and is then refused without a question."""

import json
import subprocess
import time

PATIENCE = 30  # seconds for what is to happen
QUESTION = ("It will be able to record your screen, edit your projects and export videos. Recordings it starts are labelled "
            "in the recorder bar. You can change this in Settings → MCP.")


class Agent:
    def __init__(self, program, name, environment):
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, env=environment)
        self.last = 0
        self.send("initialize", protocolVersion="2025-06-18", capabilities={}, clientInfo={"name": name, "version": "1"})
        self.process.stdin.write(json.dumps({"jsonrpc": "2.0", "method": "notifications/initialized"}) + "\n")

    def send(self, method, **parameters):
        self.last += 1
        message = {"jsonrpc": "2.0", "id": self.last, "method": method, "params": parameters}
        self.process.stdin.write(json.dumps(message) + "\n")
        self.process.stdin.flush()
        return self.last

    def call(self, tool, **arguments):
        return self.send("tools/call", name=tool, arguments=arguments)

    def answer(self, call):
        for line in self.process.stdout:
            message = json.loads(line)
            if message.get("id") == call:
                return message["result"]
        raise SystemExit("the call had no answer")

    def end(self):
        self.process.stdin.close()
        self.process.wait(PATIENCE)


def await_it(what, is_so):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        if is_so():
            return
        time.sleep(0.05)
    raise SystemExit(f"waited in vain for {what}")


def key(name):
    subprocess.run(["xdotool", "key", "--clearmodifiers", name], check=True)


def has_focus(tree, name):
    found = tree.find(name, "push button")
    node = getattr(found, "node", found)
    return node is not None and node.get_state_set().contains(tree.atspi.StateType.FOCUSED)


def answer_by_keys(tree, button):
    """As somebody without a mouse does: Tab to the button, then the space bar."""
    tree.expect(button, "push button")
    for _ in range(8):
        if has_focus(tree, button):
            return key("space")
        key("Tab")
        time.sleep(0.2)
    raise SystemExit(f"Tab does not lead to “{button}”")


def agent_beside(tree, mcp, document, environment=None):
    """`document` is the one in the window."""
    name, project = document["name"], document["id"]
    agent = Agent(mcp, "new-agent", environment)
    call = agent.call("edit_project", project_id=project, patch={"name": name + " by an agent"})
    tree.expect("new-agent wants to control Tavaro")
    tree.expect(QUESTION)
    answer_by_keys(tree, "Allow")
    tree.expect_gone("new-agent wants")
    if agent.answer(call).get("isError"):
        raise SystemExit("an agent that is allowed is refused")
    tree.expect(f"The film of {name} by an agent")
    tree.expect("Undo Change Project (new-agent)", "push button")
    key("ctrl+z")
    tree.expect_gone(f"The film of {name} by an agent")
    tree.expect(f"The film of {name}")
    agent.end()
    refused(tree, mcp, environment)


def refused(tree, mcp, environment):
    agent = Agent(mcp, "unwanted", environment)
    call = agent.call("status")
    tree.expect("unwanted wants to control Tavaro")
    answer_by_keys(tree, "Deny")
    words = "unwanted isn't allowed to control Tavaro. Allow it in Tavaro → Settings → MCP."
    for _ in range(2):  # the second time at once: a question would keep it waiting
        result = agent.answer(call)
        if not result.get("isError") or words not in json.dumps(result, ensure_ascii=False):
            raise SystemExit(f"a refusal reads {result}")
        call = agent.call("status")
    agent.answer(call)
    if tree.find("unwanted wants"):
        raise SystemExit("one that is refused is asked for again")
    agent.end()

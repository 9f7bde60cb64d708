#!/usr/bin/python3
"""A page to type into and to scroll, in Chromium; says the same as gtk.py, as the page tells it here by HTTP."""

import http.server
import json
import shutil
import signal
import subprocess
import sys
import tempfile

PAGE = """<!doctype html><title>Sink</title>
<style>body { margin: 0 } textarea { width: 590px; height: 110px; display: block }
#list { height: 330px; overflow: scroll; white-space: nowrap; font: 14px sans-serif }</style>
<textarea spellcheck=false autofocus></textarea><div id=list></div>
<script>
let said = {}, sending = Promise.resolve();
const say = (what, value) => {
  if (said[what] === value) return;
  said[what] = value;
  sending = sending.then(() => fetch("/", {method: "POST", body: JSON.stringify({[what]: value})}));
};
const list = document.getElementById("list"), text = document.querySelector("textarea");
for (let i = 0; i < 400; ++i) {
  const row = document.createElement("div");
  row.textContent = `Row ${i}: ` + [...Array(40).keys()]
    .map(k => `${(i + 1) * (k + 3) * 7919 % 10007} of ${i * i + k},`).join(" ");
  list.append(row);
}
setInterval(() => { if (text.value) say("text", text.value); }, 40);
list.onscroll = () => { say("down", list.scrollTop); say("right", list.scrollLeft); };
text.focus();
requestAnimationFrame(() => setTimeout(() => say("ready", true), 300));
</script>"""


class Page(http.server.BaseHTTPRequestHandler):
    def answer(self, kind, body):
        self.send_response(200)
        self.send_header("Content-Type", kind)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def do_GET(self):
        self.answer("text/html; charset=utf-8", PAGE.encode())

    def do_POST(self):
        said = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        print(json.dumps(said), flush=True)
        self.answer("text/plain", b"")

    def log_message(self, *_):
        pass


server = http.server.HTTPServer(("127.0.0.1", 0), Page)
profile = tempfile.mkdtemp(prefix="tavaro-sink-")
browser = subprocess.Popen(
    ["chromium", f"--app=http://127.0.0.1:{server.server_port}/", f"--user-data-dir={profile}", "--no-sandbox"]
    + ["--no-first-run", "--disable-gpu", "--window-size=600,480", "--window-position=0,0", "--password-store=basic"],
    stdout=subprocess.DEVNULL,
)


def end(*_):
    browser.terminate()
    browser.wait()
    shutil.rmtree(profile, ignore_errors=True)
    sys.exit(0)


signal.signal(signal.SIGTERM, end)
server.serve_forever()

// Where the session happens: a home that nobody else uses, a virtual display, and a real application on it.

import { execFile, spawn } from "node:child_process";
import { cpSync, mkdirSync, mkdtempSync, readFileSync, readdirSync, readlinkSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { setTimeout as pause } from "node:timers/promises";
import { promisify } from "node:util";

const execute = promisify(execFile);

export class Stage {
    #started = [];

    /** `programs` is the folder of `tavaro` and `tavaro-mcp`; `demo`, of the demo's application and its settings. */
    constructor(programs, demo) {
        this.programs = programs;
        this.demo = demo;
        this.root = mkdtempSync(join(tmpdir(), "tavaro-check-mcp-"));
        this.home = this.path("home");
        mkdirSync(this.home);
        mkdirSync(this.path("run"), { mode: 0o700 });
        const { WAYLAND_DISPLAY, XDG_SESSION_TYPE, ...inherited } = process.env;
        this.environment = {
            ...inherited,
            HOME: this.home,
            XDG_DATA_HOME: this.path("data"),
            XDG_CONFIG_HOME: this.path("config"),
            XDG_STATE_HOME: this.path("state"),
            XDG_CACHE_HOME: this.path("cache"),
            XDG_RUNTIME_DIR: this.path("run"),
            GTK_THEME: "Adwaita",
        };
    }

    path(...parts) {
        return join(this.root, ...parts);
    }

    program(name) {
        return join(this.programs, name);
    }

    async openDisplay() {
        const display = this.start(
            "Xvfb",
            ["-displayfd", "3", "-screen", "0", "1280x720x24", "-nolisten", "tcp", "-noreset"],
            {
                stdio: ["ignore", "ignore", "ignore", "pipe"],
            },
        );
        const number = await new Promise((given, failed) => {
            display.stdio[3].once("data", (bytes) => given(String(bytes).trim()));
            display.once("exit", () => failed(new Error("The virtual display ended at once.")));
            display.once("error", failed);
        });
        this.environment.DISPLAY = `:${number}`;
        this.start("openbox", ["--config-file", join(this.demo, "openbox.xml")]);
    }

    /** An editor with a file, which fills the display. */
    async openEditor() {
        cpSync(join(this.demo, "geany"), this.path("geany"), { recursive: true });
        cpSync(join(this.demo, "films.py"), this.path("films.py"));
        this.start("dbus-run-session", ["--", "geany", "-c", this.path("geany"), "-i", "-s", this.path("films.py")]);
        await until("the editor's window", 30, () => this.act("search", "--onlyvisible", "--class", "Geany"));
        await pause(1500); // the window paints its first frames
    }

    /** Lets a hand act on the display, by xdotool's words. False where it could not. */
    async act(...words) {
        return (await this.run("xdotool", words.map(String))).code === 0;
    }

    /** Runs a command to its end: { code, output, words }. */
    async run(command, parameters, { folder, binary = false } = {}) {
        const options = {
            env: this.environment,
            cwd: folder,
            timeout: 120_000,
            maxBuffer: 1 << 28,
            encoding: binary ? "buffer" : "utf8",
        };
        try {
            const { stdout, stderr } = await execute(command, parameters, options);
            return { code: 0, output: stdout, words: String(stderr) };
        } catch (error) {
            return { code: error.code ?? error.signal, output: error.stdout, words: String(error.stderr ?? error) };
        }
    }

    start(command, parameters, options = {}) {
        const child = spawn(command, parameters, { stdio: "ignore", env: this.environment, detached: true, ...options });
        child.on("error", (error) => console.log(`${command}: ${error.message}`));
        this.#started.push(child);
        return child;
    }

    /** The processes of a program that run in this home, by id. */
    running(program) {
        return readdirSync("/proc")
            .filter((id) => /^\d+$/.test(id) && isOurs(id, program, this.home))
            .map(Number);
    }

    async end() {
        for (const id of [...this.running("tavaro-mcp"), ...this.running("tavaro")]) signal(id, "SIGTERM");
        await until("the application's end", 20, () => this.running("tavaro").length === 0).catch(() => {});
        for (const id of this.running("tavaro")) signal(id, "SIGKILL");
        for (const child of this.#started) signal(-child.pid, "SIGTERM");
        await pause(200);
        rmSync(this.root, { recursive: true, force: true, maxRetries: 5 });
    }
}

function isOurs(id, program, home) {
    try {
        if (!readlinkSync(`/proc/${id}/exe`).endsWith("/" + program)) return false;
        return readFileSync(`/proc/${id}/environ`, "latin1").split("\0").includes(`HOME=${home}`);
    } catch {
        return false; // it has ended, or is another user's
    }
}

function signal(id, name) {
    try {
        process.kill(id, name);
    } catch {
        // it has ended
    }
}

/** Waits until the condition gives something true, and gives that. */
export async function until(what, seconds, condition) {
    const deadline = performance.now() + seconds * 1000;
    while (performance.now() < deadline) {
        const made = await condition();
        if (made) return made;
        await pause(50);
    }
    throw new Error(`Waited ${seconds} s for ${what}.`);
}

export { pause };

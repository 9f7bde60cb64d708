// What a client may do in the middle: turn away, leave, or ask for more than one thing at once.

import { existsSync, readdirSync } from "node:fs";

import { Agent } from "./Agent.mjs";
import { filmIn } from "./Media.mjs";
import { pause, until } from "./Stage.mjs";

export class Interruptions {
    constructor(stage, agent, report, ours) {
        Object.assign(this, { stage, agent, report, ours });
    }

    async run() {
        for (const step of ["turns", "cancellation", "leavingAnExport", "leavingARecording", "anotherClient"])
            await this.report.step(step, () => this[step]());
    }

    /** Calls are answered in their order, while what is no call is answered at once. */
    async turns() {
        const { report, agent, ours } = this;
        const order = [];
        const noted = (name, promise) => promise.then((answer) => (order.push(name), answer));
        const film = noted(
            "export",
            agent.call("export", {
                project_id: ours.second,
                width: 640,
                height: 360,
                output_path: this.stage.path("turns.mp4"),
            }),
        );
        const status = noted("status", agent.call("status"));
        const tools = noted("list", agent.client.listTools());
        const ping = noted("ping", agent.client.ping());
        const answers = await Promise.all([film, status, tools, ping]);
        report.equal("the order of answers", order, ["list", "ping", "export", "status"]);
        report.check("the export succeeds", !answers[0].failed, answers[0].text);
        report.equal("whether the status still exports", answers[1].structured.exporting, false);
    }

    /** A client that gives a call up gets no answer to it, and the next call works. */
    async cancellation() {
        const { report, agent, ours, stage } = this;
        const given = new AbortController();
        const output_path = stage.path("cancelled.mp4");
        const film = agent.call(
            "export",
            { project_id: ours.second, preset: "youtube-1080", output_path },
            { signal: given.signal },
        );
        setTimeout(() => given.abort("changed my mind"), 20);
        const outcome = await film.then(
            () => "answered",
            (error) => String(error.message ?? error),
        );
        report.match("the call", outcome, /changed my mind/);
        report.equal("the next call", (await agent.must("status")).text, "Tavaro status");
        await until("the export's end", 60, async () => !(await agent.must("status")).structured.exporting);
        report.check(
            "a film under its name is whole",
            !existsSync(output_path) || (await filmIn(stage, output_path)).frames > 0,
        );
    }

    async leavingAnExport() {
        const { report, stage, ours } = this;
        const leaver = await Agent.meet(stage, "check-mcp");
        const output_path = stage.path("left.mp4");
        leaver.call("export", { project_id: ours.second, preset: "youtube-1080", output_path }).catch(() => {});
        await this.busy("exporting");
        report.check("the server ends within a second", (await this.secondsToEnd(leaver)) < 1);
        await until("the film that nobody waits for", 60, () => existsSync(output_path));
        report.check("the film plays", (await filmIn(stage, output_path)).frames > 0);
    }

    async leavingARecording() {
        const { report, stage, agent, ours } = this;
        const before = await this.projects();
        const leaver = await Agent.meet(stage, "check-mcp");
        leaver.call("record_for", { target: { display: ours.display }, seconds: 60, countdown: 0 }).catch(() => {});
        await this.busy("recording");
        await pause(1500);
        report.check("the server ends within a second", (await this.secondsToEnd(leaver)) < 1);
        await until(
            "the recorder's rest",
            30,
            async () => (await agent.must("status")).structured.recorder.phase === "idle",
        );
        const made = (await this.projects()).filter(({ id }) => !before.some((known) => known.id === id));
        report.equal("the projects that it leaves", made.length, 1);
        report.check("what was recorded so far is kept", made[0]?.duration > 1 && made[0]?.duration < 10, made[0]);
    }

    /** Consent is each client's own. */
    async anotherClient() {
        const { report, stage, agent } = this;
        const stranger = await Agent.meet(stage, "stranger");
        report.equal("a stranger", (await stranger.call("status")).code, "consent_denied");
        report.check("the one that was allowed still is", !(await agent.call("status")).failed);
        const off = await stage.run(stage.program("tavaro"), ["mcp", "off"]);
        report.equal("the exit code of 'tavaro mcp off'", off.code, 0);
        report.equal("switched off", (await agent.call("status")).code, "mcp_disabled");
        await stage.run(stage.program("tavaro"), ["mcp", "on"]);
        report.check("and on again", !(await agent.call("status")).failed);
        await stranger.close();
    }

    async projects() {
        return (await this.agent.must("list_projects", { limit: 200 })).structured.projects;
    }

    async busy(what) {
        await until(`the application to be ${what}`, 20, async () => {
            const { recorder, exporting } = (await this.agent.must("status")).structured;
            return what === "exporting" ? exporting : recorder.phase === what;
        });
    }

    /** From the end of its input. */
    async secondsToEnd(agent) {
        const id = agent.process;
        const began = performance.now();
        agent.close().catch(() => {});
        await until("the server's end", 10, () => !isRunning(id));
        return (performance.now() - began) / 1000;
    }
}

function isRunning(id) {
    try {
        return readdirSync(`/proc/${id}/fd`) !== undefined;
    } catch {
        return false;
    }
}

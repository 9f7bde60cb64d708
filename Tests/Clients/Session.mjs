// A whole session as an agent has it: from the sources to a film that plays.

import { existsSync, writeFileSync } from "node:fs";

import { AjvJsonSchemaValidator } from "@modelcontextprotocol/sdk/validation/ajv";

import { longestSilence } from "./Agent.mjs";
import { filmIn, pictureIn } from "./Media.mjs";
import { pause } from "./Stage.mjs";

const TOOLS = [
    "status",
    "list_sources",
    "start_recording",
    "stop_recording",
    "pause_recording",
    "resume_recording",
    "cancel_recording",
    "record_for",
    "list_projects",
    "open_project",
    "get_project",
    "edit_project",
    "edit_timeline",
    "run_action",
    "render_frame",
    "list_export_presets",
    "export",
    "ui_open_app",
    "ui_elements",
    "ui_click",
    "ui_scroll",
    "ui_keys",
    "ui_screenshot",
];

/** The steps share `ours`: what one finds and the next needs. */
export class Session {
    constructor(stage, agent, report) {
        Object.assign(this, { stage, agent, report, ours: {} });
    }

    async run() {
        const steps = [
            "introduction",
            "catalogue",
            "consent",
            "sources",
            "recordingOfAWindow",
            "recordingOfADisplay",
            "recordingByHand",
            "reading",
            "patches",
            "timeline",
            "transcript",
            "actions",
            "frames",
            "exports",
            "refusals",
        ];
        for (const step of steps) await this.report.step(step, () => this[step]());
    }

    async introduction() {
        const { report, agent, stage } = this;
        const version = (await stage.run(stage.program("tavaro-mcp"), ["--version"])).output.trim().split(" ")[1];
        report.equal("the server", agent.client.getServerVersion(), { name: "tavaro", version });
        report.equal("its capabilities", agent.client.getServerCapabilities(), { tools: { listChanged: false } });
        report.match("its instructions", agent.client.getInstructions(), /list_sources → record_for → .* → export\.$/);
    }

    async catalogue() {
        const { report } = this;
        const { tools } = await this.agent.client.listTools();
        report.equal(
            "the tools",
            tools.map((tool) => tool.name),
            TOOLS,
        );
        const validator = new AjvJsonSchemaValidator();
        this.ours.accepts = {};
        for (const tool of tools) {
            const validate = validator.getValidator(tool.inputSchema);
            this.ours.accepts[tool.name] = (given) => validate(given).valid;
            report.equal(`${tool.name}: whether an unknown argument is valid`, validate({ nonsense: 1 }).valid, false);
            report.check(`${tool.name} says what it is for`, tool.description?.length > 10, tool.description);
        }
        const accepts = this.ours.accepts.record_for;
        report.check("a recording is valid", accepts({ target: { display: "display-1" }, seconds: 5 }));
        report.check("one of 601 s is not", !accepts({ target: { display: "display-1" }, seconds: 601 }));
    }

    /** Nobody can be asked here, so the client is refused until the user allows it. */
    async consent() {
        const { report, agent, stage } = this;
        const refused = await agent.call("status");
        report.equal("the code for a stranger", refused.code, "consent_denied");
        report.match(
            "the sentence for a stranger",
            refused.text,
            /^check-mcp isn't allowed to control Tavaro\. Allow it in /,
        );
        const allowed = await stage.run(stage.program("tavaro"), ["mcp", "allow", "check-mcp"]);
        report.equal("the exit code of 'tavaro mcp allow'", allowed.code, 0);
        const status = await agent.must("status");
        report.equal("the title of the status", status.text, "Tavaro status");
        report.equal("the recorder", status.structured.recorder.phase, "idle");
        report.equal("the open project", status.structured.project, null);
        report.equal("whether it exports", status.structured.exporting, false);
    }

    async sources() {
        const { report, ours } = this;
        const { structured, text } = await this.agent.must("list_sources");
        report.equal("the title", text, "Recordable sources");
        report.equal(
            "the displays",
            structured.displays.map(({ frame }) => [frame.width, frame.height]),
            [[1280, 720]],
        );
        ours.display = structured.displays[0].id;
        const window = structured.windows.find(({ application }) => /geany/i.test(application));
        if (report.check("the editor is among the windows", window, structured.windows)) ours.window = window.id;
    }

    async recordingOfAWindow() {
        const { report, agent, ours } = this;
        const recording = agent.call("record_for", { target: { window: ours.window }, seconds: 5, countdown: 0 });
        const pings = this.pings(recording);
        await this.perform();
        const made = await recording;
        report.check("the recording succeeds", !made.failed, made.text);
        report.match("the summary", made.text, /\(\d+\.\d s\)\. Auto Polish has run\.$/);
        report.near("the film's seconds", made.structured.duration, 5, 1);
        report.check("the client hears something each second", longestSilence(made) < 1.1, longestSilence(made));
        report.check("progress rises", rises(made.progress), made.progress);
        const slowest = Math.max(...(await pings));
        report.check("a ping meanwhile takes less than 250 ms", slowest < 250, slowest);
        ours.project = made.structured.project_id;
    }

    /** Milliseconds of pings, one after another until the call ends. */
    async pings(call) {
        const taken = [];
        let isOver = false;
        call.finally(() => (isOver = true)).catch(() => {});
        while (!isOver) {
            const began = performance.now();
            await this.agent.client.ping();
            taken.push(performance.now() - began);
            await pause(100);
        }
        this.report.check("pings were answered meanwhile", taken.length > 5, taken.length);
        return taken;
    }

    /** Four seconds at the editor. */
    async perform() {
        const { stage } = this;
        await pause(700);
        await stage.act("mousemove", 300, 300, "sleep", 0.3, "click", 1);
        await stage.act("key", "--delay", 40, "End", "Return", "f", "i", "l", "m", "s");
        await pause(500);
        await stage.act("mousemove", 800, 420, "sleep", 0.3, "click", 1);
        await stage.act("key", "ctrl+s");
        await pause(500);
    }

    async recordingOfADisplay() {
        const { report, ours } = this;
        const made = await this.agent.must("record_for", { target: { display: ours.display }, seconds: 2, countdown: 1 });
        report.near("the film's seconds", made.structured.duration, 2, 0.7);
        report.check("the countdown is waited for", made.seconds >= 3, made.seconds);
        const phases = new Set(made.progress.map(({ message }) => message));
        report.check("the phases are named", phases.has("countdown") && phases.has("recording"), [...phases]);
        ours.second = made.structured.project_id;
    }

    async recordingByHand() {
        const { report, agent, ours } = this;
        const target = { display: ours.display };
        report.match(
            "the start",
            (await agent.must("start_recording", { target, countdown: 0 })).text,
            /^Recording\. Call stop_recording/,
        );
        report.equal("a second start", (await agent.call("start_recording", { target })).code, "busy");
        await agent.must("pause_recording");
        report.equal("the phase", (await agent.must("status")).structured.recorder.phase, "paused");
        await agent.must("resume_recording");
        report.equal("resuming again", (await agent.call("resume_recording")).text, "The recording isn't paused.");
        await pause(1000);
        const made = await agent.must("stop_recording");
        report.check("what was recorded is a project", made.structured.project_id, made);
        report.equal("stopping again", (await agent.call("stop_recording")).code, "not_recording");
        const area = { display: ours.display, x: 100, y: 100, width: 640, height: 360 };
        await agent.must("start_recording", { target: { area }, aspect: "16:9", countdown: 0 });
        report.equal("cancelling", (await agent.must("cancel_recording")).text, "Recording thrown away.");
    }

    async reading() {
        const { report, agent, ours } = this;
        const { projects } = (await agent.must("list_projects")).structured;
        report.equal("the number of projects", projects.length, 3);
        report.equal("the oldest", projects[2]?.id, ours.project);
        report.equal("with a limit", (await agent.must("list_projects", { limit: 1 })).structured.projects.length, 1);
        await agent.must("open_project", { project_id: ours.project });
        report.equal("the open project", (await agent.must("status")).structured.project.id, ours.project);
        const view = (await agent.must("get_project", { project_id: ours.project })).structured;
        report.near("its duration", view.duration, 5, 1);
        report.equal("its clicks", view.metadata.clicks.length, 2);
        report.check(
            "its shortcut",
            view.metadata.keystrokes.some(({ isShortcut }) => isShortcut),
            view.metadata.keystrokes,
        );
        report.check("zooms follow the clicks", view.zoomEvents.length > 0, view.zoomEvents);
        report.check(
            "samples are left out",
            !("cursorSamples" in view.metadata) && !("cameraFaces" in view),
            Object.keys(view.metadata),
        );
    }

    async patches() {
        const { report, agent, ours } = this;
        const project_id = ours.project;
        const patch = { name: "Checked", cursor: { size: 2 } };
        const before = (await agent.must("get_project", { project_id })).structured;
        report.equal(
            "whether it changes",
            (await agent.must("edit_project", { project_id, patch })).structured.changed,
            true,
        );
        report.equal(
            "whether it changes again",
            (await agent.must("edit_project", { project_id, patch })).structured.changed,
            false,
        );
        const unknown = await agent.call("edit_project", { project_id, patch: { name: "Lost", nonsense: 1 } });
        report.equal(
            "an unknown field",
            `${unknown.code}: ${unknown.text}`,
            'invalid_patch: "nonsense" is not a project field. Check get_project for the names.',
        );
        const guarded = await agent.call("edit_project", { project_id, patch: { timeline: {} } });
        report.equal(
            "a guarded field",
            `${guarded.code}: ${guarded.text}`,
            'invalid_patch: "timeline" can\'t be changed. Use edit_timeline.',
        );
        const wrong = await agent.call("edit_project", { project_id, patch: { canvas: { width: "wide" } } });
        report.equal("a value of a wrong type", wrong.code, "invalid_patch");
        report.match("its sentence", wrong.text, /canvas\.width/);
        const after = (await agent.must("get_project", { project_id })).structured;
        const changed = Object.keys(after).filter(
            (key) => key !== "modifiedAt" && JSON.stringify(after[key]) !== JSON.stringify(before[key]),
        );
        report.equal("what has changed", changed.sort(), ["cursor", "name"]);
        report.equal("the pointer", after.cursor, { ...before.cursor, size: 2 });
    }

    async timeline() {
        const { report, agent, ours } = this;
        const project_id = ours.project;
        const edited = async (change) => (await agent.must("edit_timeline", { project_id, ...change })).structured.duration;
        const { duration } = (await agent.must("get_project", { project_id })).structured;
        report.near("after a cut of 0.5 s", await edited({ op: "cut", start: 1, end: 1.5 }), duration - 0.5, 0.02);
        report.near(
            "after a second at twice the speed",
            await edited({ op: "speed", start: 0, end: 1, rate: 2 }),
            duration - 1,
            0.02,
        );
        report.near("after a split", await edited({ op: "split", time: 1 }), duration - 1, 0.02);
        report.near("after a trim", await edited({ op: "trim", start: 0, end: 3 }), 3, 0.02);
        const refused = async (change) => (await agent.call("edit_timeline", { project_id, ...change })).text;
        report.equal("a span turned round", await refused({ op: "cut", start: 2, end: 1 }), "end must be after start.");
        report.match("a span past the end", await refused({ op: "cut", start: 2, end: 99 }), /^99.* is past the end\.$/);
        report.equal("a rate of 17", await refused({ op: "speed", start: 0, end: 1, rate: 17 }), "rate must be 0.25–16.");
        report.equal("a split at the edge", await refused({ op: "split", time: 0 }), "time must be inside the video.");
        report.match(
            "a track that is not there",
            await refused({ op: "mute", track: "music", muted: true }),
            /^This project has no music/,
        );
        report.equal(
            "no such operation",
            await refused({ op: "turn" }),
            "op must be trim, cut, speed, split, mute or volume.",
        );
    }

    /** As if speech had been recognised, so that what works on words can be tried. */
    async transcript() {
        const { report, agent, ours } = this;
        const project_id = ours.project;
        const action = (name, options = {}) => agent.call("run_action", { project_id, action: name, options });
        for (const name of ["captions_from_transcript", "remove_fillers", "tighten_pauses", "delete_words"])
            report.equal(
                name,
                (await action(name)).text,
                "This project has no transcript yet. Run the transcribe action first.",
            );
        const words = ["So", "um", "this", "is", "the", "list"].map((text, at) => ({
            text,
            start: 0.2 + at * 0.3,
            end: 0.4 + at * 0.3,
        }));
        await agent.must("edit_project", { project_id, patch: { transcript: { words } } });
        const view = async () => (await agent.must("get_project", { project_id })).structured;
        report.equal(
            "the words",
            (await view()).transcript.words.map(({ text }) => text),
            words.map(({ text }) => text),
        );
        report.check("captions are made", !(await action("captions_from_transcript", { max_characters: 20 })).failed);
        report.check("they are in the project", (await view()).captions.cues.length > 0, (await view()).captions);
        report.match("fillers", (await action("remove_fillers")).text, /^Removed \d\.\d\d s of filler words\.$/);
        report.match("pauses", (await action("tighten_pauses", { max_pause: 0.5 })).text, /^Tightened pauses: /);
        report.match(
            "words out of range",
            (await action("delete_words", { from_word: 0, to_word: 99 })).text,
            /^from_word and to_word must be indices 0…\d+\.$/,
        );
        const { duration } = await view();
        report.check("deleting words", !(await action("delete_words", { from_word: 0, to_word: 0 })).failed);
        report.check("makes the film shorter", (await view()).duration < duration, duration);
    }

    async actions() {
        const { report, agent, ours } = this;
        const action = (name, options) => agent.call("run_action", { project_id: ours.second, action: name, options });
        const polished = await action("auto_polish", { smartZoom: false, captions: false });
        report.match("polishing", polished.text, /^Auto Polish done: /);
        report.equal(
            "an unknown option",
            (await action("auto_polish", { smartZom: true })).text,
            "auto_polish options must be booleans named as in the tool description.",
        );
        report.check("silences", !(await action("remove_silence")).failed);
        report.match("typing", (await action("speed_up_typing", { rate: 3 })).text, /^Sped up \d+ typing stretches\.$/);
        report.equal("no action", (await action(undefined)).text, "action is required.");
        report.equal("no such action", (await action("dance")).text, 'Unknown action "dance".');
        report.check("what needs a microphone says so", (await action("transcribe")).failed);
    }

    async frames() {
        const { report, agent, stage, ours } = this;
        const drawn = async (more) => {
            const answer = await agent.must("render_frame", { project_id: ours.project, time: 1, ...more });
            const file = stage.path(`frame-${more.max_width ?? "usual"}.png`);
            writeFileSync(file, Buffer.from(answer.picture.data, "base64"));
            return { ...(await pictureIn(stage, file)), type: answer.picture.mimeType, text: answer.text, file };
        };
        const usual = await drawn({});
        report.equal("the picture", [usual.type, usual.codec, usual.width, usual.height], ["image/png", "png", 1280, 720]);
        report.check("it shows something", usual.spread > 15, usual);
        report.match("its caption", usual.text, /^The video at 1 s, 1280 × 720 pixels\.$/);
        const small = await drawn({ max_width: 320 });
        report.equal("the small one", [small.width, small.height], [320, 180]);
        report.near("its brightness", small.mean, usual.mean, 3);
        ours.frame = usual.file;
        const refused = await agent.call("render_frame", { project_id: ours.project, time: 99 });
        report.equal("past the end", refused.text, "time must be inside the video.");
        report.equal(
            "too large",
            (await agent.call("render_frame", { project_id: ours.project, time: 1, max_width: 5000 })).code,
            "invalid_arguments",
        );
    }

    async exports() {
        const { report, agent, stage, ours } = this;
        const project_id = ours.project;
        const { presets } = (await agent.must("list_export_presets")).structured;
        const preset = presets.find(({ id }) => id === "youtube-1080");
        report.equal("a preset", preset && [preset.size.width, preset.size.height, preset.fps, preset.container], [
            1920,
            1080,
            60,
            "mp4",
        ]);
        const film = await agent.must("export", { project_id, preset: "youtube-1080" });
        report.equal(
            "the film's folder",
            film.structured.path.startsWith(stage.path("home/Movies/Tavaro/Exports/Checked — ")),
            true,
        );
        report.check("the client hears something each second", longestSilence(film) < 1.1, longestSilence(film));
        report.check("progress rises", rises(film.progress), film.progress);
        const seen = await filmIn(stage, film.structured.path);
        report.equal(
            "the film",
            [seen.codec, seen.width, seen.height, seen.frames],
            ["h264", 1920, 1080, film.structured.frames],
        );
        report.near("its seconds", seen.duration, film.structured.duration, 0.05);
        const again = await agent.must("export", { project_id, preset: "youtube-1080" });
        report.check(
            "another has a name of its own",
            again.structured.path !== film.structured.path && existsSync(film.structured.path),
            again.structured.path,
        );
        const output_path = stage.path("small.gif");
        const gif = await agent.must("export", {
            project_id,
            width: 320,
            height: 180,
            fps: 10,
            container: "gif",
            output_path,
        });
        report.equal("where the GIF is", gif.structured.path, output_path);
        const animation = await filmIn(stage, output_path);
        report.equal("the GIF", [animation.codec, animation.width, animation.height], ["gif", 320, 180]);
        const refused = async (more) => (await agent.call("export", { project_id, ...more })).text;
        report.match("no such preset", await refused({ preset: "cinema" }), /"cinema". See list_export_presets\.$/);
        report.equal("no such container", await refused({ container: "avi" }), "Unknown container.");
        report.equal(
            "a path from nowhere",
            await refused({ output_path: "film.mp4" }),
            "output_path must be an absolute path.",
        );
    }

    /** Failures are results, with a code and a sentence. */
    async refusals() {
        const { report, agent } = this;
        const said = async (name, parameters) => {
            const { code, text } = await agent.call(name, parameters);
            return `${code}: ${text}`;
        };
        report.match("no such tool", await said("dance"), /^not_found: /);
        report.equal("no project", await said("get_project"), "invalid_arguments: project_id is required.");
        report.match(
            "no such project",
            await said("get_project", { project_id: "x" }),
            /^not_found: .*\. Call list_projects\.$/,
        );
        report.equal("no target", await said("record_for", { seconds: 1 }), "invalid_arguments: target is required.");
        const both = { target: { display: "a", window: "b" }, seconds: 1 };
        report.equal(
            "two targets",
            await said("record_for", both),
            "invalid_arguments: target must name exactly one of display, window, app or area.",
        );
        report.match(
            "no such display",
            await said("record_for", { target: { display: "display-9" }, seconds: 1, countdown: 0 }),
            /^not_found: .*display-9".* Call list_sources for ids\.$/,
        );
        report.match(
            "clicking without the permission",
            await said("ui_click", { x: 1, y: 1 }),
            /^consent_denied: check-mcp isn't allowed to click and type in other apps\./,
        );
    }
}

function rises(progress) {
    return progress.every(
        (report, index) => report.progress <= 1 && (index === 0 || report.progress >= progress[index - 1].progress),
    );
}

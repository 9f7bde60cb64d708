// The Inspector's command line against the same programs: another client, by other people, one call a run.

import { fileURLToPath } from "node:url";

// It looks for its own package beside the folder in which it runs.
const folder = fileURLToPath(new URL("node_modules/@modelcontextprotocol/inspector-cli/build/", import.meta.url));

export class Inspector {
    constructor(stage, report, ours) {
        Object.assign(this, { stage, report, ours });
    }

    async run() {
        await this.report.step("inspector", () => this.inspect());
    }

    async inspect() {
        const { report, ours } = this;
        const { tools } = await this.answer("tools/list");
        report.equal("the number of tools", tools.length, 23);
        const stranger = await this.tool("status");
        report.equal("the code for a stranger", stranger.structuredContent.code, "consent_denied");
        const name = /^(.*) isn't allowed to control Tavaro/.exec(stranger.content[0].text)?.[1];
        await this.stage.run(this.stage.program("tavaro"), ["mcp", "allow", name]);
        report.equal("the recorder", (await this.tool("status")).structuredContent.recorder.phase, "idle");
        const { projects } = (await this.tool("list_projects", { limit: 1 })).structuredContent;
        report.equal("the newest project", projects.length, 1);
        const view = (await this.tool("get_project", { project_id: ours.project })).structuredContent;
        report.equal("the project's name", view.name, "Checked");
        const edit = await this.tool("edit_project", { project_id: ours.project, patch: '{"name":"Inspected"}' });
        report.equal("whether a patch changes it", edit.structuredContent.changed, true);
        const frame = await this.tool("render_frame", { project_id: ours.project, time: 1, max_width: 320 });
        report.equal(
            "the picture's first bytes",
            Buffer.from(frame.content[0].data, "base64").subarray(1, 4).toString(),
            "PNG",
        );
        report.equal("no such tool", (await this.tool("dance")).structuredContent.code, "not_found");
    }

    tool(name, parameters = {}) {
        const given = Object.entries(parameters).flatMap(([key, value]) => ["--tool-arg", `${key}=${value}`]);
        return this.answer("tools/call", "--tool-name", name, ...given);
    }

    async answer(method, ...more) {
        const words = ["cli.js", "--cli", this.stage.program("tavaro-mcp"), "--method", method, ...more];
        const { code, output, words: said } = await this.stage.run(process.execPath, words, { folder });
        if (code !== 0) throw new Error(`${method} ${more.join(" ")}: exit ${code}: ${said}`);
        return JSON.parse(output);
    }
}

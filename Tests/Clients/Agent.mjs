// An agent: the SDK's client at one end, the real `tavaro-mcp` at the other.

import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";

export class Agent {
    #transport;

    static async meet(stage, name) {
        const agent = new Agent();
        agent.#transport = new StdioClientTransport({
            command: stage.program("tavaro-mcp"),
            env: stage.environment,
            stderr: "pipe",
        });
        agent.words = "";
        agent.#transport.stderr.on("data", (bytes) => (agent.words += bytes));
        agent.client = new Client({ name, version: "1.0" });
        await agent.client.connect(agent.#transport);
        return agent;
    }

    get process() {
        return this.#transport.pid;
    }

    /** What a tool answers: its text, its code where it failed, what is structured, its picture; the progress meanwhile
     *  with the seconds at which it came. */
    async call(name, parameters = {}, { signal } = {}) {
        const began = performance.now();
        const seconds = () => (performance.now() - began) / 1000;
        const progress = [];
        const options = { timeout: 300_000, signal, onprogress: (report) => progress.push({ ...report, at: seconds() }) };
        const result = await this.client.callTool({ name, arguments: parameters }, undefined, options);
        const part = (type) => result.content.find((block) => block.type === type);
        return {
            text: part("text")?.text ?? "",
            failed: result.isError === true,
            code: result.isError ? result.structuredContent?.code : undefined,
            structured: result.structuredContent,
            picture: part("image"),
            progress,
            seconds: seconds(),
        };
    }

    /** Calls a tool that must succeed. */
    async must(name, parameters = {}) {
        const answer = await this.call(name, parameters);
        if (answer.failed) throw new Error(`${name} ${JSON.stringify(parameters)}: ${answer.code}: ${answer.text}`);
        return answer;
    }

    async close() {
        await this.client.close();
    }
}

/** The longest time without a word, from the call to its answer. */
export function longestSilence(answer) {
    const moments = [0, ...answer.progress.map((report) => report.at), answer.seconds];
    return Math.max(...moments.slice(1).map((moment, index) => moment - moments[index]));
}

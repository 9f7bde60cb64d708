// Drives `tavaro-mcp`, and through it the application, with clients that others wrote, against a real program on a
// virtual display. usage: node check-mcp.mjs PROGRAMS DEMO [PICTURE]: the folder of the programs, that of the demo's
// application, and where a frame of the film is left to be looked at. Ends with 1 when something does not hold.

import { copyFileSync } from "node:fs";
import { resolve } from "node:path";

import { Agent } from "./Agent.mjs";
import { Inspector } from "./Inspector.mjs";
import { Interruptions } from "./Interruptions.mjs";
import { Report } from "./Report.mjs";
import { Session } from "./Session.mjs";
import { Stage, until } from "./Stage.mjs";

const [programs, demo, picture] = process.argv.slice(2).map((path) => resolve(path));
const stage = new Stage(programs, demo);
const report = new Report();
for (const name of ["SIGINT", "SIGTERM"]) process.once(name, () => stage.end().finally(() => process.exit(130)));

try {
    await stage.openDisplay();
    await stage.openEditor();
    const agent = await Agent.meet(stage, "check-mcp");
    const session = new Session(stage, agent, report);
    await session.run();
    await new Interruptions(stage, agent, report, session.ours).run();
    await new Inspector(stage, report, session.ours).run();
    await agent.close();
    await report.step("end", async () => {
        report.equal("what 'tavaro-mcp' says on its standard error", agent.words, "");
        report.equal("applications that run", stage.running("tavaro").length, 1);
        process.kill(stage.running("tavaro")[0], "SIGTERM");
        await until("the application's end", 20, () => stage.running("tavaro").length === 0);
    });
    if (picture && session.ours.frame) copyFileSync(session.ours.frame, picture);
} finally {
    await stage.end();
}
process.exitCode = report.end() ? 0 : 1;

// What was checked, and what did not hold. A step that throws is a fault too; the next one still runs.

export class Report {
    #step = "";
    #checks = 0;
    #faults = [];

    /** One part of the session, under a name. What it returns, or nothing where it failed. */
    async step(name, work) {
        this.#step = name;
        const began = performance.now();
        const before = this.#faults.length;
        let made;
        try {
            made = await work();
        } catch (error) {
            this.#fail(error.stack ?? String(error));
        }
        const seconds = ((performance.now() - began) / 1000).toFixed(1);
        console.log(`${before === this.#faults.length ? "ok   " : "FAULT"} ${name} (${seconds} s)`);
        return made;
    }

    /** `seen` is printed where it does not hold. */
    check(what, holds, seen) {
        this.#checks++;
        if (!holds) this.#fail(`${what}; seen: ${excerpt(seen)}`);
        return Boolean(holds);
    }

    equal(what, seen, wanted) {
        return this.check(`${what} is ${JSON.stringify(wanted)}`, JSON.stringify(seen) === JSON.stringify(wanted), seen);
    }

    near(what, seen, wanted, tolerance) {
        return this.check(`${what} is ${wanted} ± ${tolerance}`, Math.abs(seen - wanted) <= tolerance, seen);
    }

    match(what, seen, pattern) {
        return this.check(`${what} matches ${pattern}`, pattern.test(seen), seen);
    }

    /** Prints the faults and the sum; whether there were none. */
    end() {
        for (const fault of this.#faults) console.log(`fault: ${fault}`);
        console.log(`check-mcp: ${this.#checks} checks, ${this.#faults.length} faults`);
        return this.#faults.length === 0;
    }

    #fail(text) {
        this.#faults.push(`${this.#step}: ${text}`);
    }
}

function excerpt(seen) {
    const text = typeof seen === "string" ? seen : JSON.stringify(seen);
    return text?.length > 600 ? text.slice(0, 600) + "…" : text;
}

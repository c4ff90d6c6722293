// The page in a real browser, against a real console: what a person does arrives, and nothing stays stuck.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { mkdtempSync, readFileSync } from "node:fs";
import { connect } from "node:net";
import { networkInterfaces, tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, beforeEach, test } from "node:test";
import { chromium } from "playwright-core";

const { TAVRIK_PAGE: program, TAVRIK_RIG: rig, SCREENSHOTS: screenshots } = process.env;
let server, address, browser, page;

/// Waits until `look` gives something true.
async function until(look, what) {
    let found;
    for (const end = Date.now() + 8000; Date.now() < end;) {
        found = await look();
        if (found) { return found; }
        await new Promise((done) => setTimeout(done, 30));
    }
    assert.fail(`it did not come: ${what}`);
}

async function same(look, expected) {
    let found;
    for (const end = Date.now() + 8000; Date.now() < end && found !== expected;) {
        found = await look();
        await new Promise((done) => setTimeout(done, 30));
    }
    assert.equal(found, expected);
}

async function startServer(...options) {
    const process_ = spawn(program, ["--port", "0", ...options]);
    let said = "";
    process_.stdout.on("data", (text) => { said += text; });
    const found = await until(() => said.match(/http:\/\/\S+/)?.[0], "the page's address");
    return { process_, found };
}

async function open(options = {}) {
    const context = await browser.newContext({ viewport: { width: 1440, height: 900 }, ...options });
    const opened = await context.newPage();
    await opened.goto(address);
    await until(() => opened.evaluate(() => document.querySelectorAll(".cell.control").length), "a box in control");
    return opened;
}

/// Kept when pictures are asked for.
async function picture(of, name) {
    if (screenshots) { await of.screenshot({ path: join(screenshots, name), fullPage: of.viewportSize().width < 500 }); }
}

const cell = (n, from = page) => from.locator(".cell").nth(n);
const textOf = (n, what, from = page) => cell(n, from).locator(what).textContent();
const keysOf = (n, from = page) => cell(n, from).locator("kbd").allTextContents();
const inControl = (from = page) => from.evaluate(() => [...document.querySelectorAll(".cell")]
    .findIndex((one) => one.classList.contains("control")));
const mode = () => page.locator("#mode").textContent();

/// Right after a lock was lost the browser may refuse another: a person clicks again.
async function hold() {
    await until(async () => {
        await page.locator("#wall").click({ position: { x: 20, y: 20 } });
        await new Promise((done) => setTimeout(done, 100));
        return page.evaluate(() => document.pointerLockElement?.id === "console");
    }, "the pointer lock");
}

async function free() { await page.evaluate(() => document.exitPointerLock()); }

/// Pushes the mouse so far; the browser counts from where its own pointer stands.
async function push(dx, dy) {
    await page.evaluate(([x, y]) => document.getElementById("console")
        .dispatchEvent(new MouseEvent("mousemove", { bubbles: true, movementX: x, movementY: y })), [dx, dy]);
}

before(async () => {
    browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--no-sandbox"] });
    ({ process_: server, found: address } = await startServer());
    page = await open();
});
after(async () => {
    await browser?.close();
    server?.kill();
});
beforeEach(async () => { await page.bringToFront(); });

test("what is typed appears at the box in control", async () => {
    await hold();
    await page.keyboard.type("hello ");
    await page.keyboard.press("Shift+A");
    await page.keyboard.type("42");
    await page.keyboard.press("Backspace");
    await same(() => textOf(0, ".typed"), "hello A4");
    await page.keyboard.down("Shift");
    await until(async () => (await keysOf(0)).join() === "LEFTSHIFT", "the key cap");
    assert.equal(await cell(0).locator("kbd.stuck").count(), 0);
    await page.keyboard.up("Shift");
    await until(async () => (await keysOf(0)).length === 0, "no key down");
});

test("the pointer goes over all cells and back", async () => {
    for (const expected of [1, 2, 3]) {
        await push(2000, 0);
        await until(async () => await inControl() === expected, `control at cell ${expected}`);
    }
    for (const expected of [2, 1, 0]) {
        await push(-2000, 0);
        await until(async () => await inControl() === expected, `control at cell ${expected}`);
    }
});

test("three taps of Ctrl open the OSD, Esc closes it", async () => {
    for (let i = 0; i < 3; ++i) { await page.keyboard.press("ControlLeft"); }
    await until(async () => await mode() === "OSD", "the OSD's banner");
    await free();
    await page.getByRole("button", { name: "Esc", exact: true }).click();
    await until(async () => await mode() === "computer", "the computer's banner");
});

test("an unplugged keyboard, a lost focus and a lost pointer let go of everything", async () => {
    const ways = [
        ["lost focus", () => page.evaluate(() => document.getElementById("console").blur())],
        ["lost pointer", free],
        ["unplugged", () => page.evaluate(() => [...document.querySelectorAll("#devices button")][0].click())],
    ];
    for (const [name, lose] of ways) {
        await hold();
        await page.keyboard.down("KeyA");
        await until(async () => (await keysOf(0)).join() === "A", `A down before: ${name}`);
        await lose();
        await until(async () => (await keysOf(0)).length === 0, `nothing down after: ${name}`);
        await page.keyboard.up("KeyA");
    }
    await free();
    await page.getByRole("button", { name: "Plug in keyboard" }).click();
    await until(() => page.getByRole("button", { name: "Unplug keyboard" }).count(), "the keyboard");
    await until(async () => {
        await hold();
        await page.keyboard.press("KeyZ");
        await free();
        return (await textOf(0, ".typed")).endsWith("z");
    }, "a key of the keyboard that is back");
});

test("a second viewer watches; what a driver holds is let go of when it closes", async () => {
    const driver = await open();
    await driver.close();
    const watcher = await open();
    await until(() => watcher.locator("#notice").textContent().then((text) => text.includes("You watch")), "a watcher");
    await watcher.getByRole("button", { name: "Drive" }).click();
    await until(() => watcher.locator("#told").textContent().then((text) => text.includes("somebody drives")), "a refusal");
    await hold();
    await page.keyboard.down("KeyB");
    await until(async () => (await keysOf(0, watcher)).join() === "B", "B down, seen by the watcher");
    await page.context().close();
    await until(async () => (await keysOf(0, watcher)).length === 0, "nothing down");
    page = watcher;
});

test("a socket that falls silent lets go", async () => {
    await hold();
    await page.keyboard.down("KeyC");
    await until(async () => (await keysOf(0)).join() === "C", "C down");
    await page.evaluate(() => {
        const end = Date.now() + 1600;
        while (Date.now() < end) { /* the page hangs */ }
    });
    await until(async () => (await keysOf(0)).length === 0, "nothing down");
    await page.keyboard.up("KeyC");
    await free();
});

test("a datagram unfolds to its bytes", async () => {
    await page.keyboard.press("KeyD");
    await free();
    const row = page.locator("#list li", { hasText: "key down D" }).first();
    await row.getByRole("button").click();
    await until(() => row.locator("table").count(), "the bytes");
    assert.match(await row.locator("table").textContent(), /57 ab 01.*key.*D/s);
    await picture(page, "page.png");
});

test("another answer of a box is drawn", async () => {
    await page.selectOption("#says", { label: "1280×720" });
    await page.getByRole("button", { name: "Set" }).click();
    await until(async () => (await textOf(0, ".title")).includes("1280×720"), "the size");
});

test("what was done is saved as a script that passes", async () => {
    await page.getByRole("button", { name: "Apply" }).click();
    await until(() => page.locator("#notice").textContent().then((text) => text === "the console starts"), "a start");
    await until(() => page.locator("#notice").textContent().then((text) => text === ""), "a console");
    await hold();
    await page.keyboard.type("ab");
    await same(() => textOf(0, ".typed"), "ab");
    await push(2000, 0);
    await until(async () => await inControl() === 1, "control at the second box");
    await page.keyboard.type("c");
    await same(() => textOf(1, ".typed"), "c");
    await free();
    const [download] = await Promise.all([page.waitForEvent("download"),
        page.evaluate(() => document.getElementById("save").click())]);
    const file = join(mkdtempSync(join(tmpdir(), "tavrik-page-")), "recorded.script");
    await download.saveAs(file);
    const player = spawn(rig, ["play", file]);
    let said = "";
    player.stdout.on("data", (text) => { said += text; });
    const status = await new Promise((done) => player.on("exit", done));
    assert.equal(status, 0, `${said}\n${readFileSync(file)}`);
});

test("a changed wall is checked while it is typed, and redrawn when it is applied", async () => {
    const settings = page.locator("#settings");
    const text = await settings.inputValue();
    await settings.fill(text.replace("kOutNum=", "kOutNumber="));
    await until(() => page.locator("#findings .error").count(), "a finding");
    assert.equal(await page.locator("#edited").textContent(), "(not running)");
    await settings.fill(text.replace(/kOutIpmap1=.*/, "kOutIpmap1=0,1,192.168.7.1#0,0,192.168.7.2"));
    await page.getByRole("button", { name: "Apply" }).click();
    await until(async () => await page.locator(".cell").count() === 3, "three cells");
    await until(() => page.locator("#notice").textContent().then((one) => one === ""), "a console");
    await settings.fill(text.replace("127.0.0.33", "10.0.0.256"));
    await page.getByRole("button", { name: "Apply" }).click();
    await until(() => page.locator("#told").textContent().then((one) => one === "10.0.0.256 is no address."), "a refusal");
    await settings.fill(text);
    await page.getByRole("button", { name: "Apply" }).click();
    await until(async () => await page.locator(".cell").count() === 4, "four cells");
    await until(() => page.locator("#notice").textContent().then((one) => one === ""), "a console");
});

/// The status of a socket's opening, with that origin and host.
function knock(origin, host, at = address) {
    const { hostname, port } = new URL(at);
    return new Promise((done) => {
        const socket = connect(Number(port), hostname, () => socket.write(
            `GET /socket HTTP/1.1\r\nHost: ${host ?? hostname + ":" + port}\r\nOrigin: ${origin}\r\nUpgrade: websocket\r\n` +
            "Connection: Upgrade\r\nSec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n\r\n"));
        socket.once("data", (text) => { done(Number(String(text).split(" ")[1])); socket.destroy(); });
    });
}

test("the tour plays scripts with their captions, and the console comes back", async () => {
    await page.locator("#tour").click();
    await until(() => page.locator("#notice").textContent().then((text) => text.startsWith("The pointer crosses")), "a caption");
    await until(async () => await page.locator(".cell").count() === 3, "the script's wall");
    await page.locator("#apply").click();
    await until(async () => await page.locator(".cell").count() === 4, "the console's own wall");
    await until(() => page.locator("#notice").textContent().then((one) => one === ""), "a console");
});

test("elsewhere the page asks for its token", async (context) => {
    const outside = Object.values(networkInterfaces()).flat().find((one) => one.family === "IPv4" && !one.internal);
    if (!outside) { return context.skip("this machine has no address but its own"); }
    const { process_, found } = await startServer("--listen", outside.address);
    try {
        assert.equal((await fetch(found)).status, 200);
        assert.equal((await fetch(found.replace(/\?.*/, ""))).status, 403);
        assert.equal((await fetch(found.replace(/.$/, (last) => last === "0" ? "1" : "0"))).status, 403);
        assert.equal(await knock(new URL(found).origin, new URL(found).host, found), 403);
    } finally {
        process_.kill();
    }
});

test("a port that is taken is told with its remedy", async () => {
    const second = spawn(program, ["--port", new URL(address).port]);
    let said = "";
    second.stderr.on("data", (text) => { said += text; });
    assert.equal(await new Promise((done) => second.on("exit", done)), 1);
    assert.match(said, /already in use.*--port N takes another/);
});

test("a thousand reports a second leave nothing waiting", async () => {
    await hold();
    const before = await page.evaluate(() => Number(document.querySelector("#list li").dataset.n));
    await page.evaluate(async () => {
        const { send } = await import("/socket.js");
        for (let i = 0; i < 300; ++i) {
            for (let k = 0; k < 10; ++k) { send({ t: "move", x: k % 2 ? 3 : -3, y: 0 }); }
            await new Promise((done) => setTimeout(done, 10));
        }
    });
    const start = Date.now();
    await page.keyboard.press("KeyX");
    await until(async () => (await textOf(0, ".typed")).endsWith("x"), "the key behind them");
    assert.ok(Date.now() - start < 1000, `${Date.now() - start} ms`);
    assert.ok(await page.locator("#list li").count() <= 200);
    const after = await page.evaluate(() => Number(document.querySelector("#list li").dataset.n));
    assert.ok(after - before > 2900, `${after - before} reports`);
    await free();
});

test("a foreign origin or name gets no socket", async () => {
    assert.equal(await knock("http://example.net"), 403);
    assert.equal(await knock("http://example.net:80", "example.net:80"), 403);
    assert.equal(await knock(address.replace(/\/$/, "")), 101);
});

/// Boxes that overlap or are cut, by the text that they show.
function layoutFaults() {
    const faults = [];
    const shown = [...document.querySelectorAll("h1, h2, p, button, select, label, kbd, li, textarea")]
        .filter((one) => one.getClientRects().length > 0 && !one.closest("#list") && getComputedStyle(one).visibility !== "hidden");
    for (const one of shown) {
        const box = one.getBoundingClientRect();
        const scrolls = one.closest("#wall, #drawing, textarea");
        if (!scrolls && (box.left < -1 || box.right > document.documentElement.clientWidth + 1)) {
            faults.push(`out of the page: ${one.id || one.textContent.slice(0, 40)}`);
        }
        if (one.tagName !== "TEXTAREA" && one.scrollWidth > one.clientWidth + 1 && one.clientWidth > 0 && getComputedStyle(one).display !== "inline") {
            faults.push(`cut: ${one.id || one.textContent.slice(0, 40)}`);
        }
        for (const other of shown) {
            const with_ = other.getBoundingClientRect();
            if (one !== other && !one.contains(other) && !other.contains(one) && box.width * box.height * with_.width * with_.height > 0 &&
                box.left < with_.right - 1 && with_.left < box.right - 1 && box.top < with_.bottom - 1 && with_.top < box.bottom - 1) {
                faults.push(`overlap: ${one.id || one.textContent.slice(0, 30)} and ${other.id || other.textContent.slice(0, 30)}`);
            }
        }
    }
    return [...new Set(faults)];
}

for (const width of [360, 1440]) {
    for (const colorScheme of ["light", "dark"]) {
        test(`nothing overlaps or is cut at ${width} pixels, ${colorScheme}`, async () => {
            const other = await open({ viewport: { width, height: 900 }, colorScheme });
            assert.deepEqual(await other.evaluate(layoutFaults), []);
            if (width === 360 && colorScheme === "dark") { await picture(other, "phone.png"); }
            await other.context().close();
        });
    }
}

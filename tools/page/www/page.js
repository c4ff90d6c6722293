import * as input from "./input.js";
import * as list from "./list.js";
import { connect, on, send } from "./socket.js";
import { draw } from "./wall.js";

const by = (id) => document.getElementById(id);
const GOALS = [
    ["cross", "Click the wall and push right: the pointer goes over to the next computer."],
    ["type", "Type a word: it appears at the computer in control."],
    ["taps", "Tap the left Ctrl three times, quickly: the OSD opens."],
    ["unplug", "Unplug the keyboard, and plug it in again."],
    ["wall", "Change a line of the settings and apply it."],
    ["read", "Open a datagram of the list and read its bytes."],
];
let latest = null;
let running = "";
let isDue = false;
let toldUntil = 0;

function button(parent, text, action) {
    const made = document.createElement("button");
    made.type = "button";
    made.textContent = text;
    made.addEventListener("click", action);
    by(parent).append(made);
    return made;
}

function showGoals(done) {
    by("goals").replaceChildren(...GOALS.map(([name, text]) => {
        const item = document.createElement("li");
        const isDone = done.includes(name);
        item.className = isDone ? "done" : "";
        item.textContent = (isDone ? "✓ " : "") + text;
        return item;
    }));
    by("goal").textContent = GOALS.find(([name]) => !done.includes(name))?.[1] ?? "All six goals are reached.";
}

function showDevices(plugged) {
    for (const one of by("devices").children) {
        const isThere = plugged.includes(one.dataset.kind);
        one.setAttribute("aria-pressed", String(isThere));
        one.textContent = `${isThere ? "Unplug" : "Plug in"} ${one.dataset.kind}`;
    }
}

function showBoxes(boxes) {
    const names = Object.keys(boxes);
    if ([...by("box").options].map((option) => option.value).join() !== names.join()) {
        by("box").replaceChildren(...names.map((name) => new Option(name, name)));
    }
}

function show() {
    isDue = false;
    const { mode, notice, drives, viewers, goals, plugged, boxes, running: isRunning } = latest;
    draw(latest);
    by("mode").textContent = mode;
    by("mode").classList.toggle("away", mode !== "computer");
    by("notice").textContent = [notice, drives ? "" : "You watch; somebody else drives.",
        viewers > 1 ? `${viewers} viewers` : ""].filter(Boolean).join(" ");
    by("drive").disabled = drives;
    by("console").setAttribute("aria-busy", String(!isRunning));
    showGoals(goals);
    showDevices(plugged);
    showBoxes(boxes);
}

function showFindings(view) {
    by("findings").replaceChildren(...view.findings.map((finding) => {
        const item = document.createElement("li");
        item.className = finding.severity;
        item.textContent = `${finding.line ? "line " + finding.line + ": " : ""}${finding.message}` +
            `${finding.advice ? "; write: " + finding.advice : ""}`;
        return item;
    }));
    const image = document.createElement("img");
    image.alt = "The wall of these settings";
    image.src = "data:image/svg+xml," + encodeURIComponent(view.drawing);
    by("drawing").replaceChildren(...(view.drawing ? [image] : []));
}

function showEdited() {
    by("edited").textContent = by("settings").value === running ? "" : "(not running)";
}

on("state", (state) => {
    if (latest && JSON.stringify(state.screens) !== JSON.stringify(latest.screens)) {
        list.clear();
    }
    latest = state;
    list.add(state.seen);
    if (!isDue) {
        isDue = true;
        requestAnimationFrame(show);
    }
});
on("settings", ({ text }) => {
    running = text;
    by("settings").value = text;
    showEdited();
});
on("checked", showFindings);
on("unfolded", ({ datagram }) => list.unfold(datagram));
on("told", ({ text }) => {
    by("told").textContent = text;
    clearTimeout(toldUntil);
    toldUntil = setTimeout(() => { by("told").textContent = ""; }, 8000);
});
on("lost", () => { by("notice").textContent = "The console is not there; trying again."; });
on("script", ({ text }) => {
    const link = document.createElement("a");
    link.href = URL.createObjectURL(new Blob([text], { type: "text/plain" }));
    link.download = "recorded.script";
    link.click();
    URL.revokeObjectURL(link.href);
});

for (const [text, code, times] of [["Esc", "Escape", 1], ["Tab", "Tab", 1], ["Meta", "MetaLeft", 1], ["Ctrl three times", "ControlLeft", 3]]) {
    button("keys", text, () => input.tap(code, times));
}
for (const text of ["OSDSTART", "OSDQUIT", "PAUSE", "CONTINUE", "MTO:0,0", "MTO:1,0"]) {
    button("orders", text, () => send({ t: "command", text }));
}
for (const kind of ["keyboard", "mouse", "touch"]) {
    const one = button("devices", kind, () =>
        send({ t: one.getAttribute("aria-pressed") === "true" ? "unplug" : "plug", text: kind }));
    one.dataset.kind = kind;
}
for (const [text, answer] of [["1920×1080", "vi_w=1920&vi_h=1080&kvm=abs"], ["1280×720", "vi_w=1280&vi_h=720&kvm=abs"],
    ["relative", "vi_w=1920&vi_h=1080&kvm=rel"], ["nothing", ""]]) {
    by("says").add(new Option(text, answer));
}
by("answer").addEventListener("submit", (event) => {
    event.preventDefault();
    send({ t: "answer", where: by("box").value, text: by("says").value });
});
by("full").addEventListener("click", () => input.fullScreen());
by("drive").addEventListener("click", () => send({ t: "drive" }));
by("tour").addEventListener("click", () => send({ t: "tour" }));
by("save").addEventListener("click", () => send({ t: "save" }));
by("apply").addEventListener("click", () => send({ t: "apply", text: by("settings").value }));
by("settings").addEventListener("input", () => {
    showEdited();
    send({ t: "check", text: by("settings").value });
});
input.start();
connect();

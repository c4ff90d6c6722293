// The person's keyboard and mouse are the console's while the console area has the pointer or the focus.
import { send } from "./socket.js";

const area = document.getElementById("console");
const hint = document.getElementById("hint");
let x = 0, y = 0, isDue = false;

const locked = () => document.pointerLockElement === area;
const hasConsole = () => locked() || document.activeElement === area;

function flush() {
    isDue = false;
    if (x !== 0 || y !== 0) {
        send({ t: "move", x: Math.trunc(x), y: Math.trunc(y) });
        x -= Math.trunc(x);
        y -= Math.trunc(y);
    }
}

async function lock() {
    area.focus();
    try {
        await area.requestPointerLock({ unadjustedMovement: true });
    } catch {
        try {
            await area.requestPointerLock();
        } catch {
            hint.textContent = "The browser keeps the pointer. Keys go to the console while this frame has the focus.";
        }
    }
}

export function letGo() { send({ t: "letgo" }); }

function key(event) {
    if (!hasConsole()) {
        return;
    }
    event.preventDefault();
    if (!event.repeat) {
        send({ t: "key", code: event.code, down: event.type === "keydown" });
    }
}

export function start() {
    area.addEventListener("click", () => { if (!locked()) { lock(); } });
    area.addEventListener("mousemove", (event) => {
        if (locked()) {
            x += event.movementX;
            y += event.movementY;
            if (!isDue) {
                isDue = true;
                requestAnimationFrame(flush);
            }
        }
    });
    for (const kind of ["mousedown", "mouseup"]) {
        area.addEventListener(kind, (event) => {
            if (locked() && event.button < 3) {
                flush();
                send({ t: "button", n: event.button, down: kind === "mousedown" });
            }
        });
    }
    area.addEventListener("wheel", (event) => {
        if (locked()) {
            event.preventDefault();
            send({ t: "wheel", y: -Math.sign(event.deltaY) });
        }
    }, { passive: false });
    area.addEventListener("contextmenu", (event) => event.preventDefault());
    document.addEventListener("keydown", key);
    document.addEventListener("keyup", key);
    // A key that goes up elsewhere is never told: everything is let go of.
    area.addEventListener("blur", letGo);
    window.addEventListener("blur", letGo);
    window.addEventListener("pagehide", letGo);
    document.addEventListener("visibilitychange", () => { if (document.hidden) { letGo(); } });
    document.addEventListener("pointerlockchange", () => {
        area.classList.toggle("locked", locked());
        hint.textContent = locked() ? "The pointer is the console's. Esc gives it back."
            : "Click here and push right: the pointer goes over to the next computer. " +
              "Esc, Tab and Meta stay with the browser unless the page has the full screen: there are buttons for them.";
        letGo();
    });
}

export async function fullScreen() {
    await document.documentElement.requestFullscreen();
    await navigator.keyboard?.lock(["Escape", "Tab", "MetaLeft", "MetaRight"]);
    await lock();
}

export async function tap(code, times) {
    for (let i = 0; i < times; ++i) {
        send({ t: "key", code, down: true });
        await new Promise((done) => setTimeout(done, 60));
        send({ t: "key", code, down: false });
        await new Promise((done) => setTimeout(done, 60));
    }
}

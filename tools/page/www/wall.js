// The wall as the boxes see it. Places and sizes come from the server; this draws them.
const SVG = "http://www.w3.org/2000/svg";
const wall = document.getElementById("wall");
let drawn = "";
let cells = [];

function element(name, className, parent) {
    const made = document.createElement(name);
    made.className = className;
    parent.append(made);
    return made;
}

function drawing(name, className, parent) {
    const made = document.createElementNS(SVG, name);
    made.setAttribute("class", className);
    parent.append(made);
    return made;
}

function buildCell(parent, cell) {
    const root = element("div", "cell", parent);
    root.style.gridColumn = cell.x + 1;
    root.style.gridRow = cell.y + 1;
    const title = element("p", "title", root);
    const picture = drawing("svg", "picture", root);
    picture.setAttribute("preserveAspectRatio", "none");
    const marks = drawing("g", "marks", picture);
    const pointer = drawing("path", "pointer", picture);
    return { box: cell.box, port: cell.port, root, title, picture, marks, pointer, keys: element("p", "keys", root),
             typed: element("p", "typed", root), clicks: 0, wheel: 0 };
}

function build(screens) {
    wall.replaceChildren();
    cells = [];
    for (const screen of screens) {
        const root = element("div", screen.here ? "screen here" : "screen", wall);
        root.style.gridColumn = screen.x + 1;
        root.style.gridRow = screen.y + 1;
        element("p", "", root).textContent = screen.name + (screen.here ? " (this console)" : "");
        const grid = element("div", "cells", root);
        for (const cell of screen.cells) {
            cells.push(buildCell(grid, cell));
        }
    }
}

function mark(cell, box, radius) {
    const circle = drawing("circle", "mark", cell.marks);
    circle.setAttribute("cx", box.pointer?.[0] ?? box.width / 2);
    circle.setAttribute("cy", box.pointer?.[1] ?? box.height / 2);
    circle.setAttribute("r", box.height / radius);
    setTimeout(() => circle.remove(), 600);
}

function drawBox(cell, box, isStuck) {
    cell.title.textContent = `${cell.box}${cell.port ? " port 80+" + cell.port : ""} ${box.width}×${box.height} ${box.mode}` +
        `${box.caps ? " Caps" : ""}${box.num ? " Num" : ""}`;
    cell.picture.setAttribute("viewBox", `0 0 ${box.width} ${box.height}`);
    cell.pointer.style.display = box.pointer ? "" : "none";
    if (box.pointer) {
        const size = box.height / 7;
        cell.pointer.setAttribute("d", `M0 0 L${size * .7} ${size * .7} L${size * .3} ${size * .75} L0 ${size} Z`);
        cell.pointer.setAttribute("transform", `translate(${box.pointer[0]} ${box.pointer[1]})`);
    }
    cell.keys.replaceChildren(...box.keys.map((name) => {
        const cap = document.createElement("kbd");
        cap.textContent = name;
        cap.className = isStuck ? "stuck" : "";
        return cap;
    }));
    cell.typed.textContent = box.typed;
    if (box.clicks > cell.clicks) { mark(cell, box, 12); }
    if (box.wheel > cell.wheel) { mark(cell, box, 24); }
    cell.clicks = box.clicks;
    cell.wheel = box.wheel;
}

export function draw(state) {
    const shape = JSON.stringify(state.screens);
    if (shape !== drawn) {
        drawn = shape;
        build(state.screens);
    }
    for (const cell of cells) {
        const box = state.boxes[cell.box];
        cell.root.classList.toggle("control", box !== undefined && cell.box === state.control);
        if (box) {
            drawBox(cell, box, state.held.length === 0);
        } else {
            cell.title.textContent = "no box";
        }
    }
}

// Recent datagrams; one unfolds to its bytes with the named fields beside them.
import { send } from "./socket.js";

const KEPT = 200;
const list = document.getElementById("list");
const only = document.getElementById("only");

function row(one) {
    const item = document.createElement("li");
    item.dataset.to = one.to;
    const open = document.createElement("button");
    open.textContent = `${one.to}  ${one.words}`;
    open.setAttribute("aria-expanded", "false");
    open.addEventListener("click", () => {
        const isOpen = open.getAttribute("aria-expanded") === "true";
        open.setAttribute("aria-expanded", String(!isOpen));
        if (isOpen) {
            item.lastChild.remove();
        } else {
            send({ t: "unfold", x: one.n });
        }
    });
    item.dataset.n = one.n;
    item.append(open);
    return item;
}

function filter() {
    for (const item of list.children) {
        item.hidden = only.value !== "" && item.dataset.to !== only.value;
    }
}

export function add(seen) {
    for (const one of seen) {
        list.prepend(row(one));
        if (![...only.options].some((option) => option.value === one.to)) {
            only.add(new Option(one.to, one.to));
        }
    }
    while (list.children.length > KEPT) {
        list.lastChild.remove();
    }
    if (seen.length > 0) {
        filter();
    }
}

export function unfold(datagram) {
    const item = datagram && list.querySelector(`[data-n="${datagram.n}"]`);
    if (!item) {
        return;
    }
    const table = document.createElement("table");
    const bytes = datagram.bytes.split(" ");
    table.createCaption().textContent = `${datagram.name || "unknown"}, ${bytes.length} bytes, to port ${datagram.port}`;
    const fields = datagram.fields.length > 0 ? datagram.fields : [{ at: 0, size: bytes.length, name: "", value: "", meaning: "" }];
    for (const field of fields) {
        const line = table.insertRow();
        line.insertCell().textContent = field.at;
        const cell = line.insertCell();
        cell.className = "bytes";
        cell.textContent = bytes.slice(field.at, field.at + field.size).join(" ");
        line.insertCell().textContent = field.name;
        line.insertCell().textContent = field.meaning || field.value;
    }
    item.append(table);
}

export function clear() { list.replaceChildren(); }

only.addEventListener("change", filter);

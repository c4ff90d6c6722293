// The line to the server: messages out, messages in by their kind; it comes back when it was lost.
const handlers = new Map();
let socket = null;

export function on(kind, handler) { handlers.set(kind, handler); }

export function send(message) {
    if (socket?.readyState === WebSocket.OPEN) {
        socket.send(JSON.stringify(message));
    }
}

export function close() { socket?.close(); }

export function connect() {
    socket = new WebSocket(`ws://${location.host}/socket${location.search}`);
    socket.onmessage = (event) => {
        const message = JSON.parse(event.data);
        handlers.get(message.t)?.(message);
    };
    socket.onopen = () => handlers.get("open")?.();
    socket.onclose = () => {
        handlers.get("lost")?.();
        setTimeout(connect, 1000);
    };
}

// It is still there: a console whose driver is not heard of for a second lets go of everything.
setInterval(() => { if (!document.hidden) { send({ t: "beat" }); } }, 300);

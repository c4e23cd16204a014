// Texts as people read them. All of them reach the page as text nodes.

let usesUtc = false;

function counted(count, noun) {
    return `${count.toLocaleString("en")} ${noun}${count === 1 ? "" : "s"}`;
}

// Controls and marks that turn the direction of writing, as `qv log show` writes them.
const HARMFUL = /[\x00-\x1f\x7f-\x9f\u061c\u200e\u200f\u2028-\u202e\u2066-\u2069]/g;
const SHORT = { "\t": "\\t", "\n": "\\n", "\r": "\\r" };
function visible(text) {
    return text.replace(HARMFUL, c => {
        const code = c.charCodeAt(0).toString(16).toUpperCase();
        return SHORT[c] ?? (code.length <= 2 ? "\\x" + code.padStart(2, "0") : "\\u" + code.padStart(4, "0"));
    });
}
// The same with its line feeds.
function visibleLines(text) {
    return text.split("\n").map(visible).join("\n");
}

function offsetAt(time) {
    if (usesUtc || log.zones.length === 0) return 0;
    if (log.zones.length === 1) return log.zones[0][1] * 1000;
    const next = times.findIndex(other => other >= time);
    return offsets[next < 0 ? recordCount - 1 : next];
}

function timeText(time, offset) {
    if (!Number.isFinite(time)) return "(no time)";
    return new Date(time + (usesUtc ? 0 : offset)).toISOString().slice(0, -1).replace("T", " ");
}

// A time as it is typed: date and clock, cut off anywhere behind the minutes; or the clock alone, of the
// newest day. Null for nothing, not a number for what is no time.
function parseTime(text) {
    const typed = text.trim();
    if (typed === "") return null;
    const day = timeText(lastTime, offsetAt(lastTime)).slice(0, 10);
    const full = /^\d+:/.test(typed) ? `${day}T${typed}` : typed.replace(/\s+/, "T");
    const parts = /^(\d{4}-\d\d-\d\d)(?:T(\d\d:\d\d)(:\d\d(?:\.\d{1,7})?)?)?$/.exec(full);
    if (!parts) return NaN;
    const utc = Date.parse(`${parts[1]}T${parts[2] ?? "00:00"}${parts[3] ?? ":00"}Z`);
    return utc - offsetAt(utc - offsetAt(utc));
}

function spanText(from, to) {
    return `${timeText(from, offsetAt(from))} to ${timeText(to, offsetAt(to))}`;
}

function sourceText(record) {
    return `${visible(log.names[log.sources[record]])},${log.lines[record]}`;
}

function logText(record) {
    return visible(log.logs[log.logOf[record]]);
}

function levelMark(record) {
    const code = log.levels[record];
    return code >= 0x20 && code < 0x7f ? String.fromCharCode(code) : "0x" + (code >>> 0).toString(16).toUpperCase();
}

function gapText(gap) {
    const where = hasManyLogs ? ` of ${visible(log.logs[gap.from])}` : "";
    return `${counted(gap.size, "byte")} at offset ${gap.offset}${where} left out: ${visible(gap.reason)}`;
}

// An element with texts and elements in it.
function element(tag, attributes, ...children) {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
    made.append(...children);
    return made;
}

// The list of records: of many rows only those in sight are in the page.

const scroller = document.getElementById("scroller"), list = document.getElementById("list");
const rows = document.getElementById("rows"), record = document.getElementById("record");

const AROUND = 12;  // rows beyond what is in sight
const LONGEST = 600;  // units of a text in the list; the record below shows all of it

// The classes and heads of the columns.
const COLUMNS = [["time", "Time"], ...(hasManyLogs ? [["log", "Log"]] : []), ["level", "Level"], ["process", "Process"],
    ["thread", "Thread"], ["source", "Source"], ["text", "Text"]];

let rowHeight = 22;
let active = -1;  // the place in `entries` of the chosen record
let showAround = () => {};  // set by controls.js

// The text with what is looked for marked.
function marked(text) {
    const wanted = filter.text.toLowerCase(), lower = text.toLowerCase();
    if (wanted === "" || lower.length !== text.length) return [text];
    const parts = [];
    let from = 0;
    for (let at; (at = lower.indexOf(wanted, from)) >= 0; from = at + wanted.length)
        parts.push(text.slice(from, at), element("mark", {}, text.slice(at, at + wanted.length)));
    return [...parts, text.slice(from)];
}

function recordCells(number) {
    const text = visible(log.texts[number].slice(0, LONGEST)).trimEnd();
    const contents = {
        time: timeParts(number),
        log: [logText(number)],
        level: [element("span", { class: "mark", title: KINDS[kinds[number]].name }, levelMark(number))],
        process: [String(log.processes[number])],
        thread: [String(log.threads[number])],
        source: marked(sourceText(number)),
        text: [...(blocks.has(number) ? [element("span", { class: "tag" }, "data"), " "] : []), ...marked(text)],
    };
    return COLUMNS.map(([name]) => element("td", { class: `c-${name}` }, ...contents[name]));
}

function rowOf(place) {
    const entry = entries[place];
    if (entry >= 0) return element("tr", { class: `kind-${KINDS[kinds[entry]].css}` }, ...recordCells(entry));
    return element("tr", { class: "gap" }, element("td", { colspan: COLUMNS.length }, "Gap: " + gapText(gaps[-1 - entry])));
}

function headRow() {
    return element("tr", {}, ...COLUMNS.map(([name, head]) => element("th", { scope: "col", class: `c-${name}` }, head)));
}

// Where there is little room the date is left out.
function timeParts(number) {
    const text = timeText(times[number], offsets[number]);
    return text.length < 20 ? [text] : [element("span", { class: "date" }, text.slice(0, 11)), text.slice(11)];
}

// A row that can be chosen.
function listRow(position) {
    const place = shown[position], row = rowOf(place);
    row.id = `row-${place}`;
    row.setAttribute("aria-rowindex", position + 2);
    row.setAttribute("aria-selected", place === active);
    row.dataset.place = place;
    return row;
}

function spacer(height) {
    const row = element("tr", { role: "presentation", class: "space" }, element("td", { colspan: COLUMNS.length }));
    row.style.height = `${height}px`;
    return row;
}

// Browsers end at some height of a page. The scroll bar of a longer list stands for more than it is high.
const HIGHEST = 8e6;
function stretch() {
    return Math.max(1, shown.length * rowHeight / HIGHEST);
}

function drawRows() {
    const top = scroller.scrollTop * stretch();
    const first = Math.max(0, Math.floor(top / rowHeight) - AROUND);
    const inSight = Math.ceil(scroller.clientHeight / rowHeight);
    const end = Math.min(shown.length, first + inSight + 2 * AROUND);
    const made = [];
    for (let position = first; position < end; ++position) made.push(listRow(position));
    const above = Math.max(0, scroller.scrollTop - (top - first * rowHeight));
    const below = shown.length * rowHeight / stretch() - above - made.length * rowHeight;
    rows.replaceChildren(spacer(above), ...made, spacer(Math.max(0, below)));
    list.setAttribute("aria-rowcount", shown.length + 1);
    if (document.getElementById(`row-${active}`)) list.setAttribute("aria-activedescendant", `row-${active}`);
    else list.removeAttribute("aria-activedescendant");
}

// The height of a row as fonts and zoom make it.
function measureRows() {
    const row = rows.querySelector("tr[id]");
    const height = row ? row.getBoundingClientRect().height : 0;
    if (height > 0) rowHeight = height;
}

function scrollToPosition(position) {
    const room = scroller.clientHeight - list.tHead.offsetHeight - rowHeight;
    const top = position * rowHeight, at = scroller.scrollTop * stretch();
    if (top < at) scroller.scrollTop = top / stretch();
    else if (top > at + room) scroller.scrollTop = (top - room) / stretch();
}

// Chooses what stands at a position; none for -1.
function choose(position) {
    active = position < 0 ? -1 : shown[position];
    if (position >= 0) scrollToPosition(position);
    drawRows();
    drawRecord();
}

// Behind a change of the filter: the chosen record, else the newest, is in sight.
function showList() {
    const position = active < 0 ? -1 : positionOf(active);
    drawRows();
    scroller.scrollTop = position < 0 ? shown.length * rowHeight
        : Math.max(0, position * rowHeight - scroller.clientHeight / 2) / stretch();
    choose(position);
}

function hexDump(hex) {
    const lines = [];
    for (let at = 0; at < hex.length; at += 32) {
        const bytes = hex.slice(at, at + 32).match(/../g);
        const letters = bytes.map(byte => {
            const code = parseInt(byte, 16);
            return code >= 0x20 && code < 0x7f ? String.fromCharCode(code) : ".";
        });
        lines.push(`${(at / 2).toString(16).padStart(4, "0")}  ${bytes.join(" ").padEnd(47)}  ${letters.join("")}`);
    }
    return lines.join("\n");
}

function fact(name, text) {
    return element("div", {}, element("dt", {}, name), element("dd", {}, text));
}

function recordParts(number) {
    const kind = KINDS[kinds[number]], block = blocks.get(number);
    const session = log.sessions[number];
    const parts = [
        element("pre", { class: `text kind-${kind.css}` }, ...marked(visibleLines(log.texts[number]))),
        element("dl", { class: "facts" },
            fact("Time", timeText(times[number], offsets[number])),
            ...(hasManyLogs ? [fact("Log", logText(number))] : []),
            fact("Level", `${levelMark(number)} ${kind.name}`),
            fact("Process", String(log.processes[number])),
            fact("Thread", String(log.threads[number])),
            fact("Session", session < 0 ? "not known" : String(session)),
            fact("Source", sourceText(number))),
    ];
    if (block) {
        const title = `${visible(block.label) || "Data"}, ${counted(block.hex.length / 2, "byte")}`;
        parts.push(element("p", { class: "label" }, title), element("pre", {}, hexDump(block.hex)));
    }
    return parts;
}

function drawRecord() {
    record.replaceChildren();
    record.hidden = active < 0;
    if (active < 0) return;
    const entry = entries[active];
    const around = element("button", { type: "button" }, "Show what stands around it");
    around.addEventListener("click", () => showAround());
    record.append(
        ...(entry < 0 ? [element("pre", { class: "text" }, gapText(gaps[-1 - entry]))] : recordParts(entry)), around);
}

function moveBy(key) {
    const page = Math.max(1, Math.floor(scroller.clientHeight / rowHeight) - 2);
    const steps = { ArrowUp: -1, ArrowDown: 1, PageUp: -page, PageDown: page, Home: -Infinity, End: Infinity };
    if (!(key in steps) || shown.length === 0) return false;
    const from = active < 0 ? (steps[key] > 0 ? -1 : shown.length) : positionOf(active);
    choose(Math.max(0, Math.min(shown.length - 1, from + steps[key])));
    return true;
}

function watchList() {
    list.tHead.append(headRow());
    let waits = false;
    scroller.addEventListener("scroll", () => {
        if (waits) return;
        waits = true;
        requestAnimationFrame(() => { waits = false; drawRows(); });
    });
    new ResizeObserver(() => { measureRows(); drawRows(); }).observe(scroller);
    rows.addEventListener("click", event => {
        const row = event.target.closest("tr[id]");
        if (row) choose(positionOf(Number(row.dataset.place)));
    });
    list.addEventListener("keydown", event => {
        if (event.ctrlKey || event.altKey || event.metaKey) return;
        if (moveBy(event.key)) event.preventDefault();
        if (event.key === "Escape") choose(-1);
    });
}

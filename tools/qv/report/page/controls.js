// The controls, and what happens when they change. The last part of the script: it starts the rest.

const control = id => document.getElementById(id);

// Draws everything anew for the filter.
function refresh() {
    applyFilter();
    drawTimeline();
    showList();
    const all = shownRecords === recordCount;
    control("count").textContent = all ? counted(recordCount, "record")
        : `${shownRecords.toLocaleString("en")} of ${counted(recordCount, "record")}`;
    control("clear").disabled = all && filter.from === null && filter.to === null;
    for (const id of ["earlier", "later", "zoom-out", "whole"])
        control(id).disabled = filter.from === null && filter.to === null;
    control("zoom-in").disabled = !hasTimes || domain[1] - domain[0] < 2;
}

function setTime(from, to) {
    filter.from = from;
    filter.to = to;
    showTime();
    refresh();
}

function showTime() {
    for (const [id, time, edge] of [["from", filter.from, firstTime], ["to", filter.to, lastTime]]) {
        const field = control(id);
        field.value = time === null ? "" : timeText(time, offsetAt(time));
        field.placeholder = !hasTimes ? "" : timeText(edge, offsetAt(edge));
        field.removeAttribute("aria-invalid");
    }
}

function readTime(id) {
    const field = control(id), time = parseTime(field.value);
    if (Number.isNaN(time)) return field.setAttribute("aria-invalid", "true");
    field.removeAttribute("aria-invalid");
    filter[id] = time;
    refresh();
}

// Moves the time's start and end by parts of its length.
function shiftTime(start, end) {
    const [from, to] = domain, length = to - from;
    setTime(Math.round(from + start * length), Math.round(to + end * length));
}

function clearFilters() {
    Object.assign(filter, { text: "", process: null, source: null, log: null });
    filter.levels.clear();
    for (const id of ["text", "process", "source", "log-name"]) control(id).value = "";
    markPressed();
    setTime(null, null);
}

function markPressed() {
    for (const button of document.querySelectorAll("[data-kind]"))
        button.setAttribute("aria-pressed", filter.levels.has(Number(button.dataset.kind)));
    for (const button of document.querySelectorAll("[data-process]"))
        button.setAttribute("aria-pressed", filter.process === Number(button.dataset.process));
}

function toggleLevel(kind) {
    if (!filter.levels.delete(kind)) filter.levels.add(kind);
    markPressed();
    refresh();
}

function setProcess(process) {
    filter.process = process;
    control("process").value = process ?? "";
    markPressed();
    refresh();
}

function addLevelButtons() {
    const counts = new Map(shares(kinds));
    KINDS.forEach((kind, index) => {
        if (!counts.has(index)) return;
        const button = element("button", { type: "button", class: `level kind-${kind.css}`, "data-kind": index },
            element("span", { class: "mark", "aria-hidden": "true" }, kind.mark.trim()), ` ${kind.name} `,
            element("span", { class: "number" }, counts.get(index).toLocaleString("en")));
        button.addEventListener("click", () => toggleLevel(index));
        control("levels").append(button);
    });
}

function addLaneButtons() {
    const names = control("lane-names");
    names.append(element("div", { class: "lane-top" }, "All processes"));
    for (const [process, count] of laneProcesses) {
        const button = element("button", { type: "button", "data-process": process, "aria-label": `Process ${process}, ${counted(count, "record")}` },
            element("span", {}, `P${process}`), element("span", { class: "number" }, count.toLocaleString("en")));
        button.addEventListener("click", () => setProcess(filter.process === process ? null : process));
        names.append(button);
    }
    if (hasOtherLane) names.append(element("div", { class: "lane-rest" }, "Others"));
}

function addGapButtons() {
    gaps.slice(0, 20).forEach((gap, number) => {
        const button = element("button", { type: "button", class: "gap", title: gapText(gap) }, `Gap ${number + 1}`);
        button.addEventListener("click", () => {
            const place = entries.indexOf(-1 - number);
            if (positionOf(place) < 0) clearFilters();
            active = place;
            showList();
            list.focus();
        });
        control("gaps").append(button);
    });
}

function fillSelect(id, all, options) {
    control(id).append(element("option", { value: "" }, all));
    for (const [value, name, count] of options)
        control(id).append(element("option", { value }, `${name} (${count.toLocaleString("en")})`));
}

function jumpTo(time) {
    const next = shown.findIndex(place => timeOfEntry(entries[place]) >= time);
    if (shown.length > 0) choose(next < 0 ? shown.length - 1 : next);
}

function watchControls() {
    control("filters").addEventListener("submit", event => event.preventDefault());
    control("text").addEventListener("input", event => { filter.text = event.target.value; refresh(); });
    control("process").addEventListener("change", ({ target }) => setProcess(target.value === "" ? null : Number(target.value)));
    for (const [id, name] of [["source", "source"], ["log-name", "log"]]) {
        control(id).addEventListener("change", ({ target }) => {
            filter[name] = target.value === "" ? null : Number(target.value);
            refresh();
        });
    }
    for (const id of ["from", "to"]) control(id).addEventListener("change", () => readTime(id));
    control("utc").addEventListener("change", ({ target }) => { usesUtc = target.checked; showTime(); refresh(); });
    control("clear").addEventListener("click", clearFilters);
    control("earlier").addEventListener("click", () => shiftTime(-.5, -.5));
    control("later").addEventListener("click", () => shiftTime(.5, .5));
    control("zoom-in").addEventListener("click", () => shiftTime(.25, -.25));
    control("zoom-out").addEventListener("click", () => shiftTime(-.5, .5));
    control("whole").addEventListener("click", () => setTime(null, null));
    watchPlot((from, to) => setTime(Math.floor(from), Math.ceil(to)), jumpTo);
    showAround = () => { clearFilters(); list.focus(); };
}

// What is chosen, for who cannot see the controls.
function filterText() {
    const named = [
        ["text", filter.text], ["level", [...filter.levels].map(kind => KINDS[kind].name).join(", ")],
        ["process", filter.process], ["source", filter.source === null ? null : visible(log.names[filter.source])],
        ["log", filter.log === null ? null : visible(log.logs[filter.log])],
        ["time", filter.from === null && filter.to === null ? null : spanText(...domain)],
    ];
    return named.map(([name, value]) => value === null || value === "" ? "" : `; ${name}: ${value}`).join("");
}

// Paper gets what the filter shows, the newest records alone when they are many, and what is folded
// unless it is long.
const MOST_PRINTED = 1000, MOST_UNFOLDED = 100;
function preparePaper() {
    const places = shown.slice(-MOST_PRINTED);
    const more = shown.length > MOST_PRINTED ? `, the newest ${MOST_PRINTED.toLocaleString("en")} of them` : "";
    control("print").replaceChildren(
        element("p", {}, control("count").textContent + more + filterText()),
        element("table", {}, element("thead", {}, headRow()), element("tbody", {}, ...Array.from(places, rowOf))));
    for (const folded of document.querySelectorAll("details:not([open])")) {
        if (folded.querySelectorAll("tr").length > MOST_UNFOLDED) continue;
        folded.open = true;
        folded.dataset.closed = "";
    }
}

function leavePaper() {
    control("print").replaceChildren();
    for (const folded of document.querySelectorAll("details[data-closed]")) {
        folded.open = false;
        delete folded.dataset.closed;
    }
}

fillSelect("process", "All processes", shares(log.processes).map(([process, count]) => [process, process, count]));
fillSelect("source", "All sources", shares(log.sources).map(([source, count]) => [source, visible(log.names[source]), count]));
fillSelect("log-name", "All logs", shares(log.logOf).map(([place, count]) => [place, visible(log.logs[place]), count]));
control("log-name").parentElement.hidden = !hasManyLogs;
addLevelButtons();
addLaneButtons();
addGapButtons();
markPressed();
watchControls();
watchList();
window.addEventListener("beforeprint", preparePaper);
window.addEventListener("afterprint", leavePaper);
control("log-view").hidden = log.logs.length === 0;
showTime();
refresh();
measureRows();
showList();

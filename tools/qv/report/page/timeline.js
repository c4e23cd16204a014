// The timeline: what is shown, by level above and by process below. Dragging over it chooses a time.

const BINS = 240, TOP = 64, LANE = 16, MOST_LANES = 8;  // heights in pixels

// Processes with a lane of their own, and one lane for all others.
const laneProcesses = shares(log.processes).slice(0, MOST_LANES);
const hasOtherLane = new Set(log.processes).size > MOST_LANES;
const laneCount = laneProcesses.length + (hasOtherLane ? 1 : 0);
const laneOfProcess = new Map(laneProcesses.map(([process], lane) => [process, lane]));

const plot = document.getElementById("plot"), bars = document.getElementById("bars");
const brush = document.getElementById("brush"), axis = document.getElementById("axis");
const hint = document.getElementById("hint");

// The time that the timeline spans.
let domain = [firstTime, lastTime];
let counts = null;  // of what is shown, by kind and bin

function updateDomain() {
    const from = filter.from ?? firstTime, to = filter.to ?? lastTime;
    domain = to > from ? [from, to] : [from - 1, from + 1];
}

function binOf(time) {
    return Math.min(BINS - 1, Math.floor((time - domain[0]) / (domain[1] - domain[0]) * BINS));
}

function timeOfBin(bin) {
    return domain[0] + bin / BINS * (domain[1] - domain[0]);
}

function laneOf(record) {
    return laneOfProcess.get(log.processes[record]) ?? laneProcesses.length;
}

// Fills `counts`; returns the same of each lane.
function countBins() {
    counts = newCounts();
    const lanes = Array.from({ length: laneCount }, newCounts);
    for (const place of shown) {
        const record = entries[place];
        if (record < 0 || Number.isNaN(times[record])) continue;
        const cell = kinds[record] * BINS + binOf(times[record]);
        ++counts[cell];
        ++lanes[laneOf(record)][cell];
    }
    return lanes;
}

function newCounts() {
    return new Uint32Array(KINDS.length * BINS);
}

function totalOf(part, bin) {
    return KINDS.reduce((sum, _, kind) => sum + part[kind * BINS + bin], 0);
}

// Adds the bars of a lane to the path of each kind. Heights grow with the square root, so that one
// error is seen beside a thousand records. The worst kinds stand at the bottom.
function addBars(paths, part, bottom, room) {
    const totals = Array.from({ length: BINS }, (_, bin) => totalOf(part, bin));
    const most = Math.max(1, ...totals);
    totals.forEach((total, bin) => {
        let at = bottom;
        KINDS.forEach((_, kind) => {
            const count = part[kind * BINS + bin];
            if (count === 0) return;
            const height = Math.max(2, Math.sqrt(total / most) * room * count / total);
            at -= height;
            paths[kind] += `M${bin} ${at.toFixed(1)}h.85v${height.toFixed(1)}h-.85z`;
        });
    });
}

function addGaps() {
    let path = "";
    for (const place of shown) {
        const time = entries[place] < 0 ? timeOfEntry(entries[place]) : NaN;
        if (!Number.isNaN(time)) path += `M${binOf(time) + .2} 0h.4v${TOP + laneCount * LANE}h-.4z`;
    }
    return path;
}

function svgPath(css, d) {
    const path = document.createElementNS("http://www.w3.org/2000/svg", "path");
    path.setAttribute("class", css);
    path.setAttribute("d", d);
    return path;
}

function drawTimeline() {
    document.querySelector(".timeline").hidden = !hasTimes;
    if (!hasTimes) return;
    updateDomain();
    const height = TOP + laneCount * LANE;
    const paths = KINDS.map(() => "");
    countBins().forEach((part, lane) => addBars(paths, part, TOP + (lane + 1) * LANE - 1, LANE - 6));
    addBars(paths, counts, TOP - 1, TOP - 8);
    bars.setAttribute("viewBox", `0 0 ${BINS} ${height}`);
    bars.style.height = `${height}px`;
    bars.setAttribute("aria-label", `${counted(shownRecords, "record")} over the time from ${spanText(...domain)}`);
    bars.replaceChildren(svgPath("gap", addGaps()),
        ...KINDS.map((kind, i) => svgPath(`kind-${kind.css}`, paths[i])).reverse());
    drawAxis();
    hint.textContent = spanText(...domain);
}

const STEPS = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1e3, 2e3, 5e3, 1e4, 15e3, 3e4, 6e4, 12e4, 3e5, 6e5, 9e5, 18e5, 36e5, 72e5,
    108e5, 216e5, 432e5, 864e5, 1728e5, 6048e5, 2592e6, 7776e6, 31536e6, 31536e7, 31536e8];
function drawAxis() {
    axis.replaceChildren();
    const span = domain[1] - domain[0];
    const step = STEPS.find(each => span / each <= 10) ?? span;
    const offset = offsetAt(domain[0]);
    const [start, end] = step < 1e3 ? [11, 23] : step < 6e4 ? [11, 19] : step < 864e5 ? [11, 16] : [0, 10];
    for (let time = Math.ceil((domain[0] + offset) / step) * step - offset; time <= domain[1] - span * .04; time += step) {
        const tick = element("span", {}, timeText(time, offset).slice(start, end));
        tick.style.left = `${(time - domain[0]) / span * 100}%`;
        axis.append(tick);
    }
}

// A choice of time by the pointer: `choose(from, to)` for a drag, `jump(time)` for a click.
function watchPlot(choose, jump) {
    let start = null;
    const binAt = event => {
        const box = plot.getBoundingClientRect();
        return Math.max(0, Math.min(BINS, (event.clientX - box.left) / box.width * BINS));
    };
    plot.addEventListener("pointerdown", event => {
        if (event.button !== 0) return;
        start = binAt(event);
        plot.setPointerCapture(event.pointerId);
    });
    plot.addEventListener("pointermove", event => {
        const bin = binAt(event);
        showHint(Math.min(BINS - 1, Math.floor(bin)));
        if (start === null) return;
        brush.hidden = false;
        brush.style.left = `${Math.min(start, bin) / BINS * 100}%`;
        brush.style.width = `${Math.abs(bin - start) / BINS * 100}%`;
    });
    plot.addEventListener("pointerup", event => {
        if (start === null) return;
        const [from, to] = [start, binAt(event)].sort((a, b) => a - b);
        start = null;
        brush.hidden = true;
        if (to - from >= 1) choose(timeOfBin(from), timeOfBin(to));
        else jump(timeOfBin(from));
    });
    plot.addEventListener("pointercancel", () => { start = null; brush.hidden = true; });
    plot.addEventListener("pointerleave", () => { hint.textContent = spanText(...domain); });
}

function showHint(bin) {
    if (!counts) return;
    const parts = KINDS.map((kind, i) => [kind.name, counts[i * BINS + bin]]).filter(([, part]) => part > 0);
    const from = timeOfBin(bin), to = timeOfBin(bin + 1);
    hint.textContent = `${spanText(from, to)}: ${counted(totalOf(counts, bin), "record")}` +
        (parts.length === 0 ? "" : ` (${parts.map(([name, part]) => `${name} ${part}`).join(", ")})`);
}

// Which entries are shown.

const filter = { text: "", levels: new Set(), process: null, source: null, log: null, from: null, to: null };

// Places in `entries`, in their order, and how many of them are records.
let shown = new Int32Array(0);
let shownRecords = 0;

let lowerTexts = null;
function lowerText(record) {
    lowerTexts ??= log.texts.map((text, i) => (text + "\n" + (blocks.get(i)?.label ?? "")).toLowerCase());
    return lowerTexts[record];
}

// A function that tells whether a record has the text that is looked for.
function textTest() {
    const wanted = filter.text.toLowerCase();
    if (wanted === "") return () => true;
    const inSource = log.names.map(name => name.toLowerCase().includes(wanted));
    return record => inSource[log.sources[record]] || lowerText(record).includes(wanted);
}

function isInTime(time) {
    if (filter.from === null && filter.to === null) return true;
    return time >= (filter.from ?? -Infinity) && time <= (filter.to ?? Infinity);
}

// Gaps are shown whatever else is left out: they may have held what is looked for.
function applyFilter() {
    const found = new Int32Array(entries.length);
    const hasText = textTest();
    const { levels, process, source } = filter;
    let length = 0, records = 0;
    for (let place = 0; place < entries.length; ++place) {
        const entry = entries[place];
        if (!isInTime(timeOfEntry(entry))) continue;
        if (entry >= 0) {
            if (levels.size > 0 && !levels.has(kinds[entry])) continue;
            if (process !== null && log.processes[entry] !== process) continue;
            if (source !== null && log.sources[entry] !== source) continue;
            if (filter.log !== null && log.logOf[entry] !== filter.log) continue;
            if (!hasText(entry)) continue;
            ++records;
        }
        found[length++] = place;
    }
    shown = found.subarray(0, length);
    shownRecords = records;
}

// The position among what is shown of a place in `entries`, or -1.
function positionOf(place) {
    let low = 0, high = shown.length;
    while (low < high) {
        const middle = (low + high) >> 1;
        if (shown[middle] < place) low = middle + 1;
        else high = middle;
    }
    return shown[low] === place ? low : -1;
}

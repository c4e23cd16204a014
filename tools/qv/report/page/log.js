"use strict";

// The log: an array for each column, as the data block of the page holds it (log_columns.h).
const log = JSON.parse(document.getElementById("data").textContent);
const recordCount = log.levels.length;

// The kinds of records, from the worst on. What no other kind has is of the last one.
const KINDS = [
    { code: 88, mark: "X", name: "Error", css: "error" },
    { code: 42, mark: "*", name: "Warning", css: "warning" },
    { code: 62, mark: ">", name: "Log itself", css: "itself" },
    { code: 105, mark: "i", name: "Information", css: "info" },
    { code: 32, mark: " ", name: "Trace", css: "trace" },
    { code: -1, mark: "?", name: "Other", css: "other" },
];
const kindOfCode = new Map(KINDS.map((kind, index) => [kind.code, index]));
const kinds = Uint8Array.from(log.levels, code => kindOfCode.get(code) ?? KINDS.length - 1);

// Milliseconds since 1970, not a number where the record has no time.
const times = Float64Array.from(log.times, ticks => ticks === null ? NaN : log.start + ticks / 1e4);
const [firstTime, lastTime] = times.reduce(([low, high], time) =>
    [time < low ? time : low, time > high ? time : high], [Infinity, -Infinity]);
const hasTimes = firstTime <= lastTime;

// Milliseconds that the machine's clock is ahead of UTC at each record.
const offsets = new Int32Array(recordCount);
for (const [from, seconds] of log.zones) offsets.fill(seconds * 1000, from);

const blocks = new Map(log.blocks.map(([record, label, hex]) => [record, { label, hex }]));
const gaps = log.gaps.map(([before, from, offset, size, reason]) => ({ before, from, offset, size, reason }));
const hasManyLogs = log.logs.length > 1;

// What the list shows: a record by its number, a gap by -1 minus its number, in the log's order.
const entries = new Int32Array(recordCount + gaps.length);
{
    let at = 0, gap = 0;
    for (let record = 0; record <= recordCount; ++record) {
        while (gap < gaps.length && gaps[gap].before <= record) entries[at++] = -1 - gap++;
        if (record < recordCount) entries[at++] = record;
    }
}

// The time of a gap is that of the record behind it, or of the last one.
function timeOfEntry(entry) {
    if (entry >= 0) return times[entry];
    return recordCount === 0 ? NaN : times[Math.min(gaps[-1 - entry].before, recordCount - 1)];
}

// [value, records] of a column, the most frequent first.
function shares(column) {
    const counts = new Map();
    for (const value of column) counts.set(value, (counts.get(value) ?? 0) + 1);
    return [...counts].sort((a, b) => b[1] - a[1] || a[0] - b[0]);
}

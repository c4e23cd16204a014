"""Runs the benchmark program in passes and makes the table of ratios from its figures.

    bench_table.py PROGRAM ROWS OUTPUT [--group NAME] [--passes N] [--min-time S] [--document FILE]

Every pass runs every case once, in the order in which they are registered, so that what a row
compares is measured close together; a row's ratio is the median of the passes' ratios. The head of
the file of rows describes its columns. The exit code is 1 when a case failed or is missing; a
missed target is a result, not a failure.
"""
import argparse
import json
import os
import platform
import re
import statistics
import subprocess
import sys
import tempfile
import time

BEGIN, END = "<!-- table: begin -->", "<!-- table: end -->"
NS_PER = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Row:
    def __init__(self, section, line):
        parts = [part.strip() for part in line.split("|")]
        if len(parts) != 5:
            sys.exit(f"not a row: {line}")
        self.section = section
        self.name, self.text, self.side, self.measure, self.target = parts
        self.group = self.name.split("/")[0]
        self.ours = f"{self.name}/ours"
        self.other = None if self.side == "-" else f"{self.name}/{self.side}"

    def cases(self):
        return [case for case in (self.ours, self.other) if case]


def read_rows(path, group):
    rows, section = [], ""
    with open(path, encoding="ascii") as lines:
        for line in map(str.strip, lines):
            if line.startswith("["):
                section = line.strip("[]")
            elif line and not line.startswith("#"):
                rows.append(Row(section, line))
    return [row for row in rows if group in (None, row.group)
            and (row.side != "before" or "QV_BENCH_BEFORE" in os.environ)]


def run_pass(program, group, min_time, figures):
    """Adds the pass's figures to {case: [figures of a pass]}; returns context and errors."""
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        command = [program, f"--benchmark_out={out.name}", "--benchmark_out_format=json",
                   f"--benchmark_min_time={min_time}",
                   f"--benchmark_min_warmup_time={min_time}"]
        if group:
            command.append(f"--benchmark_filter=^{group}/")
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        try:
            report = json.load(out)
        except ValueError:
            report = None
    if done.returncode != 0 or report is None:
        sys.exit(f"{program} ended with status {done.returncode}:\n{done.stdout[-4000:]}")
    errors = []
    for case in report["benchmarks"]:
        # Settings of a case (iterations, clock) follow its three names.
        name = "/".join(case["name"].split("/")[:3])
        if case.get("error_occurred"):
            errors.append(f"{name}: {case['error_message']}")
            continue
        scale = NS_PER[case["time_unit"]]
        figures.setdefault(name, []).append(
            {**case, "cpu": case["cpu_time"] * scale, "wall": case["real_time"] * scale})
    return report["context"], errors


def unit_of(measure):
    end = measure.rsplit("_", 1)[-1]
    return end if end in ("ns", "us", "ms", "bytes") else ""


def shown(value, measure):
    if measure in ("cpu", "wall"):
        unit = next(u for u in ("s", "ms", "us", "ns") if value >= NS_PER[u] or u == "ns")
        return f"{value / NS_PER[unit]:.3g} {unit}"
    if unit_of(measure) == "bytes" or abs(value) >= 1000:
        return f"{value:,.0f} {unit_of(measure)}".strip()
    return f"{value:.3g} {unit_of(measure)}".strip()


def is_met(target, value, measure):
    """Whether the figure meets the target; None without a target."""
    if target == "-":
        return None
    numbers = [float(n) * NS_PER.get(unit if measure in ("cpu", "wall") else "", 1)
               for n, unit in re.findall(r"([\d.]+(?:e\d+)?)\s*(ns|us|ms|s)?", target)
               if n != "." and n != ".."]
    if ".." in target:
        return numbers[0] <= value <= numbers[1]
    compare = {"<=": value <= numbers[0], ">=": value >= numbers[0], "<": value < numbers[0]}
    return compare[target.split()[0]]


def table(rows, figures):
    """The table's lines and the cases that are missing."""
    lines, missing, section = [], [], None
    for row in rows:
        absent = [case for case in row.cases() if not figures.get(case)]
        absent += [f"{case}, counter {row.measure}" for case in row.cases()
                   if figures.get(case) and row.measure not in figures[case][0]]
        if absent:
            missing += absent
            continue
        if row.section != section:
            section = row.section
            lines += ["", f"**{section}**", "",
                      "| work | ours | beside | its figure | ratio | target | met |",
                      "|---|--:|---|--:|--:|---|---|"]
        middle = max if row.measure.startswith("worst_") else statistics.median
        ours = [figure[row.measure] for figure in figures[row.ours]]
        cells = [row.text, shown(middle(ours), row.measure)]
        if row.other:
            others = [figure[row.measure] for figure in figures[row.other]]
            result = middle(a / b if b else float("inf") for a, b in zip(ours, others))
            cells += [row.side.replace("_", " "), shown(middle(others), row.measure),
                      f"{result:.2f}"]
        else:
            result = middle(ours)
            cells += ["", "", ""]
        met = is_met(row.target, result, row.measure if not row.other else "")
        cells += ["" if met is None else row.target, {None: "", True: "yes", False: "no"}[met]]
        lines.append("| " + " | ".join(cells) + " |")
    return lines, missing


def machine(context, passes):
    model = "unknown processor"
    with open("/proc/cpuinfo", encoding="utf-8", errors="replace") as info:
        for line in info:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
                break
    one_minute = f"{os.getloadavg()[0]:.1f}"
    return (f"{time.strftime('%Y-%m-%d %H:%M')}, passes: {passes}, {model}, {os.cpu_count()} cores, "
            f"{platform.system()} {platform.release()}, {context['compiler']} "
            f"{context['flags']}; load average at the end {one_minute}.")


def put_between_markers(path, text):
    with open(path, encoding="utf-8") as page:
        content = page.read()
    head, rest = content.split(BEGIN, 1)
    tail = rest.split(END, 1)[1]
    with open(path, "w", encoding="utf-8") as page:
        page.write(f"{head}{BEGIN}\n{text}\n{END}{tail}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("rows")
    parser.add_argument("output")
    parser.add_argument("--group")
    parser.add_argument("--passes", type=int, default=9)
    parser.add_argument("--min-time", type=float, default=0.05)
    parser.add_argument("--document")
    options = parser.parse_args()

    rows = read_rows(options.rows, options.group)
    if not rows:
        sys.exit(f"no group '{options.group}' in {options.rows}")
    figures, errors, context = {}, [], None
    for number in range(options.passes):
        print(f"\rpass {number + 1} of {options.passes}", end="", file=sys.stderr, flush=True)
        context, found = run_pass(options.program, options.group, options.min_time, figures)
        errors += found
        if found:
            break
    print(file=sys.stderr)
    lines, missing = table(rows, figures)
    text = "\n".join([machine(context, options.passes)] + lines)
    print(text)
    with open(options.output, "w", encoding="utf-8") as out:
        out.write(text + "\n")
    for problem in errors + [f"missing: {case}" for case in missing]:
        print(problem, file=sys.stderr)
    if errors or missing:
        sys.exit(1)
    if options.document:
        put_between_markers(options.document, text)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Turns a benchmark run (Google Benchmark's JSON) into the table of
docs/performance.md: one row per family, layout and side, the median time as
a ratio to the copy of the same layout and side from the same run, and
OpenCV's nearest equivalent beside it. Rows of this run replace the rows with
the same key; the others stay, so a partial run updates only what it
measured. The times are CPU times of the benchmark thread: on a shared
machine the wall-clock time also counts the time the thread waited for a
core."""
import json
import re
import sys

BEGIN, END = "<!-- bench:begin -->", "<!-- bench:end -->"
HEADER = ["Family", "Layout", "Side", "CPU time (ms)", "Ratio to copy", "OpenCV equivalent", "OpenCV ratio"]


def medians(path):
    runs = json.load(open(path))["benchmarks"]
    out = {}
    for b in runs:
        if b.get("run_type") == "aggregate" and b.get("aggregate_name") != "median":
            continue
        name = b.get("run_name", b["name"]).split("/repeats")[0]
        out[name] = (b["cpu_time"] * {"ms": 1.0, "us": 1e-3, "ns": 1e-6, "s": 1e3}[b["time_unit"]], b.get("label", ""))
    return out


def rows_of(m):
    rows = {}
    for name, (ms, _) in m.items():
        parts = name.split("/")
        if len(parts) != 3 or parts[0] == "copy" or parts[0].startswith("opencv:"):
            continue
        family, layout, side = parts
        copy = m.get(f"copy/{layout}/{side}")
        if not copy:
            continue
        cv = m.get(f"opencv:{family}/{layout}/{side}")
        rows[(family, layout, side)] = [
            family, layout, side, f"{ms:.2f}", f"{ms / copy[0]:.2f}",
            cv[1] if cv else "", f"{cv[0] / copy[0]:.2f}" if cv else ""]
    return rows


def parse_table(text):
    rows = {}
    for line in text.splitlines():
        cells = [c.strip() for c in line.strip().strip("|").split("|")]
        if len(cells) == len(HEADER) and cells[0] not in ("Family", "---") and not set(cells[0]) <= {"-"}:
            rows[(cells[0], cells[1], cells[2])] = cells
    return rows


def main():
    result, doc = sys.argv[1], sys.argv[2]
    text = open(doc).read()
    if BEGIN not in text:
        text += f"\n## Every family\n\n{BEGIN}\n{END}\n"
    head, rest = text.split(BEGIN, 1)
    old, tail = rest.split(END, 1)
    rows = parse_table(old)
    new = rows_of(medians(result))
    rows.update(new)
    order = sorted(rows, key=lambda k: (k[0], int(k[1]), int(k[2])))
    lines = ["| " + " | ".join(HEADER) + " |", "|" + "---|" * len(HEADER)]
    lines += ["| " + " | ".join(rows[k]) + " |" for k in order]
    open(doc, "w").write(head + BEGIN + "\n" + "\n".join(lines) + "\n" + END + tail)
    for k in sorted(new):
        r = new[k]
        print(f"  {'/'.join(k):40s} {r[4]:>7s}x copy" + (f"   {r[5]} {r[6]}x" if r[5] else ""))


if __name__ == "__main__":
    main()

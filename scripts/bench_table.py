#!/usr/bin/env python3
"""Prints the results of Google Benchmark as one row for each operation.

Benchmarks are named operation/side: "ours", and the sides to compare with, such as "openssl". A "floor" is the
cryptography alone: what "sign_p256" takes is the least that "authority_p256" can take.
"""

import json
import sys

FLOOR_OF = {"authority": "sign", "client": "verify"}
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def read_times(path):
    """Times in nanoseconds by operation and side; the median where a benchmark was repeated."""
    with open(path, encoding="utf-8") as file:
        runs = json.load(file)["benchmarks"]
    times = {}
    medians = set()
    for run in runs:
        operation, _, side = run["run_name"].partition("/")
        is_median = run.get("aggregate_name") == "median"
        if (run["run_type"] == "aggregate" and not is_median) or (operation, side) in medians:
            continue
        if is_median:
            medians.add((operation, side))
        times.setdefault(operation, {})[side] = run["cpu_time"] * NANOSECONDS[run["time_unit"]]
    return times


def as_text(nanoseconds):
    for unit, size in (("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.2f} {unit}"
    return f"{nanoseconds:.0f} ns"


def others(operation, times):
    """What to compare with: pairs of a label and a time."""
    for side, time in times[operation].items():
        if side != "ours":
            yield side, time
    step, _, key = operation.partition("_")
    floor = f"{FLOOR_OF.get(step)}_{key}"
    if "floor" in times.get(floor, {}):
        yield floor, times[floor]["floor"]


def rows(times):
    for operation, sides in times.items():
        ours = sides.get("ours")
        if ours is None:
            continue
        beside = list(others(operation, times)) or [("", None)]
        for label, time in beside:
            ratio = f"{ours / time:.3f}" if time else ""
            yield operation, as_text(ours), label, as_text(time) if time else "", ratio


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: bench_table.py RESULTS.json")
    table = [("operation", "ours", "beside", "time", "ours / beside"), *rows(read_times(sys.argv[1]))]
    widths = [max(len(row[column]) for row in table) for column in range(len(table[0]))]
    for row in table:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Prints the results of Google Benchmark as one row for each operation, then which bars are met, and adds the bars'
figures to the file of results.

Benchmarks are named operation/side: "ours", and the sides to compare with, such as "openssl". A "floor" is the
cryptography alone: what "sign_p256" takes is the least that "authority_p256" can take.

Figures of another kind are given as options, the size of the library and the time of a build, and go the same way.
"""

import argparse
import dataclasses
import json
import statistics

FLOOR_OF = {"authority": "sign", "client": "verify", "message": "sign"}
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


def floor_of(operation):
    step, _, key = operation.partition("_")
    return f"{FLOOR_OF.get(step)}_{key}"


class Times:
    """Times of an operation's side in nanoseconds: the medians, and those of the fastest runs; and other figures."""

    def __init__(self, results, others=None):
        self.others = others or {}
        runs = {}
        for run in results["benchmarks"]:
            if run["run_type"] == "iteration":
                operation, _, side = run["run_name"].partition("/")
                time = run["cpu_time"] * NANOSECONDS[run["time_unit"]]
                runs.setdefault(operation, {}).setdefault(side, []).append(time)
        self.median = self._each(runs, statistics.median)
        self.least = self._each(runs, min)

    @staticmethod
    def _each(runs, measure):
        return {operation: {side: measure(times) for side, times in sides.items()} for operation, sides in runs.items()}


@dataclasses.dataclass(frozen=True)
class Bar:
    """What an operation may take at most."""

    operation: str
    most: float

    unit = ""

    def figure(self, times):
        raise NotImplementedError

    def measure(self, times):
        """None when a benchmark that it takes was not run."""
        try:
            return self.figure(times)
        except KeyError:
            return None


class Ratio(Bar):
    unit = "of OpenSSL's time"

    def figure(self, times):
        sides = times.median[self.operation]
        return sides["ours"] / sides["openssl"]


class AboveSignature(Bar):
    """What a signature takes is many times the rest, so the difference is that of the fastest runs: what disturbs a
    machine for a moment is more than the rest."""

    unit = "us above the raw signature"

    def signature(self, times):
        return times.least[floor_of(self.operation)]["floor"]

    def rest(self, times):
        return times.least[self.operation]["ours"] - self.signature(times)

    def figure(self, times):
        return self.rest(times) / 1e3


class ShareAboveSignature(AboveSignature):
    unit = "of a raw signature, that taken out"

    def figure(self, times):
        return self.rest(times) / self.signature(times)


class Given(Bar):
    """A figure that is no time of an operation."""

    def figure(self, times):
        return times.others[self.operation]


class Size(Given):
    unit = "MiB, stripped"


class BuildTime(Given):
    unit = "s from scratch, two compilers at a time"


BARS = (
    Ratio("request_decode", 0.5),
    Ratio("request_build_encode", 0.25),
    Ratio("response_decode", 0.05),
    Ratio("authority_p256", 0.6),
    AboveSignature("authority_rsa2048", 15),
    Ratio("client_p256", 0.25),
    Ratio("client_rsa2048", 0.12),
    ShareAboveSignature("message_p256", 0.25),
    Size("library", 4),
    BuildTime("build", 300),
)


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
    floor = floor_of(operation)
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


def measured_bars(times):
    """The bars whose benchmarks were run, as they go into the file."""
    for bar in BARS:
        figure = bar.measure(times)
        if figure is not None:
            yield {"operation": bar.operation, "figure": round(figure, 4), "most": bar.most, "unit": bar.unit,
                   "met": figure <= bar.most}


def bar_rows(bars):
    for bar in bars:
        yield (bar["operation"], f"{bar['figure']:.3f}", f"{bar['most']:g}", "yes" if bar["met"] else "no", bar["unit"])


def print_table(table):
    widths = [max(len(row[column]) for row in table) for column in range(len(table[0]))]
    for row in table:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


def given_figures(arguments):
    given = {"library": arguments.library and arguments.library / 2**20, "build": arguments.build}
    return {name: figure for name, figure in given.items() if figure is not None}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--library", type=int, metavar="OCTETS", help="the size of the stripped shared library")
    parser.add_argument("--build", type=float, metavar="SECONDS", help="the time of a build from scratch")
    parser.add_argument("results", help="the file that Google Benchmark wrote, to which the bars are added")
    arguments = parser.parse_args()
    path = arguments.results
    with open(path, encoding="utf-8") as file:
        results = json.load(file)
    times = Times(results, given_figures(arguments))
    results["bars"] = list(measured_bars(times))
    with open(path, "w", encoding="utf-8") as file:
        json.dump(results, file, indent=2)
        file.write("\n")

    print_table([("operation", "ours", "beside", "time", "ours / beside"), *rows(times.median)])
    if results["bars"]:
        print()
        print_table([("bar", "figure", "at most", "met", ""), *bar_rows(results["bars"])])


if __name__ == "__main__":
    main()

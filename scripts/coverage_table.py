#!/usr/bin/env python3
"""Prints which share of the lines of each folder ran, and the files below the bar, from the JSON of gcovr. Writes each
line that did not run, with its text, for people to read. The exit status is 1 when the folders together are below the
bar; generated code is shown and not held to it."""

import argparse
import dataclasses
import json
import pathlib
import sys


@dataclasses.dataclass(frozen=True)
class Share:
    lines: int
    covered: int

    @property
    def percent(self):
        return 100 * self.covered / self.lines if self.lines else 100.0

    def __add__(self, other):
        return Share(self.lines + other.lines, self.covered + other.covered)


NOTHING = Share(0, 0)


def counted_lines(file):
    return [line for line in file["lines"] if not line.get("gcovr/noncode")]


def share_of(file):
    lines = counted_lines(file)
    return Share(len(lines), sum(line["count"] > 0 for line in lines))


def uncovered_lines(file):
    return [line["line_number"] for line in counted_lines(file) if line["count"] == 0]


def write_uncovered(output, files):
    with output.open("w", encoding="utf-8") as out:
        for path, file in sorted(files.items()):
            source = pathlib.Path(path).read_text(encoding="utf-8").splitlines()
            for number in uncovered_lines(file):
                out.write(f"{path}:{number}: {source[number - 1].strip()}\n")


def print_row(name, share):
    print(f"{name:<44} {share.lines:>7} {share.covered:>8} {share.percent:>8.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--least", type=float, required=True, help="the bar, in percent")
    parser.add_argument("--generated", required=True, help="the folder of generated code")
    parser.add_argument("--uncovered", type=pathlib.Path, required=True, help="where to write what did not run")
    parser.add_argument("coverage", type=pathlib.Path)
    parser.add_argument("folders", nargs="+")
    arguments = parser.parse_args()

    measured = {file["file"]: file for file in json.loads(arguments.coverage.read_text(encoding="utf-8"))["files"]}
    of_folder = {
        folder: {path: file for path, file in measured.items() if path.startswith(folder + "/")}
        for folder in [*arguments.folders, arguments.generated]
    }
    held = {path: file for folder in arguments.folders for path, file in of_folder[folder].items()}
    write_uncovered(arguments.uncovered, held)

    print(f"{'folder':<44} {'lines':>7} {'covered':>8} {'percent':>8}")
    for folder in arguments.folders:
        print_row(folder, sum(map(share_of, of_folder[folder].values()), NOTHING))
    total = sum(map(share_of, held.values()), NOTHING)
    print_row("together", total)
    print_row("generated code", sum(map(share_of, of_folder[arguments.generated].values()), NOTHING))

    below = {path: share_of(file) for path, file in held.items() if share_of(file).percent < arguments.least}
    if below:
        print(f"\n{f'files below {arguments.least:g} %':<44} {'lines':>7} {'covered':>8} {'percent':>8}")
        for path, share in sorted(below.items(), key=lambda row: row[1].percent):
            print_row(path, share)
    print(f"\nEach line that did not run: {arguments.uncovered}")

    if total.percent < arguments.least:
        print(f"coverage: {total.percent:.2f} % of the lines ran, and not {arguments.least:g} %", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Holds the tables of docs/result_codes.md against the codes that the headers name: each has one row with its number,
and no cell is empty."""

import argparse
import pathlib
import re
import sys

ROW = re.compile(r"^\| (0(?:x[0-9A-F]{8})?) \| `(\w+)` \| (.+) \| (.+) \| (.+) \|$")
ENUMERATOR = re.compile(r"^ {4}(\w+) = (?:static_cast<HRESULT>\()?(0x[0-9A-Fa-f]+|\d+)u?\)?,? *(?://|$)", re.MULTILINE)
MENTION = re.compile(r"\b(?:ERROR|NTE|CRYPT_E|E|SCARD_W|TRUST_E)_[A-Z][A-Z0-9_]*[A-Z0-9]\b")


def as_result(number):
    """What HRESULT_FROM_WIN32 makes of it."""
    return number if number == 0 or number & 0x80000000 else number & 0xFFFF | 0x80070000


def enumerators(header):
    return {name: as_result(int(number, 0)) for name, number in ENUMERATOR.findall(header.read_text(encoding="utf-8"))}


def rows(page):
    for number, line in enumerate(page.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("| 0"):
            match = ROW.match(line)
            yield (f"{page.name}:{number}", match[2], int(match[1], 0)) if match else (f"{page.name}:{number}", None, 0)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("root", type=pathlib.Path)
    root = parser.parse_args().root
    codes = enumerators(root / "values" / "result.h")
    mentioned = set(MENTION.findall((root / "platform" / "cryptoapi.h").read_text(encoding="utf-8")))
    complaints = [] if codes and mentioned else ["no codes found in the headers"]
    complaints += [f"cryptoapi.h names {name}, result.h does not" for name in sorted(mentioned - set(codes))]
    told = set()
    for place, name, number in rows(root / "docs" / "result_codes.md"):
        if name is None:
            complaints.append(f"{place}: want | code | `name` | meaning | from | what to do |")
        elif name in told:
            complaints.append(f"{place}: {name} has a row already")
        elif codes.get(name) != number:
            complaints.append(f"{place}: {name} is {codes.get(name, 'unknown')} in result.h, not {number:#x}")
        told.add(name)
    complaints += [f"docs/result_codes.md has no row for {name}" for name in sorted(set(codes) - told)]
    print("\n".join(complaints) or f"{len(codes)} codes")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())

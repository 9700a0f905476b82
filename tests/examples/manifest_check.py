#!/usr/bin/env python3
"""Compares what `inspect --json` prints with what another program found in the same files.

    manifest_check.py PROGRAM FOLDER

FOLDER holds `manifest.jsonl`: one JSON object a file with its path in the folder as "file", what it is as "kind", its
size as "bytes", and as "decoded" the values found in it. Each difference is a line; the exit status is 1 if there is
one. A file that the library refuses differs in what could not be read.
"""

import json
import pathlib
import subprocess
import sys


def read_lines(text):
    return [json.loads(line) for line in text.splitlines() if line.strip()]


def differences(expected, printed):
    """Each as (what, expected value, printed value)."""
    for name, value, ours in (("kind", expected["kind"], printed["kind"]),
                              ("bytes", expected["bytes"], printed["size"])):
        if value != ours:
            yield name, value, ours
    for key, value in expected["decoded"].items():
        ours = printed["decoded"].get(key, "(nothing)")
        if value != ours:
            yield key, value, ours


def main(program, folder):
    manifest = read_lines((folder / "manifest.jsonl").read_text(encoding="utf-8"))
    command = [program, "--json", "--", *(str(folder / entry["file"]) for entry in manifest)]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    printed = read_lines(done.stdout)
    if len(printed) != len(manifest):
        sys.exit(f"{len(manifest)} files and {len(printed)} objects: {done.stderr}")
    found = 0
    for expected, ours in zip(manifest, printed):
        for name, value, other in differences(expected, ours):
            found += 1
            print(f"{expected['file']}: {name} is {json.dumps(other)} and not {json.dumps(value)}")
        for fault in ours.get("faults", []):
            print(f"{expected['file']}: {fault['what']} refused at offset {fault['offset']}: {fault['reason']}")
    print(f"{len(manifest)} files, {found} differences")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], pathlib.Path(sys.argv[2])))

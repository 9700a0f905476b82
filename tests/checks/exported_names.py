#!/usr/bin/env python3
"""Holds the dynamic symbols of the shared library against the checked-in list, and sees to it that the archive of the
object layer defines none of them: an application that links both must find each name once."""

import argparse
import pathlib
import subprocess
import sys

# Every object that throws or catches a type without virtual functions holds weak copies of its type information, which
# the run-time compares by name.
TYPE_INFORMATION = ("_ZTI", "_ZTS")


def listed_names(path):
    lines = (line.strip() for line in path.read_text(encoding="utf-8").splitlines())
    return [line for line in lines if line and not line.startswith("#")]


def defined_names(nm, options, binary):
    """The names of a binary's definitions; a line is value, type, name."""
    output = subprocess.run([nm, *options, "--defined-only", "--format=posix", str(binary)], text=True,
                            capture_output=True, check=True).stdout
    fields = (line.split() for line in output.splitlines())
    return {words[0] for words in fields if len(words) >= 2 and words[1].isupper()}


def readable(name):
    return subprocess.run(["c++filt", name], text=True, capture_output=True, check=True).stdout.strip()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--list", required=True, type=pathlib.Path)
    parser.add_argument("--library", required=True, type=pathlib.Path)
    parser.add_argument("--archive", required=True, type=pathlib.Path)
    parser.add_argument("--nm", default="nm")
    options = parser.parse_args()

    listed = listed_names(options.list)
    exported = defined_names(options.nm, ["-D"], options.library)
    archived = defined_names(options.nm, ["-g"], options.archive)
    complaints = [f"listed twice: {name}" for name in sorted(set(listed)) if listed.count(name) > 1]
    for name in sorted(exported - set(listed)):
        complaints.append(f"exported but not in {options.list.name}: {name}  {readable(name)}")
    for name in sorted(set(listed) - exported):
        complaints.append(f"in {options.list.name} but not exported (gone, hidden or inline?): {name}  {readable(name)}")
    for name in sorted(archived & set(listed)):
        if not name.startswith(TYPE_INFORMATION):
            complaints.append(f"exported by the library and in the archive too: {name}  {readable(name)}")
    print("\n".join(complaints) or f"{len(listed)} exported names")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""What Doxygen reads of a header: the header, with the paragraph that it opens with as the description of the file.
Line numbers stay as they are: the blank line above the paragraph makes room for what Doxygen wants to hear."""

import pathlib
import sys


def with_description(path, lines):
    first = next(number for number, line in enumerate(lines) if line.startswith("//"))
    behind = next(number for number, line in enumerate(lines) if number > first and not line.startswith("//"))
    name = "/".join(path.parts[-2:])
    return [*lines[:first - 1], f"/// @file {name}", *(f"/{line}" for line in lines[first:behind]), *lines[behind:]]


if __name__ == "__main__":
    header = pathlib.Path(sys.argv[1])
    print("\n".join(with_description(header, header.read_text(encoding="utf-8").splitlines())))

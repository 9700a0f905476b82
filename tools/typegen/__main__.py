"""Command line: python3 -m typegen --out DIRECTORY --catalogue FILE MODULE...

With --describe FILE in the place of --out it writes the table of all types that tests read."""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

from . import catalogue, checks, emit_description, output, parser
from .model import Catalogue, ModuleError


def main(arguments: list[str]) -> int:
    options = argparse.ArgumentParser(prog="typegen", description="Makes C++ out of ASN.1 modules.")
    wanted = options.add_mutually_exclusive_group(required=True)
    wanted.add_argument("--out", type=Path, help="where the C++ goes")
    wanted.add_argument("--describe", type=Path, help="where the table of all types goes, for tests")
    options.add_argument("--catalogue", type=Path, required=True, help="the list of modules and their types")
    options.add_argument("modules", type=Path, nargs="+")
    given = options.parse_args(arguments)
    try:
        expected = catalogue.read(given.catalogue)
        modules = [parser.parse_file(path, path.name) for path in given.modules]
        found = Catalogue(catalogue.in_order(modules, expected), expected)
        checks.check(found)
        if given.describe:
            described = {given.describe.name: emit_description.description(found)}
            output.write_all(described, given.describe.parent)
        else:
            output.write_all(output.generate(found), given.out)
    except ModuleError as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

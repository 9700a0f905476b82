"""Command line: python3 -m typegen --out DIRECTORY --catalogue FILE MODULE..."""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

from . import catalogue, checks, output, parser
from .model import Catalogue, ModuleError


def main(arguments: list[str]) -> int:
    options = argparse.ArgumentParser(prog="typegen", description="Makes C++ out of ASN.1 modules.")
    options.add_argument("--out", type=Path, required=True, help="where the C++ goes")
    options.add_argument("--catalogue", type=Path, required=True, help="the list of modules and their types")
    options.add_argument("modules", type=Path, nargs="+")
    given = options.parse_args(arguments)
    try:
        expected = catalogue.read(given.catalogue)
        modules = [parser.parse_file(path, path.name) for path in given.modules]
        found = Catalogue(catalogue.in_order(modules, expected), expected)
        checks.check(found)
        output.write_all(output.generate(found), given.out)
    except ModuleError as error:
        print(error, file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))

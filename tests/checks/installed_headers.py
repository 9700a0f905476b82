#!/usr/bin/env python3
"""Compiles each installed header alone, as a user with strict warnings would."""

import argparse
import pathlib
import subprocess
import sys

FOLDERS = ("values", "runtime", "asn1", "tsp", "platform")
WARNINGS = ("-Wall", "-Wextra", "-Wpedantic", "-Werror")


def installed_headers(root):
    """Private headers lie in detail/."""
    for folder in FOLDERS:
        yield from (path.relative_to(root) for path in sorted((root / folder).glob("*.h")))


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--standard", required=True)
    parser.add_argument("--root", required=True, type=pathlib.Path)
    options = parser.parse_args()

    headers = list(installed_headers(options.root))
    failed = [] if headers else ["no headers found"]
    for header in headers:
        # Twice, for the include guard. Nothing else is on the include path, the build tree least of all.
        unit = f'#include "{header.as_posix()}"\n' * 2
        command = [options.compiler, f"-std={options.standard}", *WARNINGS, "-fsyntax-only", f"-I{options.root}",
                   "-x", "c++", "-"]
        result = subprocess.run(command, input=unit, text=True, capture_output=True, check=False)
        if result.returncode != 0:
            failed.append(f"{header} does not compile alone:\n{result.stderr}")
    print("\n".join(failed) or f"{len(headers)} headers")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

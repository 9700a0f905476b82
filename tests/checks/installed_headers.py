#!/usr/bin/env python3
"""Compiles each installed header alone, as a user with strict warnings would."""

import argparse
import pathlib
import subprocess
import sys

WARNINGS = ("-Wall", "-Wextra", "-Wpedantic", "-Werror")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--standard", required=True, help="17 or 20")
    parser.add_argument("--root", required=True, type=pathlib.Path, help="where the headers are installed")
    options = parser.parse_args()

    headers = [path.relative_to(options.root) for path in sorted(options.root.rglob("*.h"))]
    failed = [] if headers else ["no headers found"]
    for header in headers:
        # Twice, for the include guard. Nothing else is on the include path, the source tree least of all.
        unit = f'#include "{header.as_posix()}"\n' * 2
        command = [options.compiler, f"-std=c++{options.standard}", *WARNINGS, "-fsyntax-only", f"-I{options.root}",
                   "-x", "c++", "-"]
        result = subprocess.run(command, input=unit, text=True, capture_output=True, check=False)
        if result.returncode != 0:
            failed.append(f"{header} does not compile alone:\n{result.stderr}")
    print("\n".join(failed) or f"{len(headers)} headers")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())

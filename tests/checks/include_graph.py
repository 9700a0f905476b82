#!/usr/bin/env python3
"""Holds the include lines against the order of the floors: no floor includes a higher one, and what is installed
includes nothing that is not."""

import argparse
import pathlib
import re
import sys

# What each floor may include, itself aside.
BELOW = {
    "platform": set(),
    "values": {"platform"},
    "runtime": {"values"},
    "asn1data": {"runtime", "values"},
    "asn1": {"asn1data", "runtime", "values", "platform"},
    "tsp": {"asn1", "asn1data", "runtime", "values", "platform"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s+["<]([^">]+)[">]', re.MULTILINE)


def included_files(source):
    return INCLUDE.findall(source.read_text(encoding="utf-8"))


def check_floors(floor, path, include):
    """The floor is the first part of an include line; system headers have another one."""
    target = include.split("/")[0]
    if "/" not in include or target not in BELOW:
        return None
    if target != floor and target not in BELOW[floor]:
        return f"{path}: {floor}/ may not include {include}: {target}/ is not below it"
    return None


def check_installed(floor, path, include):
    private = "detail" in path.parts or floor == "asn1data"
    if private or path.suffix != ".h":
        return None
    if "/detail/" in include or include.startswith("asn1data/"):
        return f"{path}: is installed and may not include {include}, which is not"
    return None


def check_crypto_library(floor, path, include):
    if include.startswith("openssl/") and (floor != "platform" or "detail" not in path.parts and path.suffix == ".h"):
        return f"{path}: may not include {include}: only sources of platform/ know the crypto library"
    return None


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("roots", nargs="+", type=pathlib.Path, help="directories that hold folders of floors")
    roots = parser.parse_args().roots
    complaints = []
    seen = set()
    for root in roots:
        for floor in BELOW:
            for source in sorted((root / floor).rglob("*")):
                if source.suffix not in {".h", ".cpp"}:
                    continue
                seen.add(floor)
                path = source.relative_to(root)
                for include in included_files(source):
                    for check in (check_floors, check_installed, check_crypto_library):
                        complaints.append(check(floor, path, include))
    complaints = [complaint for complaint in complaints if complaint]
    complaints += [f"no sources of {floor}/ under the given directories" for floor in BELOW if floor not in seen]
    print("\n".join(complaints))
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())

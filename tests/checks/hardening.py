#!/usr/bin/env python3
"""What is shipped is hardened: the parts that relocation wrote are read-only once it is loaded, no stack can be
executed, a stack that was overrun ends the program, and the C library tests the bounds that the compiler knows."""

import argparse
import pathlib
import re
import subprocess
import sys


ENDBR64 = bytes.fromhex("F30F1EFA")  # where a checked indirect jump may land, Intel SDM volume 1, 17.3


class Binary:
    def __init__(self, path, readelf):
        self.octets = path.read_bytes()
        def read(*options):
            return subprocess.run([readelf, "-W", *options, str(path)], text=True, capture_output=True,
                                  check=True).stdout
        self.segments = read("--program-headers")
        self.dynamic = read("--dynamic")
        self.symbols = read("--dyn-syms")
        self.imports = re.findall(r"\bUND (\w+)", self.symbols)

    def exported_functions(self):
        return re.findall(r": ([0-9a-f]{16}) +\d+ FUNC +(?:GLOBAL|WEAK) +DEFAULT +\d+ (\S+)", self.symbols)

    def octets_at(self, address, count):
        for offset, start, size in re.findall(r"^ *LOAD +0x(\w+) 0x(\w+) 0x\w+ 0x(\w+)", self.segments, re.MULTILINE):
            inside = address - int(start, 16)
            if 0 <= inside < int(size, 16):
                return self.octets[int(offset, 16) + inside:][:count]
        return b""

    def holds_now(self):
        return "GNU_RELRO" in self.segments and re.search(r"\(FLAGS(_1)?\).*\bNOW\b", self.dynamic) is not None

    def has_plain_stack(self):
        stack = re.search(r"^ *GNU_STACK +(?:0x\w+ +){5}([RWE ]+?) +0x", self.segments, re.MULTILINE)
        return stack is not None and "E" not in stack[1]

    def is_anywhere(self):
        """Laid out anew by each load: a shared library, or a program that says it may be."""
        return "(SONAME)" in self.dynamic or re.search(r"\(FLAGS_1\).*\bPIE\b", self.dynamic) is not None

    def guards_stacks(self):
        return "__stack_chk_fail" in self.imports

    def tests_bounds(self):
        return any(name.endswith("_chk") for name in self.imports)

    def marks_branches(self):
        functions = self.exported_functions()
        return functions and all(self.octets_at(int(at, 16), 4) == ENDBR64 for at, _ in functions)


PROTECTIONS = {
    "relocations": (Binary.holds_now, "is writable where relocation has written"),
    "stack": (Binary.has_plain_stack, "has a stack that can be executed"),
    "addresses": (Binary.is_anywhere, "lies at one address"),
    "overruns": (Binary.guards_stacks, "does not see that a stack was overrun"),
    "bounds": (Binary.tests_bounds, "does not test bounds"),
    "branches": (Binary.marks_branches, "exports functions that no checked jump may enter"),
}


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--readelf", default="readelf")
    parser.add_argument("--protection", required=True, nargs="+", choices=PROTECTIONS)
    parser.add_argument("--binary", required=True, nargs="+", type=pathlib.Path)
    options = parser.parse_args()
    failures = 0
    for path in options.binary:
        binary = Binary(path, options.readelf)
        for protection in options.protection:
            holds, complaint = PROTECTIONS[protection]
            if not holds(binary):
                print(f"{path.name} {complaint}")
                failures += 1
    print(f"{len(options.binary)} binaries, {len(options.protection)} protections, {failures} missing")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())

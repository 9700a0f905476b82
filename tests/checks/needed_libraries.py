#!/usr/bin/env python3
"""The library proper stands on the standard library and the platform service, and on nothing else."""

import argparse
import pathlib
import re
import subprocess
import sys

ALLOWED = re.compile(r"libquillmark_platform\.|libstdc\+\+\.|libc\+\+|libm\.|libc\.|libgcc_s\.|ld-linux"
                     r"|lib(clang_rt\.)?(asan|ubsan|tsan)")  # the sanitizers, when built with them


def needed_libraries(readelf, library):
    output = subprocess.run([readelf, "-dW", str(library)], text=True, capture_output=True, check=True).stdout
    return re.findall(r"\(NEEDED\).*\[(.*)\]", output)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--library", required=True, type=pathlib.Path)
    parser.add_argument("--readelf", default="readelf")
    options = parser.parse_args()
    needed = needed_libraries(options.readelf, options.library)
    foreign = [name for name in needed if not ALLOWED.match(name)]
    if foreign or not needed:
        print(f"{options.library.name} may not need {', '.join(foreign) or 'nothing at all'}")
        return 1
    print(", ".join(needed))
    return 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Installs the build into a prefix of its own, anew each time: what an earlier build left there would pass for
installed."""

import argparse
import pathlib
import shutil
import subprocess
import sys


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--prefix", required=True, type=pathlib.Path)
    parser.add_argument("--cmake", default="cmake")
    options = parser.parse_args()
    shutil.rmtree(options.prefix, ignore_errors=True)
    return subprocess.run([options.cmake, "--install", options.build, "--prefix", options.prefix],
                          stdout=subprocess.DEVNULL, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())

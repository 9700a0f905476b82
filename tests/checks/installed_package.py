#!/usr/bin/env python3
"""Installs the build into a directory of its own and uses it from there: every public header and no private one, a small
project through find_package, and a compiler line through pkg-config."""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

FOLDERS = ("values", "runtime", "asn1", "tsp", "platform")


def run(command, **options):
    result = subprocess.run(command, text=True, capture_output=True, check=False, **options)
    if result.returncode != 0:
        sys.exit(f"failed: {' '.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


def check_headers(source, prefix):
    expected = {path.relative_to(source) for folder in FOLDERS for path in (source / folder).glob("*.h")}
    root = prefix / "include" / "quillmark"
    installed = {path.relative_to(root) for path in root.rglob("*") if path.is_file()}
    if expected != installed:
        missing, extra = sorted(expected - installed), sorted(installed - expected)
        sys.exit(f"headers not installed: {[str(p) for p in missing]}, installed besides: {[str(p) for p in extra]}")


def check_find_package(options, prefix, scratch):
    project = options.source / "tests" / "checks" / "package"
    run([options.cmake, "-S", project, "-B", scratch, f"-DCMAKE_PREFIX_PATH={prefix}",
         f"-DCMAKE_CXX_COMPILER={options.compiler}", f"-DCMAKE_CXX_FLAGS={options.flags}"])
    run([options.cmake, "--build", scratch])
    run([scratch / "user"])


def check_pkg_config(options, prefix, scratch):
    if shutil.which("pkg-config") is None:
        print("no pkg-config here: its file is not tried")
        return
    found = next(prefix.rglob("quillmark-tsp.pc"))
    environment = {**os.environ, "PKG_CONFIG_PATH": str(found.parent)}
    words = run(["pkg-config", "--cflags", "--libs", "quillmark-tsp"], env=environment).split()
    program = scratch / "user_of_pkg_config"
    run([options.compiler, "-std=c++17", *options.flags.split(), options.source / "tests/checks/package/user.cpp",
         "-o", program, *words, f"-Wl,-rpath,{found.parent.parent}"])
    run([program])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--source", required=True, type=pathlib.Path)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--cmake", default="cmake")
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--flags", default="")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as directory:
        prefix = pathlib.Path(directory) / "prefix"
        scratch = pathlib.Path(directory) / "project"
        run([options.cmake, "--install", options.build, "--prefix", prefix])
        check_headers(options.source, prefix)
        check_find_package(options, prefix, scratch)
        check_pkg_config(options, prefix, scratch)


if __name__ == "__main__":
    main()

#!/usr/bin/env python3
"""Builds and runs a ten-line project that has nothing but the installed library: through find_package, and by a
compiler line through pkg-config."""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

PROJECT = pathlib.Path(__file__).parent / "package"
WARNINGS = ("-Wall", "-Wextra", "-Wpedantic", "-Werror")


def run(command, **options):
    result = subprocess.run(command, text=True, capture_output=True, check=False, **options)
    if result.returncode != 0:
        sys.exit(f"failed: {' '.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


def installed_file(prefix, name):
    found = list(prefix.rglob(name))
    if len(found) != 1:
        sys.exit(f"{name} should be under {prefix} once: {found}")
    return found[0]


def check_find_package(options, scratch):
    flags = " ".join([*WARNINGS, options.flags])
    run([options.cmake, "-S", PROJECT, "-B", scratch, f"-DCMAKE_PREFIX_PATH={options.prefix}",
         f"-DCMAKE_CXX_COMPILER={options.compiler}", f"-DCMAKE_CXX_STANDARD={options.standard}",
         "-DCMAKE_CXX_EXTENSIONS=OFF", f"-DCMAKE_CXX_FLAGS={flags}"])
    package = (scratch / "CMakeCache.txt").read_text(encoding="utf-8")
    if f"Quillmark_DIR:PATH={options.prefix}/" not in package:
        sys.exit(f"find_package took another Quillmark than that of {options.prefix}")
    run([options.cmake, "--build", scratch])
    run([scratch / "user"], env=options.environment)


def check_pkg_config(options, scratch):
    if shutil.which("pkg-config") is None:
        print("no pkg-config here: its file is not tried")
        return
    directory = installed_file(options.prefix, "quillmark-tsp.pc").parent
    words = run(["pkg-config", "--cflags", "--libs", "quillmark-tsp"],
                env={**os.environ, "PKG_CONFIG_LIBDIR": str(directory)}).split()
    program = scratch / "user_of_pkg_config"
    run([options.compiler, f"-std=c++{options.standard}", *WARNINGS, *options.flags.split(), PROJECT / "user.cpp",
         "-o", program, *words, f"-Wl,-rpath,{directory.parent}"])
    run([program], env=options.environment)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--prefix", required=True, type=pathlib.Path)
    parser.add_argument("--system", action="store_true",
                        help="the prefix stands for /usr, where the loader finds libraries by itself")
    parser.add_argument("--compiler", required=True)
    parser.add_argument("--standard", required=True, help="17 or 20")
    parser.add_argument("--flags", default="")
    parser.add_argument("--cmake", default="cmake")
    options = parser.parse_args()
    options.environment = dict(os.environ)
    if options.system:
        libraries = installed_file(options.prefix, "libquillmark_tsp.so.1").parent
        options.environment["LD_LIBRARY_PATH"] = str(libraries)
    with tempfile.TemporaryDirectory() as directory:
        check_find_package(options, pathlib.Path(directory))
        check_pkg_config(options, pathlib.Path(directory))


if __name__ == "__main__":
    main()

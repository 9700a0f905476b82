#!/usr/bin/env python3
"""Makes the Debian packages, looks into their control files, and installs them into an empty root with a dpkg database
of its own. Nothing is fetched: the packages that they depend on are asked for, not installed."""

import argparse
import os
import pathlib
import shutil
import subprocess
import sys

RUNTIME = "libquillmark-tsp1"
DEVELOPMENT = "libquillmark-tsp-dev"


def run(command):
    result = subprocess.run(command, text=True, capture_output=True, check=False)
    if result.returncode != 0:
        sys.exit(f"failed: {' '.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


def make_packages(options):
    directory = options.directory / "packages"
    run([options.cpack, "--config", options.build / "CPackConfig.cmake", "-B", directory])
    return {path.name.split("_")[0]: path for path in directory.glob("*.deb")}


def control_fields(package):
    lines = run(["dpkg-deb", "--field", package]).splitlines()
    return dict(line.split(": ", 1) for line in lines if not line.startswith(" "))


def names(dependencies):
    return {word.split()[0] for word in dependencies.split(",")}


def check_fields(packages, version):
    complaints = []

    def expect(what, got, want):
        if got != want:
            complaints.append(f"{what} is {got!r}, want {want!r}")

    expect("the set of packages", sorted(packages), [DEVELOPMENT, RUNTIME])
    if complaints:
        return complaints
    runtime, development = control_fields(packages[RUNTIME]), control_fields(packages[DEVELOPMENT])
    for name, fields in ((RUNTIME, runtime), (DEVELOPMENT, development)):
        expect(f"Version of {name}", fields["Version"], version)
        expect(f"Maintainer of {name}", fields["Maintainer"], "Quillmark TSP")
        expect(f"Multi-Arch of {name}", fields.get("Multi-Arch"), "same")
    missing = {"libc6", "libssl3", "libstdc++6"} - names(runtime["Depends"])
    expect(f"what {RUNTIME} should depend on and does not", missing, set())
    same_version = f"{RUNTIME} (= {version})" in development["Depends"].split(", ")
    expect(f"whether {DEVELOPMENT} depends on {RUNTIME} of the same version", same_version, True)
    return complaints


def control_files(package, directory):
    run(["dpkg-deb", "--control", package, directory])
    return {path.name: path.read_text(encoding="utf-8") for path in directory.iterdir()}


def check_control_files(packages, version, directory):
    """What others link with is told by shlibs, and the linker's cache is renewed by a trigger and no script."""
    files = control_files(packages[RUNTIME], directory / "control")
    complaints = []
    for library in ("libquillmark_platform", "libquillmark_tsp"):
        if f"{library} 1 {RUNTIME} (= {version})" not in files.get("shlibs", "").splitlines():
            complaints.append(f"shlibs of {RUNTIME} does not name {library}: {files.get('shlibs')!r}")
    if files.get("triggers") != "activate-noawait ldconfig\n":
        complaints.append(f"triggers of {RUNTIME} is {files.get('triggers')!r}")
    scripts = sorted({"preinst", "postinst", "prerm", "postrm"} & set(files))
    if scripts:
        complaints.append(f"{RUNTIME} runs {', '.join(scripts)}: nothing there needs a script")
    return complaints


def install(packages, root):
    if os.geteuid() != 0:
        print("not root: unpacked without dpkg's database")
        for package in packages.values():
            run(["dpkg-deb", "--extract", package, root])
        return
    database = root / "var" / "lib" / "dpkg"
    (database / "info").mkdir(parents=True)
    (database / "updates").mkdir()
    (database / "status").touch()
    run(["dpkg", "--root", root, "--admindir", database, "--log", "/dev/null", "--force-depends",
         "--install", *packages.values()])


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--directory", required=True, type=pathlib.Path,
                        help="gets packages/ and root/, anew each time")
    parser.add_argument("--version", required=True)
    parser.add_argument("--cpack", default="cpack")
    options = parser.parse_args()
    shutil.rmtree(options.directory, ignore_errors=True)
    root = options.directory / "root"
    root.mkdir(parents=True)
    packages = make_packages(options)
    complaints = check_fields(packages, options.version)
    if not complaints:
        complaints = check_control_files(packages, options.version, options.directory)
        install(packages, root)
    print("\n".join(complaints))
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())

#!/usr/bin/env python3
"""Holds the files of each install component, of the whole installation and of the packages against the checked-in list.
With --update the list is written anew from the build."""

import argparse
import pathlib
import re
import subprocess
import sys
import tempfile

PACKAGES = {"runtime": "libquillmark-tsp1", "development": "libquillmark-tsp-dev"}
HEADER = """\
# Every installed file under the install component that it belongs to; a Debian package holds one component, under
# /usr. `lib/` stands for the library folder and CONFIG for the build type. Files in share/doc/ are in packages alone.
# A test holds this list; `tests/checks/installed_files.py --build DIR --list FILE --update` writes it anew.
"""


def run(command):
    return subprocess.run(command, text=True, capture_output=True, check=True).stdout


def listed(path):
    components, lines = {}, []
    for line in path.read_text(encoding="utf-8").splitlines():
        if line.startswith("["):
            lines = components.setdefault(line.strip("[]"), [])
        elif line and not line.startswith("#"):
            lines.append(line)
    return {component: set(lines) for component, lines in components.items()}


def library_folder(build):
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    return re.search(r"^CMAKE_INSTALL_LIBDIR:\w+=(.*)$", cache, re.MULTILINE)[1].strip("/")


def general(path, folder):
    """A path as the list has it, whatever the machine and the build type."""
    path = re.sub(rf"^{re.escape(folder)}/", "lib/", path)
    return re.sub(r"/QuillmarkTargets-\w+\.cmake$", "/QuillmarkTargets-CONFIG.cmake", path)


def installed(options, *arguments):
    folder = library_folder(options.build)
    with tempfile.TemporaryDirectory() as prefix:
        run([options.cmake, "--install", options.build, "--prefix", prefix, *arguments])
        return {general(path.relative_to(prefix).as_posix(), folder)
                for path in pathlib.Path(prefix).rglob("*") if not path.is_dir()}


def packed(options, name):
    folder = library_folder(options.build)
    package, = options.packages.glob(f"{name}_*.deb")
    lines = run(["dpkg-deb", "--contents", package]).splitlines()
    paths = (line.split(" -> ")[0].split(maxsplit=5)[5] for line in lines if not line.startswith("d"))
    return {general(path.removeprefix("./usr/"), folder) for path in paths}


def differences(what, got, want):
    for path in sorted(got - want):
        yield f"{what}: installed but not in the list: {path}"
    for path in sorted(want - got):
        yield f"{what}: in the list but not installed: {path}"


def check(options):
    want = listed(options.list)
    yield from differences("components", set(want), set(PACKAGES))
    for component, package in PACKAGES.items():
        files = want.get(component, set())
        yield from differences(component, installed(options, "--component", component), files)
        if options.packages:
            yield from differences(package, packed(options, package), files)
    plain = {path for files in want.values() for path in files if not path.startswith("share/doc/")}
    yield from differences("installation", installed(options), plain)


def update(options):
    text = HEADER
    for component in PACKAGES:
        files = sorted(installed(options, "--component", component))
        text += f"\n[{component}]\n" + "".join(f"{path}\n" for path in files)
    options.list.write_text(text, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--list", required=True, type=pathlib.Path)
    parser.add_argument("--packages", type=pathlib.Path, help="where packages lie to hold against the list as well")
    parser.add_argument("--cmake", default="cmake")
    parser.add_argument("--update", action="store_true")
    options = parser.parse_args()
    if options.update:
        update(options)
    complaints = list(check(options))
    if complaints:
        complaints.append(f"if this is meant: {__file__} --build {options.build} --list {options.list} --update")
    print("\n".join(complaints))
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())

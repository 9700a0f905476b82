"""The list of all modules with the names of their types, in order.

It tells a type that is still to be written from a name that is wrong, and keeps the order of the modules.
"""

from __future__ import annotations

from pathlib import Path

from .model import Module, ModuleError, Position

Expected = tuple[tuple[str, tuple[str, ...]], ...]


def read(path: Path) -> Expected:
    return parse(path.read_text(encoding="utf-8"), path.name)


def parse(text: str, file: str) -> Expected:
    """Lines `Module:` followed by indented names; `#` begins a remark."""
    found: list[tuple[str, list[str]]] = []
    for number, line in enumerate(text.split("\n"), 1):
        line = line.partition("#")[0].rstrip()
        if not line:
            continue
        if not line[0].isspace():
            if not line.endswith(":"):
                raise ModuleError(Position(file, number), f"expected the name of a module and ':', found '{line}'")
            found.append((line[:-1], []))
        elif not found:
            raise ModuleError(Position(file, number), "types in front of the first module")
        else:
            found[-1][1].extend(line.split())
    return tuple((module, tuple(names)) for module, names in found)


def in_order(modules: list[Module], expected: Expected) -> tuple[Module, ...]:
    """The modules in the order of the list."""
    places = {name: place for place, (name, _) in enumerate(expected)}
    for module in modules:
        if module.name not in places:
            raise ModuleError(Position(module.file, 1), f"module {module.name} is not in the catalogue, add it there")
    return tuple(sorted(modules, key=lambda module: places[module.name]))

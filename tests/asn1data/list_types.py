"""Writes the types of all modules as a list of macros: QUILLMARK_TYPE(module, name), and QUILLMARK_NULL(module, name)
for a type that is NULL and has no record.

Usage: list_types.py CATALOGUE OUTPUT MODULE..."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))

from typegen import catalogue, model, names, parser  # noqa: E402


def main(listed: str, output: str, *modules: str) -> None:
    expected = catalogue.read(Path(listed))
    parsed = [parser.parse_file(Path(module), Path(module).name) for module in modules]
    everything = model.Catalogue(catalogue.in_order(parsed, expected), expected)
    lines = []
    for module in everything.modules:
        for assignment in module.types:
            is_null = isinstance(everything.base(assignment.type), model.Null)
            macro = "QUILLMARK_NULL" if is_null else "QUILLMARK_TYPE"
            lines.append(f"{macro}({module.name}, {names.identifier(assignment.name)})\n")
    Path(output).write_text("".join(lines), encoding="ascii")


if __name__ == "__main__":
    main(*sys.argv[1:])

#!/usr/bin/env python3
"""Holds docs/catalogue.md and docs/witnesses.md, the pages on the ASN.1 types, against the modules and the test values,
which they are written from:

    tests/checks/type_pages.py ROOT [--update]

Every type must say above itself which standard it is of, with the section, or that it is `Not published`; what was
written without the text of its standard at hand says `unverified`. Every type must have a value of another encoder, or
one that was composed by hand with its source.
"""

import argparse
import collections
import dataclasses
import pathlib
import re
import sys

# A standard and its section. Those without numbered sections stand by their name and are unverified.
SECTION = r"(?:appendix )?[A-Z0-9]+(?:\.\d+)*"
SOURCE = re.compile(
    rf"(?:RFC \d+ {SECTION}|X\.\d+ {SECTION}|ANSI X9 TR-34|Order 795|GOST R 34\.12-2015|Draft of OCSP version 2)"
    r"(?: \(unverified\))?")
PUBLISHED = re.compile(rf"{SOURCE.pattern}(?:, {SOURCE.pattern})*")
UNPUBLISHED = "Not published"
# The standards whose text was at hand, those that RFC 5911, RFC 5912 and RFC 6268 repeat among them.
COMPARED = {f"RFC {number}" for number in (
    2634, 2985, 2986, 3161, 3279, 3370, 3565, 4055, 4210, 4211, 5035, 5280, 5652, 5755, 6960)}
ROW = re.compile(r"^# (.*)\nType = (.*)\nName = (.*)\nDer = ", re.MULTILINE)
PLAIN_ROW = re.compile(r"^Type = (.*)\nName = ", re.MULTILINE)


# What the modules say


@dataclasses.dataclass(frozen=True)
class Described:
    """A type with what stands above it: its source, and the rest."""

    name: str
    source: str
    remark: str


def described(assignment, names):
    text = " ".join(line[2:].strip() for line in assignment.text if line.startswith("--"))
    match = PUBLISHED.match(text)
    source = match.group() if match else UNPUBLISHED if text.startswith(UNPUBLISHED) else ""
    rest = text[len(source):].strip(" .:,") if source else text
    return Described(names.identifier(assignment.name), source, rest)


def wrong_sources(module, one):
    if not one.source:
        yield f"{module.file}: {one.name}: say above it which standard and section it is of, or '{UNPUBLISHED}'"
    for source in SOURCE.findall(one.source):
        standard = re.match(r"RFC \d+|.*", source).group()
        if standard not in COMPARED and "(unverified)" not in source:
            yield f"{module.file}: {one.name}: the text of {source} was not at hand, so that it is '(unverified)'"


def read_modules(root):
    sys.dont_write_bytecode = True
    sys.path.insert(0, str(root / "tools"))
    from typegen import catalogue, model, names, parser
    expected = catalogue.read(root / "asn1data" / "catalogue.txt")
    files = sorted((root / "asn1data" / "modules").glob("*.asn1"))
    modules = catalogue.in_order([parser.parse_file(path, path.name) for path in files], expected)
    everything = model.Catalogue(modules, expected)
    return everything, {module.name: [described(one, names) for one in module.types] for module in modules}


# What the values say


@dataclasses.dataclass
class Witnesses:
    """How many values of a type there are of each kind, by where they come from."""

    package: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    command: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    by_hand: collections.Counter = dataclasses.field(default_factory=collections.Counter)
    own_schema: int = 0

    @property
    def from_outside(self):
        return bool(self.package or self.command)

    @property
    def enough(self):
        return self.from_outside or any(self.by_hand)


def read_witnesses(folder):
    found = collections.defaultdict(Witnesses)
    for remark, kind, _ in rows(folder / "types_by_pyasn1.txt"):
        schema = re.match(r"schema of pyasn1_modules (\w+)", remark)
        if schema:
            found[kind].package[schema[1]] += 1
        else:
            found[kind].own_schema += 1
    for remark, kind, _ in rows(folder / "types_by_openssl.txt"):
        found[kind].command[re.match(r"openssl (\w+)", remark)[1]] += 1
    for remark, kind, _ in rows(folder / "types_by_hand.txt"):
        found[kind].by_hand[re.match(r"hand, (.*)", remark)[1]] += 1
    for kind in PLAIN_ROW.findall((folder / "types.txt").read_text(encoding="ascii")):
        found[kind].by_hand[""] += 1
    return found


def rows(path):
    return ROW.findall(path.read_text(encoding="ascii"))


# The pages


CATALOGUE = """# Which types are there, and where are they standardised?

This page is written from the remarks above the types in `asn1data/modules`: change it there, then run
`tests/checks/type_pages.py . --update`.

`unverified` stands where the text of a standard was not at hand, so that a type was written from memory and from what
other programs encode ([witnesses](witnesses.md)). What was compared: RFC 2985, RFC 3161, RFC 5280 and RFC 6960
themselves, and RFC 2634, RFC 2986, RFC 3279, RFC 3370, RFC 3565, RFC 4055, RFC 4210, RFC 4211, RFC 5035, RFC 5652 and
RFC 5755 as RFC 5911, RFC 5912 and RFC 6268 repeat their types; of those the numbers of sections are unverified as well.

Types that a standard leaves unnamed are named for their place: `X_y` is the element y of X, `_SeqOfY` and `_SetOfY` are
lists of Y, and `_name_Type` is what the attribute, algorithm or message of that name carries.

{summary}"""

WITNESSES = """# Who else encodes these types as we do?

This page is written from the values in `tests/data/asn1data`, which the tests decode and encode back to the same
octets: after values have changed run `tests/checks/type_pages.py . --update`.

| Column | Values |
|---|---|
| pyasn1-modules | by Debian's `python3-pyasn1-modules`, encoded in its own schema of that document |
| openssl | by the `openssl` command of that name, a message or a value inside it; national algorithms with `libengine-gost-openssl` |
| by hand | composed from the ASN.1 of the source; the number alone where another encoder is a witness |
| own schema | encoded by pyasn1 in a schema made of our module, so that the encoder alone is another |

All come back octet by octet. One difference is meant and has its own tests: a SET OF that came unsorted, as pyasn1
writes it in BER, is written sorted, and a DEFAULT that was written out is left out (X.690 11.5, 11.6).

{summary}"""


def table(header, lines):
    first, *rest = ("| " + " | ".join(cells) + " |" for cells in (header, *lines))
    return "\n".join([first, "|" + "---|" * len(header), *rest])


def catalogue_page(everything, types):
    lines = []
    sections = []
    for number, module in enumerate(everything.modules, 1):
        about = " ".join(module.remark).split(". ")[0].rstrip(".")
        listed = [one for one in types[module.name] if one.name in names_of(everything, module)]
        lines.append((str(number), module.name, about, str(len(listed))))
        body = table(("Type", "Standard", "Remarks"), [(f"`{one.name}`", one.source, one.remark) for one in listed])
        sections.append(f"## {module.name}\n\n{body}\n")
    summary = table(("", "Module", "What", "Types"), lines)
    return CATALOGUE.format(summary=summary) + "\n\n" + "\n".join(sections)


def names_of(everything, module):
    """The types of the published list: without what is ours alone."""
    return [name for listed, names in everything.expected if listed == module.name for name in names
            if name != "_characterString_Type"]


def witness_page(everything, found):
    sections = []
    every = []
    for module in everything.modules:
        names = names_of(everything, module)
        every += names
        body = table(("Type", "pyasn1-modules", "openssl", "by hand", "own schema"),
                     [witness_row(name, found[name]) for name in names])
        sections.append(f"## {module.name}\n\n{body}\n")
    kinds = {
        "all": every,
        "pyasn1-modules": [name for name in every if found[name].package],
        "openssl": [name for name in every if found[name].command],
        "one of the two, or both": [name for name in every if found[name].from_outside],
        "by hand alone, with its source": [name for name in every if not found[name].from_outside],
    }
    summary = table(("Witness", "Types"), [(kind, str(len(names))) for kind, names in kinds.items()])
    return WITNESSES.format(summary=summary) + "\n\n" + "\n".join(sections)


def witness_row(name, witnesses):
    return (f"`{name}`", counted(witnesses.package), counted(witnesses.command, "`"), hand_cell(witnesses),
            str(witnesses.own_schema or ""))


def counted(counter, quote=""):
    return ", ".join(f"{quote}{what}{quote}: {number}" for what, number in sorted(counter.items()))


def hand_cell(witnesses):
    if witnesses.from_outside:
        return str(sum(witnesses.by_hand.values()) or "")
    return "; ".join(source for source in witnesses.by_hand if source)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("root", type=pathlib.Path)
    parser.add_argument("--update", action="store_true", help="write the pages")
    arguments = parser.parse_args()
    root = arguments.root.resolve()

    everything, types = read_modules(root)
    found = read_witnesses(root / "tests" / "data" / "asn1data")
    complaints = [text for module in everything.modules for one in types[module.name]
                  for text in wrong_sources(module, one)]
    complaints += [f"tests/data/asn1data: {one.name} has no value of another encoder and none by hand with its source"
                   for module in everything.modules for one in types[module.name] if not found[one.name].enough]
    pages = {"catalogue.md": catalogue_page(everything, types), "witnesses.md": witness_page(everything, found)}
    for name, text in pages.items():
        path = root / "docs" / name
        if arguments.update:
            path.write_text(text, encoding="utf-8")
        elif not path.exists() or path.read_text(encoding="utf-8") != text:
            complaints.append(f"docs/{name} is not current: run tests/checks/type_pages.py . --update")
    print("\n".join(complaints) or f"{sum(map(len, types.values()))} types")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())

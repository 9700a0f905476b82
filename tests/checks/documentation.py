#!/usr/bin/env python3
"""Runs Doxygen, which may have nothing to say, and sees to it that what needs a comment has one: every header, class,
free function, variable and enumeration, and every member but those that docs/conventions.md speaks of."""

import argparse
import pathlib
import re
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

# Members whose names say all that conventions and class leave to say.
CONVENTIONAL = re.compile(r"""
    ~.* | operator.*                                      # destructors, assignment, comparison
  | (get|put|set|is)_?\w+                                 # accessors of a field
  | encode | decode | clear | swap | assign               # what every value has
  | begin | end | size | empty | find | insert | erase    # lists, as of the standard library
  | (add|remove)_?\w*
  | value | to[wW]?[sS]tring | c_str
  | set | get | copy                                      # the mapping between a value and its record
  """, re.VERBOSE)
# Mappings between a value and its record are all of one shape (asn1/codec.h).
MAPPING = re.compile(r"ASN1\w+_traits$|Asn1\w+_traits$")
MEMBERS = {"function", "enum", "variable"}


def has_comment(element):
    return any("".join(element.find(part).itertext()).strip()
               for part in ("briefdescription", "detaileddescription") if element.find(part) is not None)


def place(element):
    location = element.find("location")
    return f"{location.get('file')}:{location.get('line', '1')}"


def shares_comment(root, element):
    """A comment over several declarations without a blank line between them is meant for all of them."""
    location = element.find("location")
    above = (root / location.get("file")).read_text(encoding="utf-8").splitlines()[:int(location.get("line")) - 1]
    while above and above[-1].strip() and not above[-1].lstrip().startswith("//"):
        above.pop()
    return bool(above) and above[-1].lstrip().startswith("//")


def is_conventional(member, owner):
    """A constructor takes the fields of its class. The fields of a record are told where the record is."""
    name = member.findtext("name")
    return CONVENTIONAL.fullmatch(name) or name == owner.split("::")[-1] or member.get("kind") == "variable"


def uncommented_members(root, compound, in_class):
    owner = compound.findtext("compoundname")
    for member in compound.iter("memberdef"):
        overrides = member.find("reimplements") is not None
        if member.get("kind") not in MEMBERS or member.get("prot") == "private" or overrides or has_comment(member):
            continue
        name = member.findtext("name")
        told_elsewhere = is_conventional(member, owner) if in_class else name.startswith("operator") or "<" in name
        if not told_elsewhere and not shares_comment(root, member):
            yield f"{place(member)}: {owner}: {name} has no comment"


def uncommented(root, compound):
    kind, name = compound.get("kind"), compound.findtext("compoundname")
    if kind in {"class", "struct", "union"}:
        if not has_comment(compound) and not MAPPING.search(name):
            yield f"{place(compound)}: {name} has no comment"
        yield from uncommented_members(root, compound, in_class=True)
    elif kind == "namespace" and not name.endswith("::detail"):
        yield from uncommented_members(root, compound, in_class=False)
    elif kind == "file" and name.endswith(".h"):
        if not has_comment(compound):
            yield f"{place(compound)}: the header does not open with a paragraph"
        yield from uncommented_members(root, compound, in_class=False)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--doxygen", required=True)
    parser.add_argument("--doxyfile", required=True, type=pathlib.Path)
    parser.add_argument("--root", required=True, type=pathlib.Path, help="what the paths in its output begin at")
    parser.add_argument("--output", required=True, type=pathlib.Path, help="the OUTPUT_DIRECTORY of the Doxyfile")
    options = parser.parse_args()
    options.output.mkdir(exist_ok=True)
    result = subprocess.run([options.doxygen, options.doxyfile], text=True, capture_output=True, check=False)
    if result.returncode != 0 or result.stderr:
        print(result.stderr or "doxygen failed")
        return 1
    compounds = [compound for path in sorted((options.output / "xml").glob("*.xml"))
                 for compound in ElementTree.parse(path).getroot().iter("compounddef")]
    complaints = sorted({complaint for compound in compounds for complaint in uncommented(options.root, compound)})
    print("\n".join(complaints) or f"{len(compounds)} documented headers, classes and pages")
    return 1 if complaints or not compounds else 0


if __name__ == "__main__":
    sys.exit(main())

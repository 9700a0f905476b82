#!/usr/bin/env python3
"""Writes rows of a message that another program made, and of the values inside it, each for its type.

The walk follows our modules and copies octets. A value that the message has under an implicit tag gets the tag of its
type back, which is the one octet that is not the other program's; the remark of its row says so.

Usage: take_apart.py ROWS TYPE NAME FILE REMARK [PATH]

Rows are added to ROWS, but none for a type with values enough there. PATH are numbers of elements from 0 on, such as
0.1.0: the value there is taken in place of the whole. A step goes into an OCTET STRING or BIT STRING too.
"""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "tools"))

from typegen import catalogue, model, names, parser  # noqa: E402

CONSTRUCTED = 0x20
SMALL = 160  # octets: of small values there are more
UNIVERSAL = {
    model.Boolean: 1, model.Integer: 2, model.BitString: 3, model.OctetString: 4, model.Null: 5,
    model.ObjectIdentifier: 6, model.Enumerated: 10,
}
STRINGS = {
    "UTF8String": 12, "NumericString": 18, "PrintableString": 19, "TeletexString": 20, "IA5String": 22, "UTCTime": 23,
    "GeneralizedTime": 24, "VisibleString": 26, "UniversalString": 28, "BMPString": 30,
}
CLASSES = {"APPLICATION": 0x40, "CONTEXT": 0x80}


def split(octets):
    """The elements of DER that follow each other (X.690 8.1), each whole."""
    found = []
    at = 0
    while at < len(octets):
        size, header = octets[at + 1], 2
        if size >= 0x80:
            header += size & 0x7F
            size = int.from_bytes(octets[at + 2:at + header], "big")
        found.append(octets[at:at + header + size])
        at += header + size
    return found


def content(der):
    header = 2 if der[1] < 0x80 else 2 + (der[1] & 0x7F)
    return der[header:]


def part(der, path):
    for step in path:
        inner = content(der)
        if der[0] == 0x03:
            inner = inner[1:]  # behind the number of unused bits
        der = split(inner)[step]
    return der


class Schema:
    def __init__(self):
        expected = catalogue.read(ROOT / "asn1data" / "catalogue.txt")
        parsed = [parser.parse_file(path, path.name) for path in sorted((ROOT / "asn1data" / "modules").glob("*.asn1"))]
        self.catalogue = model.Catalogue(catalogue.in_order(parsed, expected), expected)
        self._names = {names.identifier(one.name): one.name for one in self.catalogue.types()}

    def named(self, identifier):
        return self.catalogue.type(self._names[identifier])

    def tags(self, kind, holder=None):
        """What a value can begin with, without the bit of constructed values; None for anything."""
        if isinstance(kind, model.Tagged):
            return {CLASSES[kind.tag.tag_class] | kind.tag.number}
        if isinstance(kind, model.Reference):
            target = self.catalogue.type(kind.name)
            return self.tags(target.type, target)
        if isinstance(kind, model.Choice):
            return set().union(*(self.tags(one.type, one) for one in kind.alternatives))
        if isinstance(kind, (model.OpenType, model.ClassField)):
            return None
        if isinstance(kind, (model.Sequence, model.ListOf)):
            return {0x10 if kind.universal == "SEQUENCE" or holder and holder.annotation("seqtag") else 0x11}
        return {STRINGS[kind.kind] if isinstance(kind, model.CharacterString) else UNIVERSAL[type(kind)]}

    def is_explicit(self, tagged, module):
        inner = self.catalogue.base(tagged.type)
        whole = isinstance(inner, (model.Choice, model.OpenType, model.ClassField))
        return whole or (tagged.tag.mode or module.tags) == "EXPLICIT" or tagged.tag.tag_class == "APPLICATION"

    def carried(self, set_name, identifier):
        """The type of the object that has an identifier, None when there is none."""
        for member in self.catalogue.object_set(set_name).members:
            one = self.catalogue.object(member)
            if octets_of(self.catalogue.arcs(one.arcs)) == content(identifier):
                return one.type
        return None


def octets_of(arcs):
    """X.690 8.19."""
    octets = b""
    for arc in (arcs[0] * 40 + arcs[1], *arcs[2:]):
        groups = [arc & 0x7F]
        while arc := arc >> 7:
            groups.insert(0, arc & 0x7F | 0x80)
        octets += bytes(groups)
    return octets


class Walk:
    """Calls `found(type, der, path, whether the tag was changed)` for each value whose type has a name."""

    def __init__(self, schema, found):
        self._schema = schema
        self._found = found

    def value(self, name, der, path=(), changed=False):
        assignment = self._schema.catalogue.type(name)
        self._found(names.identifier(name), der, path, changed)
        self._inside(assignment.type, der, path, self._schema.catalogue.module_of(name))

    def _inside(self, kind, der, path, module, changed=False):
        if isinstance(kind, model.Reference):
            self.value(kind.name, der, path, changed)
        elif isinstance(kind, model.Tagged):
            self._tagged(kind, der, path, module)
        elif isinstance(kind, model.Choice):
            self._choice(kind, der, path, module)
        elif isinstance(kind, model.ListOf):
            for place, member in enumerate(split(content(der))):
                self._inside(kind.element, member, (*path, str(place)), module)
        elif isinstance(kind, model.Sequence):
            self._structure(kind, der, path, module)

    def _tagged(self, kind, der, path, module):
        if self._schema.is_explicit(kind, module):
            self._inside(kind.type, content(der), path, module)
            return
        own, = self._schema.tags(kind.type)
        self._inside(kind.type, bytes((own | der[0] & CONSTRUCTED,)) + der[1:], path, module, changed=True)

    def _choice(self, kind, der, path, module):
        for one in kind.alternatives:
            if der[0] & ~CONSTRUCTED in self._schema.tags(one.type, one):
                self._inside(one.type, der, (*path, one.name), module)
                return
        raise ValueError(f"{'.'.join(path)} is none of the alternatives")

    def _structure(self, kind, der, path, module):
        left = split(content(der))
        values = {}
        for element in kind.elements:
            tags = self._schema.tags(element.type, element)
            if left and (tags is None or left[0][0] & ~CONSTRUCTED in tags):
                values[element.name] = left.pop(0)
            elif not element.optional and element.default is None:
                raise ValueError(f"{'.'.join((*path, element.name))} is missing")
        if left:
            raise ValueError(f"{'.'.join(path)} has elements that are not known")
        for element in kind.elements:
            if element.name in values:
                self._element(element, values, path, module)

    def _element(self, element, values, path, module):
        der = values[element.name]
        path = (*path, element.name)
        self._inside(element.type, der, path, module)
        kind = element.type
        while isinstance(kind, model.Tagged):
            der, kind = content(der), kind.type  # explicit in front of all that a table decides
        if table := element.annotation("table"):
            for member in split(content(der)):
                self._carried(*table.arguments, values, member, path)
        elif isinstance(kind, model.ClassField) and kind.table:
            self._carried(kind.table.set, kind.table.identifier, values, der, path)
        elif isinstance(kind, model.OctetString) and kind.containing:
            table = kind.containing.table
            self._carried(table.set, table.identifier, values, content(der), path)

    def _carried(self, set_name, identifier, values, der, path):
        name = self._schema.carried(set_name, values[identifier])
        if name is not None:
            self.value(name, der, path)


class Rows:
    """The rows of a file, to which more are added."""

    def __init__(self, path):
        self._path = path
        self._text = path.read_text(encoding="ascii") if path.exists() else ""
        found = re.findall(r"^Type = (.*)\nName = (.*)\nDer = ((?:.+\n)+)", self._text, re.M)
        self._values = {}
        self._names = set()
        for kind, name, digits in found:
            self._values.setdefault(kind, []).append(bytes.fromhex(digits.replace("\n", "")))
            self._names.add((kind, name))

    def wants(self, kind, der):
        there = self._values.get(kind, [])
        return der not in there and len(there) < (4 if len(der) < SMALL else 1)

    def add(self, remark, kind, name, der):
        numbered, number = name, 1
        while (kind, numbered) in self._names:
            number += 1
            numbered = f"{name}_{number}"
        self._names.add((kind, numbered))
        self._values.setdefault(kind, []).append(der)
        digits = der.hex(" ")
        lines = [digits[i:i + 99].strip() for i in range(0, len(digits), 99)]
        self._text += f"# {remark}\nType = {kind}\nName = {numbered}\nDer = " + "\n    ".join(lines) + "\n\n"

    def write(self):
        self._path.write_text(self._text, encoding="ascii")


def main(rows_file, kind, name, file, remark, path=""):
    rows = Rows(Path(rows_file))
    whole = part(Path(file).read_bytes(), [int(step) for step in path.split(".") if step])

    def found(inner, der, where, changed):
        if (where or inner != kind) and not rows.wants(inner, der):
            return
        told = f"{remark}: {'.'.join(where)} of {kind}" if where else remark
        told += ", under the tag of its type" if changed else ""
        rows.add(told, inner, name + "".join("_" + names.identifier(step) for step in where[-1:]), der)

    schema = Schema()
    Walk(schema, found).value(schema.named(kind).name, whole)
    rows.write()


if __name__ == "__main__":
    main(*sys.argv[1:])

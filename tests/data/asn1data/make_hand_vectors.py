#!/usr/bin/env python3
"""Writes types_by_hand.txt from by_hand.txt: values composed from the ASN.1 of the standards, for the types that no
other encoder at hand has.

by_hand.txt has the same rows, with `Value` in place of `Der`, in which

    30{ ... }       is an identifier octet, the length of what stands in braces, and that
    "text"          is the octets of the text
    oid(1.2.3)      is the content of an OBJECT IDENTIFIER
    $name           is what a line `let name = ...` above stands for
    a0=$name        is the same value under another identifier octet
    00 a1           are octets

The remark over a row names the standard and section that the value was composed from. No tag, order or choice comes
from anywhere else.
"""

import re
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
TOKEN = re.compile(
    r'\s*(?:(?P<open>[0-9a-f]{2})\{|(?P<close>\})|"(?P<text>[^"]*)"|oid\((?P<oid>[0-9.]+)\)|'
    r'(?:(?P<tag>[0-9a-f]{2})=)?\$(?P<name>\w+)|(?P<octet>[0-9a-f]{2})(?=[\s}]|$))')


def element(identifier, content):
    if len(content) < 128:
        return bytes((identifier, len(content))) + content
    length = len(content).to_bytes((len(content).bit_length() + 7) // 8, "big")
    return bytes((identifier, 0x80 | len(length))) + length + content


def oid_content(text):
    arcs = [int(arc) for arc in text.split(".")]
    octets = b""
    for arc in (arcs[0] * 40 + arcs[1], *arcs[2:]):
        groups = [arc & 0x7F]
        while arc := arc >> 7:
            groups.insert(0, arc & 0x7F | 0x80)
        octets += bytes(groups)
    return octets


def compose(text, pieces):
    """The octets of a value."""
    nested = [(None, b"")]
    at = 0
    text = text.rstrip()
    while at < len(text):
        token = TOKEN.match(text, at)
        if token is None:
            raise ValueError(f"cannot read '{text[at:at + 20]}'")
        at = token.end()
        if token["open"]:
            nested.append((int(token["open"], 16), b""))
            continue
        if token["close"]:
            octets = element(*nested.pop())
        elif token["text"] is not None:
            octets = token["text"].encode("ascii")
        elif token["oid"]:
            octets = oid_content(token["oid"])
        elif token["name"]:
            octets = pieces[token["name"]]
            octets = bytes.fromhex(token["tag"]) + octets[1:] if token["tag"] else octets
        else:
            octets = bytes.fromhex(token["octet"])
        nested[-1] = (nested[-1][0], nested[-1][1] + octets)
    (_, whole), = nested
    return whole


def paragraphs(text):
    """Lists of (key, value), a remark under the key '#'."""
    for paragraph in re.split(r"\n\s*\n", text.strip()):
        fields = []
        for line in paragraph.split("\n"):
            if line.startswith("    "):
                fields[-1] = (fields[-1][0], fields[-1][1] + " " + line.strip())
            elif line.startswith("#"):
                fields.append(("#", line[1:].strip()))
            else:
                key, _, value = line.partition(" = ")
                fields.append((key, value))
        yield fields


def row(fields, pieces):
    fields = dict(fields)
    if set(fields) != {"#", "Type", "Name", "Value"}:
        raise ValueError(f"a row needs a remark, Type, Name and Value, not {list(fields)}")
    digits = compose(fields["Value"], pieces).hex(" ")
    lines = [digits[i:i + 99].strip() for i in range(0, len(digits), 99)]
    return (f"# hand, {fields['#']}\nType = {fields['Type']}\nName = {fields['Name']}\nDer = " + "\n    ".join(lines)
            + "\n")


def main():
    pieces = {}
    rows = []
    for fields in paragraphs((HERE / "by_hand.txt").read_text(encoding="ascii")):
        if fields[0][0] != "#" or len(fields) > 1:
            if fields[-1][0].startswith("let "):
                for key, value in fields:
                    if key != "#":
                        pieces[key.removeprefix("let ")] = compose(value, pieces)
            else:
                rows.append(row(fields, pieces))
    (HERE / "types_by_hand.txt").write_text("\n".join(rows), encoding="ascii")


if __name__ == "__main__":
    sys.exit(main())

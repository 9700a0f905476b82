"""The one place that makes C++ names of ASN.1 names."""

from __future__ import annotations

# Words that an ASN.1 identifier may be and a C++ member may not.
_RESERVED = frozenset("default register union operator explicit private public template this".split())


def identifier(asn1_name: str) -> str:
    """A type, element or object: the hyphen is the one character that C++ lacks."""
    name = asn1_name.replace("-", "_")
    return name + "_" if name in _RESERVED else name


def record(type_name: str) -> str:
    return "ASN1T_" + identifier(type_name)


def control(type_name: str) -> str:
    return "ASN1C_" + identifier(type_name)


def function(role: str, type_name: str) -> str:
    """`role` is E, D, Free, Copy, ETC or DTC."""
    return f"asn1{role}_{identifier(type_name)}"


def selector(type_name: str, alternative: str) -> str:
    return f"T_{identifier(type_name)}_{identifier(alternative)}"


def presence_bit(element: str) -> str:
    return identifier(element) + "Present"


def member(lvalue: str, name: str) -> str:
    """`name` inside what `lvalue` denotes: `*p` and `name` give `p->name`."""
    return f"{lvalue[1:]}->{name}" if lvalue.startswith("*") else f"{lvalue}.{name}"


def address(lvalue: str) -> str:
    return lvalue[1:] if lvalue.startswith("*") else "&" + lvalue

"""The one place that makes C++ names of ASN.1 names."""

from __future__ import annotations

# Words that an ASN.1 identifier may be and a C++ member may not.
_RESERVED = frozenset(
    """alignas alignof and asm auto bitand bitor bool break case catch char class compl concept const continue
    decltype default delete do double else enum explicit export extern false float for friend goto if inline int
    long mutable namespace new noexcept not nullptr operator or private protected public register requires return
    short signed sizeof static struct switch template this throw true try typedef typeid typename union unsigned
    using virtual void volatile while xor""".split()
)


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

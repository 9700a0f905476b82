"""What the modules say, in the terms of ASN.1 alone.

The parser makes these objects, the checks and the emitters read them, nobody changes them.
"""

from __future__ import annotations

from dataclasses import dataclass, field


@dataclass(frozen=True)
class Position:
    file: str
    line: int

    def __str__(self) -> str:
        return f"{self.file}:{self.line}"


class ModuleError(Exception):
    """Something wrong in a module. The message says where, what, and what would be right."""

    def __init__(self, position: Position, message: str) -> None:
        super().__init__(f"{position}: {message}")


@dataclass(frozen=True)
class Annotation:
    """A line `--@ name arguments`: what the notation cannot say about the next element or type."""

    name: str
    arguments: tuple[str, ...]
    position: Position


@dataclass(frozen=True)
class Bound:
    """A bound as written: a number, the name of a number, or None for MIN and MAX."""

    number: int | None = None
    name: str | None = None

    @property
    def open(self) -> bool:
        return self.number is None and self.name is None


@dataclass(frozen=True)
class Range:
    low: Bound
    high: Bound


@dataclass(frozen=True)
class Table:
    """A table constraint `({set}{@identifier})`."""

    set: str
    identifier: str


@dataclass(frozen=True)
class Tag:
    tag_class: str  # UNIVERSAL, APPLICATION, CONTEXT, PRIVATE
    number: int
    mode: str | None  # IMPLICIT, EXPLICIT, or None when the module decides


@dataclass(frozen=True)
class Type:
    pass


@dataclass(frozen=True)
class Boolean(Type):
    pass


@dataclass(frozen=True)
class Integer(Type):
    names: tuple[tuple[str, int], ...] = ()
    range: Range | None = None


@dataclass(frozen=True)
class Enumerated(Type):
    names: tuple[tuple[str, int], ...] = ()


@dataclass(frozen=True)
class BitString(Type):
    names: tuple[tuple[str, int], ...] = ()
    size: Range | None = None


@dataclass(frozen=True)
class OctetString(Type):
    size: Range | None = None
    containing: ClassField | None = None


@dataclass(frozen=True)
class ObjectIdentifier(Type):
    pass


@dataclass(frozen=True)
class Null(Type):
    pass


@dataclass(frozen=True)
class CharacterString(Type):
    kind: str
    size: Range | None = None


@dataclass(frozen=True)
class OpenType(Type):
    """ANY: one element of any type."""


@dataclass(frozen=True)
class ClassField(Type):
    """`CLASS.&Type`, with the set that decides what it is, when there is one."""

    object_class: str
    field: str
    table: Table | None = None


@dataclass(frozen=True)
class Reference(Type):
    name: str


@dataclass(frozen=True)
class Tagged(Type):
    tag: Tag
    type: Type


@dataclass(frozen=True)
class ListOf(Type):
    universal: str  # SEQUENCE or SET
    element: Type
    size: Range | None = None


@dataclass(frozen=True)
class Element:
    """A component of a SEQUENCE or SET, or an alternative of a CHOICE."""

    name: str
    type: Type
    position: Position
    optional: bool = False
    default: str | None = None  # the text of the value
    annotations: tuple[Annotation, ...] = ()

    def annotation(self, name: str) -> Annotation | None:
        return next((one for one in self.annotations if one.name == name), None)


@dataclass(frozen=True)
class Sequence(Type):
    elements: tuple[Element, ...]
    universal: str = "SEQUENCE"  # or SET
    extensible: bool = False


@dataclass(frozen=True)
class Choice(Type):
    alternatives: tuple[Element, ...]


@dataclass(frozen=True)
class TypeAssignment:
    name: str
    type: Type
    position: Position
    text: tuple[str, ...]  # the lines of the module, remarks included
    annotations: tuple[Annotation, ...] = ()

    def annotation(self, name: str) -> Annotation | None:
        return next((one for one in self.annotations if one.name == name), None)


@dataclass(frozen=True)
class NumberAssignment:
    name: str
    number: int
    position: Position


@dataclass(frozen=True)
class OidAssignment:
    name: str
    arcs: tuple[int | str, ...]  # a name stands for the arcs of another identifier
    position: Position


@dataclass(frozen=True)
class ObjectClass:
    name: str
    type_field: str
    type_optional: bool
    position: Position


@dataclass(frozen=True)
class InformationObject:
    name: str
    object_class: str
    type: str | None  # the name of the carried type
    arcs: tuple[int | str, ...] | None
    position: Position


@dataclass(frozen=True)
class ObjectSet:
    name: str
    object_class: str
    members: tuple[str, ...]
    position: Position


@dataclass(frozen=True)
class Module:
    name: str
    file: str
    remark: tuple[str, ...]
    tags: str  # IMPLICIT or EXPLICIT
    types: tuple[TypeAssignment, ...] = ()
    numbers: tuple[NumberAssignment, ...] = ()
    oids: tuple[OidAssignment, ...] = ()
    classes: tuple[ObjectClass, ...] = ()
    objects: tuple[InformationObject, ...] = ()
    sets: tuple[ObjectSet, ...] = ()


@dataclass(frozen=True)
class Catalogue:
    """All modules together: one namespace."""

    modules: tuple[Module, ...]
    expected: tuple[tuple[str, tuple[str, ...]], ...] = ()  # module and its types, in order
    _types: dict[str, TypeAssignment] = field(default_factory=dict, compare=False, repr=False)
    _module_of: dict[str, Module] = field(default_factory=dict, compare=False, repr=False)
    _named: dict[str, dict[str, object]] = field(default_factory=dict, compare=False, repr=False)

    def __post_init__(self) -> None:
        for kind in ("numbers", "oids", "classes", "objects", "sets"):
            self._named[kind] = {one.name: one for module in self.modules for one in getattr(module, kind)}
        for module in self.modules:
            for assignment in module.types:
                self._types[assignment.name] = assignment
                self._module_of[assignment.name] = module

    def type(self, name: str) -> TypeAssignment | None:
        return self._types.get(name)

    def module_of(self, type_name: str) -> Module:
        return self._module_of[type_name]

    def types(self) -> list[TypeAssignment]:
        return [assignment for module in self.modules for assignment in module.types]

    def number(self, name: str) -> NumberAssignment | None:
        return self._named["numbers"].get(name)

    def oid(self, name: str) -> OidAssignment | None:
        return self._named["oids"].get(name)

    def object_class(self, name: str) -> ObjectClass | None:
        return self._named["classes"].get(name)

    def object(self, name: str) -> InformationObject | None:
        return self._named["objects"].get(name)

    def object_set(self, name: str) -> ObjectSet | None:
        return self._named["sets"].get(name)

    def is_expected(self, type_name: str) -> bool:
        """True for a type that a module will define, though it does not yet."""
        return any(type_name in names for _, names in self.expected)

    def base(self, kind: Type) -> Type:
        """What a type is behind its names and tags."""
        while True:
            if isinstance(kind, Tagged):
                kind = kind.type
            elif isinstance(kind, Reference):
                kind = self._types[kind.name].type
            else:
                return kind

    def base_name(self, name: str) -> str:
        """The type that a chain of plain renames ends in."""
        while isinstance(self._types[name].type, Reference):
            name = self._types[name].type.name
        return name

    def references(self, assignment: TypeAssignment) -> set[str]:
        """The types that a definition names, but for what it keeps unparsed."""
        if assignment.annotation("raw"):
            return set()
        return {name for name in _references(assignment.type)}

    def value(self, bound: Bound) -> int | None:
        if bound.name is not None:
            return self._named["numbers"][bound.name].number
        return bound.number

    def arcs(self, arcs: tuple[int | str, ...]) -> tuple[int, ...]:
        result: list[int] = []
        for arc in arcs:
            if isinstance(arc, str):
                result.extend(self.arcs(self._named["oids"][arc].arcs))
            else:
                result.append(arc)
        return tuple(result)


def _references(kind: Type) -> list[str]:
    if isinstance(kind, Reference):
        return [kind.name]
    if isinstance(kind, Tagged):
        return _references(kind.type)
    if isinstance(kind, ListOf):
        return _references(kind.element)
    members = getattr(kind, "elements", ()) or getattr(kind, "alternatives", ())
    return [name for member in members if member.annotation("raw") is None for name in _references(member.type)]

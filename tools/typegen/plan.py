"""Decides what is to be written for each type, so that the emitters only have to write it."""

from __future__ import annotations

from dataclasses import dataclass, replace

from . import model, names, values
from .model import ModuleError


@dataclass(frozen=True)
class ElementTag:
    """The tag that an element has besides, or instead of, that of its type."""

    tag_class: str
    number: int
    explicit: bool
    constructed: bool

    @property
    def cpp(self) -> str:
        prefix = "application" if self.tag_class == "APPLICATION" else "context"
        form = "constructed" if self.constructed else "primitive"
        return f"{prefix}_{form}({self.number})"


@dataclass(frozen=True)
class Default:
    """A DEFAULT that decides without a presence bit whether the element is written."""

    value: str  # C++ of the value
    text: bool = False  # a big integer
    kept: bool = False  # the decoder leaves an absent element alone


@dataclass(frozen=True)
class Table:
    """The open field of a record, tied to an identifier."""

    shape: str  # open, wrapped, list
    object_set: str
    object_class: str
    type_field: str
    identifier: str  # C++ names of the record's members
    field: str
    member: str  # where the carried record hangs: the field itself, or beside the wrapper
    optional: bool


@dataclass(frozen=True)
class Field:
    name: str
    value: values.Value
    tag: ElementTag | None
    present: str | None  # the presence bit
    default: Default | None
    required: bool
    freed: bool
    member: str | None  # the Asn1TObject beside an OCTET STRING that wraps a carried value
    labels: tuple[str, ...]  # the tags that it can begin with
    reads_header: bool  # its codec reads the header itself: a CHOICE, or a type with a tag of its own
    peeked: bool  # an untagged CHOICE that may be absent
    selector: str = ""
    own_tag: str | None = None  # of a value that is kept with its header, behind an implicit tag

    @property
    def indirect(self) -> bool:
        return self.value.indirect


@dataclass(frozen=True)
class Plan:
    """One type."""

    name: str
    assignment: model.TypeAssignment
    module: model.Module
    construct: str  # alias, null, value, sized, sequence, set, choice, list, array
    value: values.Value | None = None  # of alias, null, value and sized; the element of list and array
    fields: tuple[Field, ...] = ()
    table: Table | None = None
    closes: bool = False  # its decoder takes the end-of-contents octets of what it opened
    extension: str | None = None  # the member that keeps unknown elements
    sorted: bool = False
    universal: str = "SEQUENCE"
    size: values.Check | None = None
    outer_tag: ElementTag | None = None  # [APPLICATION n] around a CHOICE
    frees: bool = False
    is_record: bool = True
    base: str = ""  # what an alias stands for
    bit_control: bool = False
    nests: bool = False  # its decoder counts a level, as the type contains itself

    @property
    def record(self) -> str:
        return "void" if self.construct == "null" else names.record(self.name)


class Planner:
    def __init__(self, catalogue: model.Catalogue) -> None:
        self._catalogue = catalogue
        self._values = values.ValueMaker(catalogue)

    def plans(self) -> list[Plan]:
        plans = [self.plan(assignment) for assignment in self._catalogue.types()]
        nesting = self._nesting()
        return [replace(plan, nests=plan.name in nesting) for plan in plans]

    def _nesting(self) -> set[str]:
        """The types whose decoders count a level of nesting, so that every circle of types has one: lists where
        there are some, otherwise whatever is in the circle. Carried values count theirs elsewhere."""
        graph = {one.name: self._catalogue.references(one) for one in self._catalogue.types()}
        lists = {one.name for one in self._catalogue.types() if isinstance(one.type, model.ListOf)}
        nesting = {name for name in lists if _reaches(graph, name, name, set())}
        return nesting | {name for name in graph if _reaches(graph, name, name, nesting)}

    def plan(self, assignment: model.TypeAssignment) -> Plan:
        name = assignment.name
        module = self._catalogue.module_of(name)
        common = {"name": name, "assignment": assignment, "module": module, "frees": self._values.frees(name)}
        kind = assignment.type
        if isinstance(kind, model.Reference):
            return Plan(
                construct="alias", base=kind.name, value=self._values.family(kind.name),
                is_record=self._values.has_record(name), bit_control=self._is_bit_string(name), **common,
            )
        if assignment.annotation("raw"):
            return self._simple(common)
        outer_tag = None
        if isinstance(kind, model.Tagged):
            outer_tag = ElementTag(kind.tag.tag_class, kind.tag.number, True, True)
            kind = kind.type
        if isinstance(kind, model.Sequence):
            return self._structure(kind, common)
        if isinstance(kind, model.Choice):
            return Plan(
                construct="choice", closes=assignment.annotation("eoc") is not None, outer_tag=outer_tag,
                fields=tuple(self._field(one, module, name) for one in kind.alternatives), **common,
            )
        if isinstance(kind, model.ListOf):
            return self._list(kind, common)
        return self._simple(common)

    def _is_bit_string(self, name: str) -> bool:
        return isinstance(self._catalogue.base(model.Reference(name)), model.BitString)

    def _simple(self, common: dict) -> Plan:
        value = self._values.simple_value(common["name"])
        bit_control = self._is_bit_string(common["name"])
        if isinstance(value, values.NullValue):
            return Plan(construct="null", value=value, is_record=False, **common)
        if isinstance(value, values.SizedString):
            return Plan(construct="sized", value=value, bit_control=bit_control, **common)
        return Plan(construct="value", value=value, is_record=False, bit_control=bit_control, **common)

    # Lists

    def _list(self, kind: model.ListOf, common: dict) -> Plan:
        assignment: model.TypeAssignment = common["assignment"]
        is_array = assignment.annotation("array") is not None
        element_kind = kind.element.type if isinstance(kind.element, model.Tagged) else kind.element
        return Plan(
            construct="array" if is_array else "list",
            value=self._values.of_type(element_kind, (), assignment.position),
            universal="SEQUENCE" if assignment.annotation("seqtag") else kind.universal,
            sorted=kind.universal == "SET",
            size=self._size(kind, "pvalue->n" if is_array else "pvalue->count"),
            **common,
        )

    def _size(self, kind: model.ListOf, subject: str) -> values.Check | None:
        if kind.size is None:
            return None
        low = self._catalogue.value(kind.size.low) or 0
        return values.Check(subject, low, self._catalogue.value(kind.size.high), subject)

    # Structures

    def _structure(self, kind: model.Sequence, common: dict) -> Plan:
        assignment: model.TypeAssignment = common["assignment"]
        extension = assignment.annotation("ext")
        return Plan(
            construct="sequence" if kind.universal == "SEQUENCE" else "set", universal=kind.universal,
            fields=tuple(self._field(one, common["module"], None) for one in kind.elements),
            table=self._table(kind), closes=assignment.annotation("eoc") is not None,
            extension=extension.arguments[0] if extension else None, **common,
        )

    def _field(self, element: model.Element, module: model.Module, choice: str | None) -> Field:
        value = self._values.of_element(element)
        tag = self._tag(element, module, value)
        default = self._default(element, value)
        may_be_absent = element.optional or element.default is not None
        has_bit = choice is None and may_be_absent and default is None
        is_choice = tag is None and self._choice_tags(element) is not None
        member = element.annotation("member")
        return Field(
            name=names.identifier(element.name), value=value, tag=tag,
            present=names.presence_bit(element.name) if has_bit else None, default=default,
            required=not may_be_absent, freed=element.annotation("nofree") is None,
            member=member.arguments[0] if member else None,
            labels=self.tag_words(element, module), peeked=is_choice and may_be_absent,
            reads_header=is_choice or tag is None and (value.whole or self._has_own_tag(element)),
            selector=names.selector(choice, element.name) if choice else "",
            own_tag=self._own_tag(element, value) if tag and not tag.explicit and value.whole else None,
        )

    def _own_tag(self, element: model.Element, value: values.Value) -> str:
        if value.universal not in (16, 17):
            raise ModuleError(
                element.position,
                f"{element.name} is kept as its octets, which takes a SEQUENCE or SET behind an implicit tag, "
                "write EXPLICIT",
            )
        return universal_tag(value.universal, True)

    def _tag(self, element: model.Element, module: model.Module, value: values.Value) -> ElementTag | None:
        if not isinstance(element.type, model.Tagged):
            return None
        tag = element.type.tag
        inner = self._catalogue.base(element.type.type)
        needs_explicit = isinstance(inner, (model.Choice, model.OpenType, model.ClassField))
        explicit = needs_explicit or (tag.mode or module.tags) == "EXPLICIT"
        return ElementTag(tag.tag_class, tag.number, explicit, explicit or value.constructed)

    def _default(self, element: model.Element, value: values.Value) -> Default | None:
        if element.default is None:
            return None
        kind = self._catalogue.base(element.type)
        kept = element.annotation("keepondecode") is not None
        if isinstance(kind, model.Boolean):
            return Default("1" if element.default == "TRUE" else "0", kept=kept)
        if isinstance(kind, (model.Integer, model.Enumerated)):
            number = dict(kind.names).get(element.default, element.default)
            if not str(number).lstrip("-").isdigit():
                raise ModuleError(element.position, f"DEFAULT {element.default} is no number of the type")
            return Default(str(number), text=self._is_big(element, value), kept=kept)
        return None

    def _is_big(self, element: model.Element, value: values.Value) -> bool:
        if isinstance(value, values.Family):
            value = self._values.simple_value(value.name)
        return isinstance(value, values.BigInteger)

    def _choice_tags(self, element: model.Element) -> tuple[str, ...] | None:
        """The tag words that an untagged CHOICE can begin with, None when it is no such thing."""
        if element.annotation("raw") or not isinstance(element.type, model.Reference):
            return None
        name = self._catalogue.base_name(element.type.name)
        kind = self._catalogue.type(name).type
        return self.tags_of_choice(name) if isinstance(kind, model.Choice) else None

    def _has_own_tag(self, element: model.Element) -> bool:
        """Whether the type of an element is defined with a tag."""
        if not isinstance(element.type, model.Reference):
            return False
        return isinstance(self._catalogue.type(self._catalogue.base_name(element.type.name)).type, model.Tagged)

    def tags_of_choice(self, name: str) -> tuple[str, ...]:
        kind = self._catalogue.type(name).type
        tags: list[str] = []
        for alternative in kind.alternatives:
            tags.extend(self.tag_words(alternative, self._catalogue.module_of(name)))
        return tuple(tags)

    def tag_words(self, element: model.Element, module: model.Module) -> tuple[str, ...]:
        """The identifier that an element begins with, as C++; several for an untagged CHOICE, none for ANY."""
        value = self._values.of_element(element)
        tag = self._tag(element, module, value)
        if tag is not None:
            return (tag.cpp,)
        inner = self._choice_tags(element)
        if inner is not None:
            return inner
        if self._has_own_tag(element):
            own = self._catalogue.type(self._catalogue.base_name(element.type.name)).type.tag
            return (ElementTag(own.tag_class, own.number, True, True).cpp,)
        if value.universal is None:
            return ()
        return (universal_tag(value.universal, value.constructed),)

    # Tables

    def _table(self, kind: model.Sequence) -> Table | None:
        for element in kind.elements:
            annotation = element.annotation("table")
            if annotation is not None:
                self._require_plain_set(element)
                return self._make_table("list", model.Table(*annotation.arguments), element)
            inner = element.type
            while isinstance(inner, model.Tagged):
                inner = inner.type
            if isinstance(inner, model.ClassField) and inner.table is not None:
                return self._make_table("open", inner.table, element)
            if isinstance(inner, model.OctetString) and inner.containing is not None:
                return self._make_table("wrapped", inner.containing.table, element)
        return None

    def _require_plain_set(self, element: model.Element) -> None:
        kind = self._catalogue.base(element.type)
        if not isinstance(kind, model.ListOf) or kind.universal != "SET" or kind.size is not None:
            raise ModuleError(element.position, "'--@ table' needs a SET OF without a size")

    def _make_table(self, shape: str, table: model.Table, element: model.Element) -> Table:
        field = names.identifier(element.name)
        member = element.annotation("member")
        object_set = self._catalogue.object_set(table.set)
        object_class = self._catalogue.object_class(object_set.object_class)
        return Table(
            shape, table.set, object_class.name, object_class.type_field, names.identifier(table.identifier), field,
            member.arguments[0] if member else field, element.optional,
        )


def _reaches(graph: dict[str, set[str]], start: str, goal: str, without: set[str]) -> bool:
    """Whether a way leads from `start` to `goal` that avoids `without`."""
    seen: set[str] = set()
    waiting = [start]
    while waiting:
        for name in graph[waiting.pop()]:
            if name == goal and goal not in without:
                return True
            if name not in seen and name not in without:
                seen.add(name)
                waiting.append(name)
    return False


def universal_tag(number: int, constructed: bool) -> str:
    if number == 16:
        return "kSequence"
    if number == 17:
        return "kSet"
    return f"universal({number})"

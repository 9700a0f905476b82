"""Writes what the modules say about every type as a table of C++, for tests that hold all types against it.

Tags, bounds and presence come from the ASN.1 alone and not from the plans that the codecs are written by; only how
a value is held in a record comes from `values`.
"""

from __future__ import annotations

from dataclasses import dataclass

from . import model, names, values
from .template import fill, layout

_SOURCE = """
    // What the modules of asn1data/modules say about every type. Made by tools/typegen, for tests alone.

    #include "tests/asn1data/type_description.h"

    #include <cstddef>

    #include "asn1data/codecs.h"

    // Records have a base class, for which offsetof is a matter of the compiler; those in use know it.
    #pragma GCC diagnostic ignored "-Winvalid-offsetof"

    namespace Quillmark::test {

    using namespace asn1data;

    namespace {

    $forwards

    // What identifiers tell

    $objects

    // Types

    $types

    constexpr const TypeDescription* kAll[] = {
        $all
    };

    }  // namespace

    std::span<const TypeDescription* const> described_types() {
        return kAll;
    }

    }  // namespace Quillmark::test
"""

_STRUCTURES = (model.Sequence, model.Choice, model.ListOf)


@dataclass(frozen=True)
class _Place:
    """A type where it is used: its constant, and where its fields are in the record."""

    constant: str
    record: str  # the C++ type that holds a value, empty for NULL
    kind: model.Type
    annotations: tuple[model.Annotation, ...]
    module: model.Module  # that decides how its tags are meant

    def has(self, annotation: str) -> bool:
        return any(one.name == annotation for one in self.annotations)

    def argument(self, annotation: str) -> int | None:
        return next((int(one.arguments[0]) for one in self.annotations if one.name == annotation), None)


class Describer:
    def __init__(self, catalogue: model.Catalogue) -> None:
        self._catalogue = catalogue
        self._values = values.ValueMaker(catalogue)
        self._unnamed: list[str] = []  # definitions of types that are written in place

    def source(self) -> str:
        types = [self._named(assignment) for assignment in self._catalogue.types()]
        constants = [_constant(one.name) for one in self._catalogue.types()]
        sets = [one for module in self._catalogue.modules for one in module.sets if one.members]
        text = fill(
            _SOURCE,
            forwards="\n".join(f"extern const TypeDescription {constant};" for constant in constants),
            objects="\n\n".join(self._object_set(one) for one in sets),
            types="\n\n".join(types),
            all="\n".join(f"&{constant}," for constant in constants),
        )
        return layout(text) + "\n"

    # Object sets

    def _object_set(self, one: model.ObjectSet) -> str:
        objects = [self._catalogue.object(name) for name in one.members]
        arcs = [
            f"constexpr uint32_t {self._arcs_constant(one, item)}[] = "
            f"{{{', '.join(map(str, self._catalogue.arcs(item.arcs)))}}};"
            for item in objects
        ]
        rows = [
            f'    {{"{item.name}", {self._arcs_constant(one, item)}, '
            f"{'&' + _constant(item.type) if item.type else 'nullptr'}}},"
            for item in objects
        ]
        table = f"constexpr ObjectDescription {_set_constant(one.name)}[] = {{\n" + "\n".join(rows) + "\n};"
        return "\n".join([*arcs, table])

    @staticmethod
    def _arcs_constant(one: model.ObjectSet, item: model.InformationObject) -> str:
        return f"k{names.identifier(one.name)}_{names.identifier(item.name)}"

    # Types

    def _named(self, assignment: model.TypeAssignment) -> str:
        """A name, described by the definition that it stands for."""
        definition = self._catalogue.type(self._catalogue.base_name(assignment.name))
        is_null = isinstance(self._catalogue.base(definition.type), model.Null)
        place = _Place(
            _constant(assignment.name), "" if is_null else names.record(assignment.name), definition.type,
            definition.annotations, self._catalogue.module_of(definition.name),
        )
        before = len(self._unnamed)
        fields = [
            f'.name = "{assignment.name}"', f'.module = "{self._catalogue.module_of(assignment.name).name}"',
            *self._fields(place), self._functions(assignment.name, place.record),
        ]
        text = f"const TypeDescription {place.constant} = {{\n    " + ",\n    ".join(fields) + "};"
        unnamed = self._unnamed[before:]
        del self._unnamed[before:]
        return "\n".join([*unnamed, text])

    @staticmethod
    def _functions(name: str, record: str) -> str:
        roles = ", ".join(names.function(role, name) for role in ("E", "D", "Free", "Copy"))
        return f".functions = functions_of<{record or 'void'}, {roles}>()"

    def _place(
        self, constant: str, kind: model.Type, annotations: tuple[model.Annotation, ...], module: model.Module
    ) -> str:
        """The constant of the type of an element; one that is written in place is defined on the way."""
        while isinstance(kind, model.Tagged):
            kind = kind.type
        if isinstance(kind, model.Reference) and not any(one.name == "raw" for one in annotations):
            return _constant(kind.name)
        value = self._values.of_type(kind, annotations, model.Position("", 0))
        record = "" if isinstance(value, (values.SizedString, values.NullValue)) else value.cpp
        place = _Place(constant, record, kind, annotations, module)
        fields = ",\n    ".join(self._fields(place))
        self._unnamed.append(f"const TypeDescription {constant} = {{\n    {fields}}};")
        return constant

    def _fields(self, place: _Place) -> list[str]:
        fields = []
        kind = place.kind
        if isinstance(kind, model.Tagged):
            fields.append(f".application = {kind.tag.number}")
            kind = kind.type
        if place.has("raw"):
            base = self._catalogue.base(kind)
            fields.append(".kind = Kind::kOpen")
            fields.append(f".universal = {_structure_tag(base)}")
        elif isinstance(kind, model.Sequence):
            fields.extend(self._structure(place, kind))
        elif isinstance(kind, model.Choice):
            fields.append(".kind = Kind::kChoice")
            fields.append(f".head = offsetof({place.record}, t)")
            fields.append(self._elements(place, kind.alternatives, choice=True))
        elif isinstance(kind, model.ListOf):
            fields.extend(self._list(place, kind))
        else:
            fields.extend(self._simple(place, kind))
        if place.record:
            fields.append(f".size = sizeof({place.record})")
            fields.append(f".construct = construct<{place.record}>")
        return fields

    def _structure(self, place: _Place, kind: model.Sequence) -> list[str]:
        is_set = kind.universal == "SET"
        fields = [f".kind = Kind::{'kSet' if is_set else 'kSequence'}", f".universal = {17 if is_set else 16}"]
        extension = next((one.arguments[0] for one in place.annotations if one.name == "ext"), None)
        if extension:
            fields.append(".extensible = true")
        if any(self._has_bit(element) for element in kind.elements):
            fields.append(f".head = offsetof({place.record}, m)")
        if extension:
            fields.append(f".body = offsetof({place.record}, {extension})")
        fields.append(self._elements(place, kind.elements, choice=False))
        return fields

    def _list(self, place: _Place, kind: model.ListOf) -> list[str]:
        is_set = kind.universal == "SET"
        element = self._place(f"{place.constant}_element", kind.element, (), place.module)
        fields = [
            f".kind = Kind::{'kArray' if place.has('array') else 'kList'}",
            f".universal = {17 if is_set and not place.has('seqtag') else 16}",
            *([".sorted = true"] if is_set else []), f".element = &{element}", *self._bounds(kind.size),
        ]
        if place.has("array"):
            fields.append(f".head = offsetof({place.record}, n)")
            fields.append(f".body = offsetof({place.record}, elem)")
        return fields

    def _bounds(self, bounds: model.Range | None) -> list[str]:
        if bounds is None:
            return []
        low, high = self._catalogue.value(bounds.low) or 0, self._catalogue.value(bounds.high)
        if low == 0 and high is None:
            return []
        return [f".bounds = Bounds{{{low}, {'kNoBound' if high is None else high}}}"]

    def _simple(self, place: _Place, kind: model.Type) -> list[str]:
        if isinstance(kind, model.Boolean):
            return [".kind = Kind::kBoolean", ".universal = 1"]
        if isinstance(kind, model.Integer):
            return self._integer(place, kind)
        if isinstance(kind, model.Enumerated):
            most = place.argument("bound") or max(number for _, number in kind.names) + 1
            return [".kind = Kind::kEnumerated", ".universal = 10", f".bounds = Bounds{{0, {most - 1}}}"]
        if isinstance(kind, model.BitString):
            return self._sized(place, kind.size, "Bits", 3)
        if isinstance(kind, model.OctetString):
            return self._sized(place, kind.size, "Octets", 4)
        if isinstance(kind, model.ObjectIdentifier):
            return [".kind = Kind::kObjectIdentifier", ".universal = 6"]
        if isinstance(kind, model.Null):
            return [".kind = Kind::kNull", ".universal = 5"]
        if isinstance(kind, model.OpenType):
            return [".kind = Kind::kOpen"]
        if isinstance(kind, model.ClassField):
            return [".kind = Kind::kCarried"]
        return self._text(place, kind)

    def _integer(self, place: _Place, kind: model.Integer) -> list[str]:
        if place.has("big") or place.has("biguint"):
            return [f".kind = Kind::{'kBigInteger' if place.has('big') else 'kBigMagnitude'}", ".universal = 2"]
        held = "kInteger"
        if place.has("u16"):
            held = "kUnsigned16"
        elif place.has("u32") or kind.range and (self._catalogue.value(kind.range.low) or 0) >= 0:
            held = "kUnsigned"
        bounds = [] if place.has("noconstraint") else self._bounds(kind.range)
        return [f".kind = Kind::{held}", ".universal = 2", *bounds]

    def _sized(self, place: _Place, size: model.Range | None, what: str, universal: int) -> list[str]:
        """A string of bits or octets; with an upper bound or an annotation the room for it is in the record."""
        high = self._catalogue.value(size.high) if size else None
        room = place.argument("sized") or high
        bounds = [] if place.has("noconstraint") else self._bounds(size)
        if room is None:
            return [f".kind = Kind::k{what}", f".universal = {universal}", *bounds]
        fields = [
            f".kind = Kind::kSized{what}", f".universal = {universal}", *bounds,
            f".room = {(room + 7) // 8 if what == 'Bits' else room}",
        ]
        if place.record:
            count = "numbits" if what == "Bits" else "numocts"
            fields.append(f".head = offsetof({place.record}, {count})")
            fields.append(f".body = offsetof({place.record}, data)")
        else:
            fields.append(".head = 0")
            fields.append(".body = sizeof(uint32_t)")
        return fields

    def _text(self, place: _Place, kind: model.CharacterString) -> list[str]:
        number = {
            "UTF8String": 12, "NumericString": 18, "PrintableString": 19, "TeletexString": 20, "IA5String": 22,
            "UTCTime": 23, "GeneralizedTime": 24, "VisibleString": 26, "UniversalString": 28, "BMPString": 30,
        }[kind.kind]
        held = {"BMPString": "kText16", "UniversalString": "kText32"}.get(kind.kind, "kText")
        bounds = [] if place.has("noconstraint") else self._bounds(kind.size)
        return [f".kind = Kind::{held}", f".universal = {number}", *bounds]

    # Elements

    def _elements(self, place: _Place, elements: tuple[model.Element, ...], choice: bool) -> str:
        """The elements in order; presence bits are numbered as they come."""
        rows = []
        bit = 0
        for element in elements:
            row = self._element(place, element, elements, choice)
            if not choice and self._has_bit(element):
                row.append(f".presence_bit = {bit}")
                bit += 1
            rows.append("    {" + ", ".join(row) + "},")
        constant = f"{place.constant}_elements"
        self._unnamed.append(f"const ElementDescription {constant}[] = {{\n" + "\n".join(rows) + "\n};")
        return f".elements = {constant}"

    def _element(
        self, place: _Place, element: model.Element, siblings: tuple[model.Element, ...], choice: bool
    ) -> list[str]:
        kind = element.type
        kept = tuple(one for one in element.annotations if one.name in (
            "raw", "big", "biguint", "u16", "u32", "noconstraint", "sized"))
        described = self._place(f"{place.constant}__{names.identifier(element.name)}", kind, kept, place.module)
        row = [f'.name = "{element.name}"', f".type = &{described}"]
        if isinstance(kind, model.Tagged):
            row.append(f".tag = {kind.tag.number}")
            if self._is_explicit(element, place.module):
                row.append(".explicit_tag = true")
        held = self._values.of_element(element)
        if held.cpp or isinstance(held, values.SizedString):
            member = names.identifier(element.name)
            row.append(f".offset = offsetof({place.record}, {'u.' if choice else ''}{member})")
        if choice and held.indirect:
            row.append(".indirect = true")
        if element.optional or element.default is not None:
            row.append(".may_be_absent = true")
        if element.default is not None and not self._has_bit(element):
            row.append(f".default_number = {self._default(element)}")
            if element.annotation("keepondecode"):
                row.append(".kept = true")
        if element.annotation("nofree"):
            row.append(".freed = false")
        row.extend(self._table(place, element, siblings))
        return row

    def _is_explicit(self, element: model.Element, module: model.Module) -> bool:
        # X.680 31.2.7: a tag on a CHOICE or on an open type is explicit whatever the module says.
        base = self._catalogue.base(element.type)
        if isinstance(base, (model.Choice, model.OpenType, model.ClassField)):
            return True
        return (element.type.tag.mode or module.tags) == "EXPLICIT"

    def _has_bit(self, element: model.Element) -> bool:
        if element.optional:
            return True
        simple = (model.Boolean, model.Integer, model.Enumerated)
        return element.default is not None and not isinstance(self._catalogue.base(element.type), simple)

    def _default(self, element: model.Element) -> int:
        if element.default in ("TRUE", "FALSE"):
            return int(element.default == "TRUE")
        named = dict(self._catalogue.base(element.type).names)
        return int(named.get(element.default, element.default))

    def _table(self, place: _Place, element: model.Element, siblings: tuple[model.Element, ...]) -> list[str]:
        """The set that tells what an open element is, and which element has the identifier."""
        kind = element.type
        while isinstance(kind, model.Tagged):
            kind = kind.type
        annotation = element.annotation("table")
        if annotation:
            table = model.Table(*annotation.arguments)
        elif isinstance(kind, model.OctetString) and kind.containing:
            table = kind.containing.table
        elif isinstance(kind, model.ClassField) and kind.table:
            table = kind.table
        else:
            return []
        index = [one.name for one in siblings].index(table.identifier)
        row = [f".identifier = {index}"]
        if self._catalogue.object_set(table.set).members:
            row.append(f".objects = {_set_constant(table.set)}")
        member = element.annotation("member")
        if member:
            row.append(f".carried_offset = offsetof({place.record}, {member.arguments[0]})")
        return row


def _structure_tag(kind: model.Type) -> int:
    return {"SEQUENCE": 16, "SET": 17}.get(getattr(kind, "universal", ""), 0)


def _constant(type_name: str) -> str:
    return "k" + names.identifier(type_name)


def _set_constant(set_name: str) -> str:
    return f"k{names.identifier(set_name)}_objects"


def description(catalogue: model.Catalogue) -> str:
    """The source of `described_types` over a catalogue."""
    return Describer(catalogue).source()

"""How a value of each ASN.1 type is held in a record, and which calls write, read, free and copy it.

A `Value` is made once for every place where a type is used. The emitters ask it for C++ expressions and know
nothing of types; `lvalue` is the C++ expression of the place that holds the value.
"""

from __future__ import annotations

from dataclasses import dataclass, replace

from . import model, names
from .model import ModuleError

_STRING_TAGS = {
    "UTF8String": 12, "NumericString": 18, "PrintableString": 19, "TeletexString": 20, "IA5String": 22,
    "UTCTime": 23, "GeneralizedTime": 24, "VisibleString": 26, "UniversalString": 28, "BMPString": 30,
}


@dataclass(frozen=True)
class Check:
    """A size or value that must lie in a range. `subject` and `path` are C++ expression and literal text."""

    subject: str
    low: int
    high: int | None
    path: str

    def call(self, checker: str) -> str:
        if self.high is None:
            return f'{checker}check_minimum({self.subject}, {self.low}, "{self.path}")'
        return f'{checker}check_range({self.subject}, {self.low}, {self.high}, "{self.path}")'


@dataclass(frozen=True)
class Value:
    cpp: str  # the type of the field
    initializer: str = ""  # what stands behind the field's name
    universal: int | None = None  # universal tag number
    constructed: bool = False
    reads_own_end: bool = False  # its decoder takes the end-of-contents octets also when the caller read the header
    whole: bool = False  # holds an element with its header
    indirect: bool = False  # a pointer when it is the alternative of a CHOICE
    path: str | None = None  # what a violated constraint is reported under, when not the place itself

    def encode(self, lvalue: str, tagging: str) -> str:
        raise NotImplementedError

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        raise NotImplementedError

    def check(self, lvalue: str) -> Check | None:
        """The constraint on the value."""
        own = self.own_check(lvalue)
        return replace(own, path=self.path) if own and self.path else own

    def own_check(self, lvalue: str) -> Check | None:
        return None

    def free(self, lvalue: str) -> str | None:
        return None

    def copy(self, source: str, target: str) -> str:
        return f"{target} = {source};"


@dataclass(frozen=True)
class Plain(Value):
    """A number or flag that one function writes and one reads."""

    codec: str = ""
    low: int | None = None
    high: int | None = None

    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_{self.codec}(ctxt, {names.address(lvalue)}, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        return f"xd_{self.codec}(ctxt, {names.address(lvalue)}, {tagging}, {length})"

    def own_check(self, lvalue: str) -> Check | None:
        if self.low is None or (self.high is None and self.low == 0):
            return None
        return Check(lvalue, self.low, self.high, lvalue)


@dataclass(frozen=True)
class EnumeratedValue(Value):
    bound: int = 0

    def encode(self, lvalue: str, tagging: str) -> str:
        return f"encode_enumerated(ctxt, {lvalue}, {self.bound}, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        return f"decode_enumerated(ctxt, {lvalue}, {self.bound}, {tagging}, {length})"


@dataclass(frozen=True)
class BigInteger(Value):
    """INTEGER of any size, as text."""

    codec: str = "bigint"

    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_{self.codec}(ctxt, {lvalue}, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        return f"xd_bigint(ctxt, text_cell({lvalue}), {tagging}, {length})"

    def free(self, lvalue: str) -> str | None:
        return f"free_pointer(ctxt, {lvalue});"

    def copy(self, source: str, target: str) -> str:
        return f"copy_text(ctxt, {source}, {target});"


@dataclass(frozen=True)
class Oid(Value):
    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_objid(ctxt, {names.address(lvalue)}, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        return f"xd_objid(ctxt, {names.address(lvalue)}, {tagging}, {length})"


@dataclass(frozen=True)
class NullValue(Value):
    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_null(ctxt, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        return f"xd_null(ctxt, {tagging})"

    def copy(self, source: str, target: str) -> str:
        return ""


@dataclass(frozen=True)
class Text(Value):
    """A string of 8-bit characters."""

    low: int | None = None
    high: int | None = None

    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_charstr(ctxt, {lvalue}, {tagging}, {self.universal})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        return f"xd_charstr(ctxt, text_cell({lvalue}), {tagging}, {self.universal}, {length})"

    def own_check(self, lvalue: str) -> Check | None:
        if self.low is None:
            return None
        measure = "utf8_length" if self.universal == 12 else "text_length"
        return Check(f"{measure}({lvalue})", self.low, self.high, lvalue)

    def free(self, lvalue: str) -> str | None:
        return f"free_pointer(ctxt, {lvalue});"

    def copy(self, source: str, target: str) -> str:
        return f"copy_text(ctxt, {source}, {target});"


@dataclass(frozen=True)
class WideText(Value):
    """BMPString or UniversalString."""

    bits: int = 16
    low: int | None = None
    high: int | None = None

    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_{self.bits}BitCharStr(ctxt, {names.address(lvalue)}, {tagging}, {self.universal})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        return f"xd_{self.bits}BitCharStr(ctxt, {names.address(lvalue)}, {tagging}, {self.universal}, {length})"

    def own_check(self, lvalue: str) -> Check | None:
        if self.low is None:
            return None
        count = names.member(lvalue, "nchars")
        return Check(count, self.low, self.high, count)

    def free(self, lvalue: str) -> str | None:
        return f"free_pointer(ctxt, {names.member(lvalue, 'data')});"

    def copy(self, source: str, target: str) -> str:
        return f"copy_value(ctxt, {source}, {target});"


@dataclass(frozen=True)
class Octets(Value):
    """OCTET STRING of any length."""

    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_octstr(ctxt, {names.member(lvalue, 'data')}, {names.member(lvalue, 'numocts')}, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        data, count = names.member(lvalue, "data"), names.member(lvalue, "numocts")
        return f"xd_octstr(ctxt, &{data}, &{count}, {tagging}, {length})"

    def free(self, lvalue: str) -> str | None:
        return f"free_pointer(ctxt, {names.member(lvalue, 'data')});"

    def copy(self, source: str, target: str) -> str:
        return f"copy_value(ctxt, {source}, {target});"


@dataclass(frozen=True)
class Bits(Value):
    """BIT STRING of any length."""

    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_bitstr(ctxt, {names.member(lvalue, 'data')}, {names.member(lvalue, 'numbits')}, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        data, count = names.member(lvalue, "data"), names.member(lvalue, "numbits")
        return f"xd_bitstr(ctxt, &{data}, &{count}, {tagging}, {length})"

    def free(self, lvalue: str) -> str | None:
        return f"free_pointer(ctxt, {names.member(lvalue, 'data')});"

    def copy(self, source: str, target: str) -> str:
        return f"copy_value(ctxt, {source}, {target});"


@dataclass(frozen=True)
class SizedString(Value):
    """OCTET STRING or BIT STRING inside the record. `capacity` counts octets or bits."""

    count: str = "numocts"
    capacity: int = 0
    low: int | None = None  # None: only what does not fit is refused
    high: int | None = None

    @property
    def octets(self) -> int:
        return self.capacity if self.count == "numocts" else (self.capacity + 7) // 8

    def fields(self) -> list[str]:
        return [f"uint32_t {self.count} = 0;", f"uint8_t data[{self.octets}];"]

    def encode(self, lvalue: str, tagging: str) -> str:
        codec = "octstr" if self.count == "numocts" else "bitstr"
        return f"xe_{codec}(ctxt, {names.member(lvalue, 'data')}, {names.member(lvalue, self.count)}, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        data, count = names.member(lvalue, "data"), names.member(lvalue, self.count)
        if self.count == "numocts":
            return f"decode_sized_octets(ctxt, {data}, {count}, {tagging}, {length})"
        return f"decode_sized_bits(ctxt, {data}, {count}, {self.capacity}, {tagging}, {length})"

    def own_check(self, lvalue: str) -> Check | None:
        if self.low is None:
            return None
        count = names.member(lvalue, self.count)
        return Check(count, self.low, self.high, count)

    def room_check(self, lvalue: str) -> Check:
        """What the encoder must refuse so that it reads no octet behind the record."""
        count = names.member(lvalue, self.count)
        return Check(count, 0, self.octets if self.count == "numocts" else self.octets * 8, count)

    def copy(self, source: str, target: str) -> str:
        target_count, target_data = names.member(target, self.count), names.member(target, "data")
        source_count, source_data = names.member(source, self.count), names.member(source, "data")
        unit = "octets" if self.count == "numocts" else "bits"
        return f"copy_sized_{unit}({source_count}, {source_data}, {target_count}, {target_data});"


@dataclass(frozen=True)
class Open(Value):
    """An element of any type, as its octets."""

    def encode(self, lvalue: str, tagging: str) -> str:
        return f"xe_OpenType(ctxt, {names.member(lvalue, 'data')}, {names.member(lvalue, 'numocts')})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        return f"decode_open(ctxt, {lvalue})"

    def free(self, lvalue: str) -> str | None:
        return f"free_pointer(ctxt, {names.member(lvalue, 'data')});"

    def copy(self, source: str, target: str) -> str:
        return f"copy_value(ctxt, {source}, {target});"


@dataclass(frozen=True)
class Carried(Open):
    """An open type with the record that its octets were decoded into."""


@dataclass(frozen=True)
class Family(Value):
    """A type with functions of its own."""

    name: str = ""
    frees: bool = False
    is_null: bool = False
    is_record: bool = True

    def encode(self, lvalue: str, tagging: str) -> str:
        place = "nullptr" if self.is_null else names.address(lvalue)
        return f"{names.function('E', self.name)}(ctxt, {place}, {tagging})"

    def decode(self, lvalue: str, tagging: str, length: str) -> str:
        place = "nullptr" if self.is_null else names.address(lvalue)
        return f"{names.function('D', self.name)}(ctxt, {place}, {tagging}, {length})"

    def free(self, lvalue: str) -> str | None:
        return f"{names.function('Free', self.name)}(ctxt, {names.address(lvalue)});" if self.frees else None

    def copy(self, source: str, target: str) -> str:
        if self.is_null:
            return ""
        return f"{names.function('Copy', self.name)}(ctxt, {names.address(source)}, {names.address(target)});"


class ValueMaker:
    """Makes values of the types of a catalogue."""

    def __init__(self, catalogue: model.Catalogue) -> None:
        self._catalogue = catalogue
        self._frees: dict[str, bool] = {}

    def of_element(self, element: model.Element) -> Value:
        kind = element.type
        while isinstance(kind, model.Tagged):
            kind = kind.type
        return self.of_type(kind, element.annotations, element.position)

    def of_type(
        self, kind: model.Type, annotations: tuple[model.Annotation, ...], position: model.Position
    ) -> Value:
        """The value of a type where it is written out or named."""
        found = {annotation.name: annotation for annotation in annotations}
        value = self._unnamed(kind, found, position)
        path = found.get("path")
        return replace(value, path=path.arguments[0]) if path else value

    def _range(self, bounds: model.Range | None) -> tuple[int | None, int | None]:
        if bounds is None:
            return None, None
        return self._catalogue.value(bounds.low) or 0, self._catalogue.value(bounds.high)

    def _unnamed(self, kind: model.Type, found: dict[str, model.Annotation], position: model.Position) -> Value:
        if "raw" in found:
            return self._raw(kind)
        if isinstance(kind, model.Reference):
            return self.family(kind.name)
        if isinstance(kind, model.Boolean):
            return Plain("uint8_t", " = 0", 1, codec="boolean")
        if isinstance(kind, model.Integer):
            return self._integer(kind, found)
        if isinstance(kind, model.Enumerated):
            return EnumeratedValue("uint32_t", " = 0", 10, bound=self._enumerated_bound(kind, found, position))
        if isinstance(kind, model.BitString):
            return self._bit_string(kind, found)
        if isinstance(kind, model.OctetString):
            return self._octet_string(kind, found)
        if isinstance(kind, model.ObjectIdentifier):
            return Oid("ASN1TObjId", "", 6, indirect=True)
        if isinstance(kind, model.Null):
            return NullValue("", "", 5)
        if isinstance(kind, model.CharacterString):
            return self._character_string(kind, found)
        if isinstance(kind, model.OpenType):
            return Open("ASN1TOpenType", indirect=True, reads_own_end=True, whole=True)
        if isinstance(kind, model.ClassField):
            return Carried("Asn1TObject", indirect=True, reads_own_end=True, whole=True)
        raise ModuleError(position, "a structure inside another needs a name: define it as a type of its own")

    def _raw(self, kind: model.Type) -> Value:
        """A type that is kept as its octets. It still begins with its tag, which tells it from others."""
        kind = self._catalogue.base(kind)
        universal = {"SEQUENCE": 16, "SET": 17}.get(getattr(kind, "universal", ""))
        return Open(
            "ASN1TOpenType", "", universal, constructed=universal is not None, indirect=True, reads_own_end=True,
            whole=True,
        )

    def _integer(self, kind: model.Integer, found: dict[str, model.Annotation]) -> Value:
        low, high = self._range(kind.range)
        if "big" in found:
            return BigInteger("const char*", " = nullptr", 2)
        if "biguint" in found:
            return BigInteger("const char*", " = nullptr", 2, codec="biguint")
        if "noconstraint" in found:
            checked = (None, None)
        else:
            checked = (low, high)
        if "u16" in found:
            return Plain("uint16_t", " = 0", 2, codec="uint16", low=checked[0], high=checked[1])
        if "u32" in found or (low is not None and low >= 0):
            return Plain("uint32_t", " = 0", 2, codec="unsigned", low=checked[0], high=checked[1])
        return Plain("int32_t", " = 0", 2, codec="integer", low=checked[0], high=checked[1])

    @staticmethod
    def _enumerated_bound(
        kind: model.Enumerated, found: dict[str, model.Annotation], position: model.Position
    ) -> int:
        if "bound" in found:
            return int(found["bound"].arguments[0])
        if not kind.names:
            raise ModuleError(position, "an ENUMERATED without items needs '--@ bound N'")
        return max(number for _, number in kind.names) + 1

    def _bit_string(self, kind: model.BitString, found: dict[str, model.Annotation]) -> Value:
        low, high = self._range(kind.size)
        if "sized" in found:
            capacity = int(found["sized"].arguments[0])
            bounds = self._bounds_in_room(kind, found, (capacity + 7) // 8 * 8)
            return SizedString("", count="numbits", universal=3, capacity=capacity, indirect=True, **bounds)
        if high is not None:
            bounds = {} if "noconstraint" in found else {"low": low, "high": high}
            return SizedString("", count="numbits", universal=3, capacity=high, indirect=True, **bounds)
        return Bits("ASN1TDynBitStr", "{}", 3, reads_own_end=True, indirect=True)

    def _bounds_in_room(
        self, kind: model.BitString | model.OctetString, found: dict[str, model.Annotation], room: int
    ) -> dict[str, int]:
        """The SIZE of a string whose room is told beside it."""
        low, high = self._range(kind.size)
        if low is None or "noconstraint" in found:
            return {}
        return {"low": low, "high": room if high is None else min(high, room)}

    def _octet_string(self, kind: model.OctetString, found: dict[str, model.Annotation]) -> Value:
        low, high = self._range(kind.size)
        if "sized" in found:
            capacity = int(found["sized"].arguments[0])
            bounds = self._bounds_in_room(kind, found, capacity)
            return SizedString("", universal=4, capacity=capacity, indirect=True, **bounds)
        if high is not None:
            bounds = {} if "noconstraint" in found else {"low": low, "high": high}
            return SizedString("", universal=4, capacity=high, indirect=True, **bounds)
        return Octets("ASN1TDynOctStr", "{}", 4, reads_own_end=True, indirect=True)

    def _character_string(self, kind: model.CharacterString, found: dict[str, model.Annotation]) -> Value:
        low, high = (None, None) if "noconstraint" in found else self._range(kind.size)
        tag = _STRING_TAGS[kind.kind]
        if kind.kind == "BMPString":
            return WideText("ASN1_16BITCHARSTRING", "{}", tag, reads_own_end=True, bits=16, low=low, high=high)
        if kind.kind == "UniversalString":
            return WideText("ASN1_32BITCHARSTRING", "{}", tag, reads_own_end=True, bits=32, low=low, high=high)
        return Text("const char*", " = nullptr", tag, reads_own_end=True, low=low, high=high)

    # Named types

    def family(self, name: str) -> Family:
        assignment = self._catalogue.type(self._catalogue.base_name(name))
        base = self._catalogue.base(assignment.type)
        under = None if self.has_record(name) else self.simple_value(name)
        is_null = isinstance(base, model.Null)
        if under is None:
            universal = {"SEQUENCE": 16, "SET": 17}.get(getattr(base, "universal", ""))
            if isinstance(base, (model.BitString, model.OctetString)):
                universal = 3 if isinstance(base, model.BitString) else 4
            return Family(
                names.record(name), "", universal, constructed=isinstance(base, (model.Sequence, model.ListOf)),
                indirect=True, name=name, frees=self.frees(name),
            )
        return Family(
            "" if is_null else names.record(name), under.initializer, under.universal,
            constructed=under.constructed, reads_own_end=under.reads_own_end, whole=under.whole,
            indirect=under.indirect, name=name, frees=self.frees(name), is_null=is_null, is_record=False,
        )

    def has_record(self, name: str) -> bool:
        """False for the types that work on a value of the run-time."""
        assignment = self._catalogue.type(self._catalogue.base_name(name))
        kind = self._catalogue.base(assignment.type)
        if isinstance(kind, (model.Sequence, model.Choice, model.ListOf)):
            return assignment.annotation("raw") is None
        return isinstance(self.simple_value(name), SizedString)

    def simple_value(self, name: str) -> Value:
        """The value under a type that is neither structure nor list."""
        assignment = self._catalogue.type(self._catalogue.base_name(name))
        return self.of_type(assignment.type, assignment.annotations, assignment.position)

    def frees(self, name: str) -> bool:
        """True when a record of the type can hold something on the heap."""
        name = self._catalogue.base_name(name)
        if name not in self._frees:
            self._frees[name] = True  # what contains itself does so through a pointer
            self._frees[name] = self._holds_heap(name)
        return self._frees[name]

    def _holds_heap(self, name: str) -> bool:
        if not self.has_record(name):
            return self.simple_value(name).free("*pvalue") is not None
        kind = self._catalogue.base(self._catalogue.type(name).type)
        if isinstance(kind, model.ListOf):
            return True
        if isinstance(kind, model.Choice):
            return any(
                value.indirect or value.free("x") is not None
                for value in map(self.of_element, kind.alternatives) if value.cpp or isinstance(value, SizedString)
            )
        if isinstance(kind, model.Sequence):
            return kind.extensible or any(
                element.annotation("nofree") is None and self.of_element(element).free("x") is not None
                for element in kind.elements
            )
        return False

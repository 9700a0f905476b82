"""Reads a module: ASN.1 notation (X.680, X.681) as far as the catalogue needs it, and annotations.

An annotation is a comment that begins with `--@`; it belongs to the element or assignment behind it.
Identifiers may hold underscores, since types that ASN.1 leaves anonymous are written out by name.
"""

from __future__ import annotations

import re
from dataclasses import dataclass
from pathlib import Path

from . import model
from .model import Annotation, ModuleError, Position

CHARACTER_STRINGS = frozenset(
    "UTF8String NumericString PrintableString TeletexString IA5String VisibleString UTCTime GeneralizedTime "
    "UniversalString BMPString".split()
)

_TOKEN = re.compile(
    r"(?P<blank>\s+)|(?P<annotation>--@[^\n]*)|(?P<comment>--.*?(?:--|(?=\n)|$))"
    r'|(?P<word>[A-Za-z_](?:-?[A-Za-z0-9_])*)|(?P<number>-?\d+)|(?P<symbol>::=|\.\.\.|\.\.|[][{}(),|.&@;])'
)


@dataclass(frozen=True)
class Token:
    kind: str  # word, number, symbol, annotation, end
    text: str
    line: int


def tokenize(text: str, file: str) -> list[Token]:
    tokens = []
    line = 1
    at = 0
    while at < len(text):
        match = _TOKEN.match(text, at)
        if match is None:
            raise ModuleError(Position(file, line), f"cannot read '{text[at]}'")
        if match.lastgroup not in ("blank", "comment"):
            tokens.append(Token(match.lastgroup, match.group(), line))
        line += match.group().count("\n")
        at = match.end()
    tokens.append(Token("end", "end of file", line))
    return tokens


def parse_file(path: Path, shown_as: str) -> model.Module:
    return parse_text(path.read_text(encoding="utf-8"), shown_as)


def parse_text(text: str, file: str) -> model.Module:
    return _Parser(text, file).module()


def _is_type_name(word: str) -> bool:
    return word[0].isupper() or word[0] == "_"


class _Parser:
    def __init__(self, text: str, file: str) -> None:
        self._lines = text.split("\n")
        self._file = file
        self._tokens = tokenize(text, file)
        self._at = 0
        self._annotations: list[Annotation] = []
        self._last_line = 1  # of the token taken last

    # Tokens

    def _skip_annotations(self) -> None:
        while self._tokens[self._at].kind == "annotation":
            token = self._tokens[self._at]
            words = token.text[3:].split()
            if not words:
                raise ModuleError(Position(self._file, token.line), "an annotation without a name")
            self._annotations.append(Annotation(words[0], tuple(words[1:]), Position(self._file, token.line)))
            self._at += 1

    def _take_annotations(self) -> tuple[Annotation, ...]:
        self._skip_annotations()
        taken = tuple(self._annotations)
        self._annotations = []
        return taken

    def _next(self) -> Token:
        self._skip_annotations()
        return self._tokens[self._at]

    def _word_after_next(self) -> str:
        return self._tokens[min(self._at + 1, len(self._tokens) - 1)].text

    def _position(self) -> Position:
        return Position(self._file, self._next().line)

    def _take(self) -> Token:
        token = self._next()
        self._at += 1
        self._last_line = token.line
        return token

    def _accept(self, text: str) -> bool:
        if self._next().text == text and self._next().kind != "end":
            self._take()
            return True
        return False

    def _expect(self, text: str) -> None:
        token = self._next()
        if not self._accept(text):
            raise ModuleError(self._position(), f"expected '{text}', found '{token.text}'")

    def _word(self, what: str) -> str:
        token = self._next()
        if token.kind != "word":
            raise ModuleError(self._position(), f"expected {what}, found '{token.text}'")
        return self._take().text

    def _number(self, what: str) -> int:
        token = self._next()
        if token.kind != "number":
            raise ModuleError(self._position(), f"expected {what}, found '{token.text}'")
        return int(self._take().text)

    # Modules

    def module(self) -> model.Module:
        remark = self._leading_remark()
        name = self._word("the name of the module")
        self._expect("DEFINITIONS")
        tags = self._word("IMPLICIT or EXPLICIT")
        if tags not in ("IMPLICIT", "EXPLICIT"):
            raise ModuleError(self._position(), f"expected IMPLICIT or EXPLICIT, found '{tags}'")
        for text in ("TAGS", "::=", "BEGIN"):
            self._expect(text)
        found: dict[str, list] = {kind: [] for kind in ("types", "numbers", "oids", "classes", "objects", "sets")}
        while not self._accept("END"):
            kind, assignment = self._assignment()
            found[kind].append(assignment)
        return model.Module(
            name=name, file=self._file, remark=remark, tags=tags,
            **{kind: tuple(members) for kind, members in found.items()},
        )

    def _leading_remark(self) -> tuple[str, ...]:
        remark = []
        for line in self._lines:
            if not line.startswith("--"):
                break
            remark.append(line[2:].removeprefix(" "))
        return tuple(remark)

    def _assignment(self) -> tuple[str, object]:
        annotations = self._take_annotations()
        position = self._position()
        name = self._word("an assignment or END")
        if self._accept("::="):
            if self._accept("CLASS"):
                return "classes", self._object_class(name, position)
            kind = self._type()
            return "types", model.TypeAssignment(name, kind, position, self._source(position.line), annotations)
        if self._accept("INTEGER"):
            self._expect("::=")
            return "numbers", model.NumberAssignment(name, self._number("a number"), position)
        if self._accept("OBJECT"):
            self._expect("IDENTIFIER")
            self._expect("::=")
            return "oids", model.OidAssignment(name, self._arcs(), position)
        object_class = self._word("'::=', INTEGER, OBJECT IDENTIFIER or an information object class")
        self._expect("::=")
        if _is_type_name(name):
            return "sets", self._object_set(name, object_class, position)
        return "objects", self._object(name, object_class, position)

    def _source(self, line: int) -> tuple[str, ...]:
        """The lines of the assignment that ends at the token before, from the remark over it on."""
        first = line - 1
        while first > 0 and self._lines[first - 1].startswith("--"):
            first -= 1
        last = self._last_line
        while last < len(self._lines) and self._lines[last].strip().startswith("--") and self._lines[last][0] == " ":
            last += 1
        return tuple(text.rstrip() for text in self._lines[first:last] if not text.strip().startswith("--@"))

    # Information objects

    def _object_class(self, name: str, position: Position) -> model.ObjectClass:
        type_field = None
        type_optional = False
        self._expect("{")
        while not self._accept("}"):
            self._expect("&")
            field = self._word("a field name")
            if field[0].isupper():
                type_field = field
                type_optional = self._accept("OPTIONAL")
            else:
                self._expect("OBJECT")
                self._expect("IDENTIFIER")
                self._accept("UNIQUE") or self._accept("OPTIONAL")
            self._accept(",")
        if type_field is None:
            raise ModuleError(position, f"class {name} has no type field, it needs one such as '&Type'")
        return model.ObjectClass(name, type_field, type_optional, position)

    def _object(self, name: str, object_class: str, position: Position) -> model.InformationObject:
        carried = None
        arcs = None
        self._expect("{")
        while not self._accept("}"):
            self._expect("&")
            field = self._word("a field name")
            if field[0].isupper():
                carried = self._word("the name of a type")
            else:
                arcs = self._arcs()
            self._accept(",")
        return model.InformationObject(name, object_class, carried, arcs, position)

    def _object_set(self, name: str, object_class: str, position: Position) -> model.ObjectSet:
        members = []
        self._expect("{")
        while not self._accept("}"):
            if not self._accept("..."):
                members.append(self._word("the name of an object"))
            self._accept("|")
        return model.ObjectSet(name, object_class, tuple(members), position)

    def _arcs(self) -> tuple[int | str, ...]:
        arcs: list[int | str] = []
        self._expect("{")
        while not self._accept("}"):
            if self._next().kind == "number":
                arcs.append(self._number("an arc"))
                continue
            word = self._word("an arc")
            if self._accept("("):
                arcs.append(self._number("an arc"))
                self._expect(")")
            else:
                arcs.append(word)
        return tuple(arcs)

    # Types

    def _type(self) -> model.Type:
        if self._next().text == "[":
            return self._tagged()
        position = self._position()
        word = self._word("a type")
        if word == "BOOLEAN":
            return model.Boolean()
        if word == "NULL":
            return model.Null()
        if word == "ANY":
            return model.OpenType()
        if word == "INTEGER":
            names = self._named_numbers()
            return model.Integer(names, self._value_range())
        if word == "ENUMERATED":
            return model.Enumerated(self._named_numbers())
        if word == "BIT":
            self._expect("STRING")
            names = self._named_numbers()
            return model.BitString(names, self._size_in_parentheses())
        if word == "OCTET":
            self._expect("STRING")
            return self._octet_string()
        if word == "OBJECT":
            self._expect("IDENTIFIER")
            return model.ObjectIdentifier()
        if word in CHARACTER_STRINGS:
            return model.CharacterString(word, self._size_in_parentheses())
        if word in ("SEQUENCE", "SET"):
            return self._sequence_or_list(word)
        if word == "CHOICE":
            return model.Choice(self._elements()[0])
        if not _is_type_name(word):
            raise ModuleError(position, f"expected a type, found '{word}'")
        if self._next().text == "." and self._word_after_next() == "&":
            return self._class_field(word)
        return model.Reference(word)

    def _tagged(self) -> model.Tagged:
        self._expect("[")
        tag_class = "CONTEXT"
        if self._next().kind == "word":
            tag_class = self._word("a tag class")
        number = self._number("a tag number")
        self._expect("]")
        mode = None
        if self._next().text in ("IMPLICIT", "EXPLICIT"):
            mode = self._take().text
        return model.Tagged(model.Tag(tag_class, number, mode), self._type())

    def _octet_string(self) -> model.OctetString:
        if self._next().text != "(":
            return model.OctetString()
        if self._word_after_next() == "SIZE":
            return model.OctetString(self._size_in_parentheses())
        self._expect("(")
        self._expect("CONTAINING")
        contained = self._class_field(self._word("an information object class"))
        self._expect(")")
        return model.OctetString(None, contained)

    def _class_field(self, object_class: str) -> model.ClassField:
        self._expect(".")
        self._expect("&")
        field = self._word("a field name")
        table = None
        if self._next().text == "(" and self._word_after_next() == "{":
            self._expect("(")
            self._expect("{")
            name = self._word("the name of an object set")
            for text in ("}", "{", "@"):
                self._expect(text)
            table = model.Table(name, self._word("the identifier element"))
            self._expect("}")
            self._expect(")")
        return model.ClassField(object_class, field, table)

    def _sequence_or_list(self, universal: str) -> model.Type:
        if self._next().text == "{":
            elements, extensible = self._elements()
            return model.Sequence(elements, universal, extensible)
        size = None
        if self._accept("SIZE"):
            size = self._range()
        elif self._next().text == "(":
            size = self._size_in_parentheses()
        self._expect("OF")
        return model.ListOf(universal, self._type(), size)

    def _elements(self) -> tuple[tuple[model.Element, ...], bool]:
        elements = []
        extensible = False
        self._expect("{")
        while not self._accept("}"):
            if self._accept("..."):
                extensible = True
            else:
                elements.append(self._element())
            if self._next().text != "}":
                self._expect(",")
        return tuple(elements), extensible

    def _element(self) -> model.Element:
        annotations = self._take_annotations()
        position = self._position()
        name = self._word("the name of an element")
        kind = self._type()
        optional = self._accept("OPTIONAL")
        default = self._default() if self._accept("DEFAULT") else None
        return model.Element(name, kind, position, optional, default, annotations)

    def _default(self) -> str:
        if self._next().text != "{":
            return self._take().text
        depth = 0
        words = []
        while True:
            token = self._take()
            words.append(token.text)
            depth += {"{": 1, "}": -1}.get(token.text, 0)
            if depth == 0:
                return " ".join(words)

    def _named_numbers(self) -> tuple[tuple[str, int], ...]:
        names = []
        if self._next().text != "{":
            return ()
        self._expect("{")
        while not self._accept("}"):
            name = self._word("a name")
            self._expect("(")
            names.append((name, self._number("a number")))
            self._expect(")")
            self._accept(",")
        return tuple(names)

    # Constraints

    def _size_in_parentheses(self) -> model.Range | None:
        if self._next().text != "(":
            return None
        self._expect("(")
        self._expect("SIZE")
        size = self._range()
        self._expect(")")
        return size

    def _value_range(self) -> model.Range | None:
        return self._range() if self._next().text == "(" else None

    def _range(self) -> model.Range:
        self._expect("(")
        low = self._bound()
        high = self._bound() if self._accept("..") else low
        self._expect(")")
        return model.Range(low, high)

    def _bound(self) -> model.Bound:
        if self._next().kind == "number":
            return model.Bound(number=self._number("a bound"))
        word = self._word("a bound")
        return model.Bound() if word in ("MIN", "MAX") else model.Bound(name=word)

"""For each check a module that violates it, and the message."""

import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent.parent / "tools"))

from typegen import catalogue, checks, parser  # noqa: E402
from typegen.emit_records import in_dependency_order  # noqa: E402
from typegen.model import Catalogue, ModuleError  # noqa: E402
from typegen.plan import Planner  # noqa: E402

LISTED = "M:\n    A B C D E Later\n"


def run(body: str, listed: str = LISTED, head: str = "M DEFINITIONS IMPLICIT TAGS ::= BEGIN\n") -> None:
    expected = catalogue.parse(listed, "catalogue.txt")
    module = parser.parse_text(head + body + "\nEND\n", "M.asn1")
    found = Catalogue(catalogue.in_order([module], expected), expected)
    checks.check(found)
    in_dependency_order(Planner(found).plans())


# Rows: what is wrong, the module from its second line on, the message.
CASES = [
    ("unknown character", "A ::= INTEGER %", "M.asn1:2: cannot read '%'"),
    ("no type", "A ::= )", "M.asn1:2: expected a type, found ')'"),
    ("value in place of a type", "A ::= b", "M.asn1:2: expected a type, found 'b'"),
    ("element without comma", "A ::= SEQUENCE { a INTEGER b INTEGER }", "M.asn1:2: expected ',', found 'b'"),
    ("missing bracket", "A ::= SEQUENCE { a INTEGER", "M.asn1:3: expected ',', found 'END'"),
    ("annotation without name", "--@\nA ::= INTEGER", "M.asn1:2: an annotation without a name"),
    ("unknown annotation", "--@ bigger\nA ::= INTEGER",
     "M.asn1:2: annotation 'bigger' is not known on type A, it can be one of array, big, biguint, bound, eoc, ext, "
     "noconstraint, path, raw, seqtag, sized, u16, u32"),
    ("annotation of an element on a type", "--@ nofree\nA ::= INTEGER",
     "M.asn1:2: annotation 'nofree' is not known on type A, it can be one of array, big, biguint, bound, eoc, ext, "
     "noconstraint, path, raw, seqtag, sized, u16, u32"),
    ("annotation without its argument", "--@ sized\nA ::= BIT STRING",
     "M.asn1:2: annotation 'sized' takes 1 arguments, not 0"),
    ("annotation twice", "--@ big\n--@ big\nA ::= INTEGER", "M.asn1:3: annotation 'big' stands twice on type A"),
    ("big on a string", "--@ big\nA ::= OCTET STRING", "M.asn1:2: annotation 'big' is for an INTEGER"),
    ("sized on a number", "A ::= SEQUENCE {\n--@ sized 4\na INTEGER }",
     "M.asn1:3: annotation 'sized' is for a BIT STRING or OCTET STRING"),
    ("bound on a number", "--@ bound 4\nA ::= INTEGER", "M.asn1:2: annotation 'bound' is for an ENUMERATED"),
    ("two forms", "--@ big\n--@ u16\nA ::= INTEGER",
     "M.asn1:4: an INTEGER has one form, keep one of big, biguint, u16 and u32"),
    ("array on a structure", "--@ array\nA ::= SEQUENCE { a INTEGER }",
     "M.asn1:3: annotation 'array' is for a SEQUENCE OF or SET OF"),
    ("seqtag on a SEQUENCE OF", "--@ seqtag\nA ::= SEQUENCE OF INTEGER", "M.asn1:3: annotation 'seqtag' is for a SET OF"),
    ("extension marker without member", "A ::= SEQUENCE { a INTEGER, ... }",
     "M.asn1:2: A: '...' and '--@ ext MEMBER' go together, one of them is missing"),
    ("member without extension marker", "--@ ext more\nA ::= SEQUENCE { a INTEGER }",
     "M.asn1:3: A: '...' and '--@ ext MEMBER' go together, one of them is missing"),
    ("tag on a type", "A ::= [1] INTEGER",
     "M.asn1:2: A: a type with a tag of its own can only be an [APPLICATION n] CHOICE, put other tags on the elements "
     "that use it"),
    ("tag number of two octets", "A ::= SEQUENCE { a [31] INTEGER }",
     "M.asn1:2: tag number 31 takes more than one octet, it can be 30 at most"),
    ("implicit tag on a choice", "A ::= SEQUENCE { a [0] IMPLICIT B }\nB ::= CHOICE { b INTEGER }",
     "M.asn1:2: a: a tag on a CHOICE or open type is explicit (X.680 31.2.9), drop IMPLICIT"),
    ("octets of a number behind an implicit tag", "A ::= SEQUENCE {\n--@ raw\na [0] INTEGER }",
     "M.asn1:4: a is kept as its octets, which takes a SEQUENCE or SET behind an implicit tag, write EXPLICIT"),
    ("type twice", "A ::= INTEGER\nA ::= BOOLEAN", "M.asn1:3: type A is defined at M.asn1:2 already, one name is one type"),
    ("type not listed", "Z ::= INTEGER", "M.asn1:2: type Z is not listed under M in the catalogue, add it there"),
    ("types out of order", "B ::= INTEGER\nA ::= INTEGER",
     "M.asn1:3: type A stands behind B, the catalogue lists it in front"),
    ("unknown type", "A ::= SEQUENCE { a Z }",
     "M.asn1:2: type Z is not defined and the catalogue does not list it: is the name right?"),
    ("type not written yet", "A ::= SEQUENCE { a Later }",
     "M.asn1:2: type Later is not defined, though the catalogue lists it: write it before it is used"),
    ("unknown bound", "A ::= OCTET STRING (SIZE (1..ub))",
     "M.asn1:2: bound ub is not defined, add 'ub INTEGER ::= n'"),
    ("empty range", "A ::= INTEGER (5..1)", "M.asn1:2: the range 5..1 is empty, the lower bound comes first"),
    ("element twice", "A ::= SEQUENCE { a INTEGER, a BOOLEAN }",
     "M.asn1:2: element a stands twice, give one of them another name"),
    ("same tag in a choice", "A ::= CHOICE { a INTEGER, b INTEGER }",
     "M.asn1:2: b begins with the same tag as a, give one a context tag"),
    ("same tag in a set", "A ::= SET { a [0] INTEGER, b [0] BOOLEAN }",
     "M.asn1:2: b begins with the same tag as a, give one a context tag"),
    ("any tag in a choice", "A ::= CHOICE { a INTEGER, b ANY }",
     "M.asn1:2: b can begin with any tag, give it one of its own"),
    ("optional element like the next", "A ::= SEQUENCE { a INTEGER OPTIONAL, b INTEGER }",
     "M.asn1:2: a may be absent and begins with the same tag as b, give one a context tag, or write '--@ inorder' "
     "where the standard has it so"),
    ("optional element like one behind another", "A ::= SEQUENCE { a INTEGER OPTIONAL, b BOOLEAN OPTIONAL, c INTEGER }",
     "M.asn1:2: a may be absent and begins with the same tag as c, give one a context tag, or write '--@ inorder' "
     "where the standard has it so"),
    ("structure inside a structure", "A ::= SEQUENCE { a SEQUENCE { b INTEGER } }",
     "M.asn1:2: a structure inside another needs a name: define it as a type of its own"),
    ("type that embeds itself", "A ::= SEQUENCE { b B OPTIONAL }\nB ::= SEQUENCE { a A }",
     "M.asn1:2: A embeds itself: A in B"),
    ("items missing", "A ::= ENUMERATED { }", "M.asn1:2: an ENUMERATED without items needs '--@ bound N'"),
    ("default that is no number", "A ::= SEQUENCE { a INTEGER DEFAULT v9 }", "M.asn1:2: DEFAULT v9 is no number of the type"),
    ("class without type", "K ::= CLASS { &id OBJECT IDENTIFIER }",
     "M.asn1:2: class K has no type field, it needs one such as '&Type'"),
    ("unknown class", "A ::= SEQUENCE { a K.&Type }", "M.asn1:2: class K is not defined"),
    ("unknown field", "K ::= CLASS { &Type }\nA ::= SEQUENCE { a K.&Other }",
     "M.asn1:3: class K has no field &Other, its type field is &Type"),
    ("unknown set", "K ::= CLASS { &Type }\nA ::= SEQUENCE { i OBJECT IDENTIFIER, a K.&Type ({S}{@i}) }",
     "M.asn1:3: object set S is not defined"),
    ("set of another class",
     "K ::= CLASS { &Type }\nL ::= CLASS { &Type }\nS L ::= { ... }\n"
     "A ::= SEQUENCE { i OBJECT IDENTIFIER, a K.&Type ({S}{@i}) }",
     "M.asn1:5: object set S is of class L, not K"),
    ("identifier missing", "K ::= CLASS { &Type }\nS K ::= { ... }\nA ::= SEQUENCE { a K.&Type ({S}{@i}) }",
     "M.asn1:4: the identifier i does not stand in front of a"),
    ("identifier of another type",
     "K ::= CLASS { &Type }\nS K ::= { ... }\nA ::= SEQUENCE { i INTEGER, a K.&Type ({S}{@i}) }",
     "M.asn1:4: i decides a type, so it must be an OBJECT IDENTIFIER"),
    ("wrapper without member",
     "K ::= CLASS { &Type }\nS K ::= { ... }\n"
     "A ::= SEQUENCE { i OBJECT IDENTIFIER, a OCTET STRING (CONTAINING K.&Type ({S}{@i})) }",
     "M.asn1:4: a wraps a value, name the member for it with '--@ member NAME'"),
    ("table over a sequence",
     "K ::= CLASS { &Type }\nS K ::= { ... }\nA ::= SEQUENCE OF K.&Type\n"
     "B ::= SEQUENCE { i OBJECT IDENTIFIER,\n--@ table S i\na A }",
     "M.asn1:7: '--@ table' needs a SET OF without a size"),
    ("object of an unknown class", "o K ::= { &id { 1 2 } }", "M.asn1:2: class K is not defined"),
    ("object without type", "K ::= CLASS { &Type, &id OBJECT IDENTIFIER }\no K ::= { &id { 1 2 } }",
     "M.asn1:3: object o needs a &Type, which its class does not make OPTIONAL"),
    ("object with an unknown type", "K ::= CLASS { &Type, &id OBJECT IDENTIFIER }\no K ::= { &Type Z, &id { 1 2 } }",
     "M.asn1:3: object o carries Z, which is not defined and the catalogue does not list it: is the name right?"),
    ("object with a type not written yet",
     "K ::= CLASS { &Type, &id OBJECT IDENTIFIER }\no K ::= { &Type Later, &id { 1 2 } }\nS K ::= { o }",
     "M.asn1:3: object o carries Later, which is not defined, though the catalogue lists it: write it before it is "
     "used"),
    ("unknown arc", "K ::= CLASS { &Type OPTIONAL, &id OBJECT IDENTIFIER }\no K ::= { &id { iso 2 } }",
     "M.asn1:3: object identifier iso is not defined, write 'name(number)' or define it"),
    ("unknown arc of a value", "o OBJECT IDENTIFIER ::= { iso 2 }",
     "M.asn1:2: object identifier iso is not defined, write 'name(number)' or define it"),
    ("set of an unknown class", "S K ::= { ... }", "M.asn1:2: class K is not defined"),
    ("unknown member", "K ::= CLASS { &Type }\nS K ::= { o }", "M.asn1:3: set S names object o, which is not defined"),
    ("member of another class",
     "K ::= CLASS { &Type OPTIONAL, &id OBJECT IDENTIFIER }\nL ::= CLASS { &Type }\no K ::= { &id { 1 2 } }\nS L ::= { o }",
     "M.asn1:5: set S is of class L, o of K"),
    ("member without identifier", "K ::= CLASS { &Type OPTIONAL }\no K ::= { }\nS K ::= { o }",
     "M.asn1:4: object o has no identifier, so that set S could never find it"),
    ("members with one identifier",
     "K ::= CLASS { &Type OPTIONAL, &id OBJECT IDENTIFIER }\no K ::= { &id { 1 2 } }\np K ::= { &id { 1 2 } }\nS K ::= { o | p }",
     "M.asn1:5: p has the identifier of o, set S would never find it"),
]


class Checks(unittest.TestCase):
    def test_a_right_module_passes(self):
        run("A ::= SEQUENCE { a INTEGER, b [0] B OPTIONAL }\nB ::= CHOICE { b INTEGER }")

    def test_each_violation_has_its_message(self):
        for what, body, message in CASES:
            with self.subTest(what):
                with self.assertRaises(ModuleError) as caught:
                    run(body)
                self.assertEqual(str(caught.exception), message)

    def test_the_default_tagging_must_be_told(self):
        with self.assertRaises(ModuleError) as caught:
            run("A ::= INTEGER", head="M DEFINITIONS AUTOMATIC TAGS ::= BEGIN\n")
        self.assertEqual(str(caught.exception), "M.asn1:1: expected IMPLICIT or EXPLICIT, found 'AUTOMATIC'")

    def test_a_module_must_be_listed(self):
        with self.assertRaises(ModuleError) as caught:
            run("A ::= INTEGER", listed="Other:\n    A\n")
        self.assertEqual(str(caught.exception), "M.asn1:1: module M is not in the catalogue, add it there")

    def test_the_catalogue_names_modules(self):
        for text, message in (
            ("M\n", "catalogue.txt:1: expected the name of a module and ':', found 'M'"),
            ("    A\n", "catalogue.txt:1: types in front of the first module"),
        ):
            with self.subTest(text):
                with self.assertRaises(ModuleError) as caught:
                    catalogue.parse(text, "catalogue.txt")
                self.assertEqual(str(caught.exception), message)


if __name__ == "__main__":
    unittest.main()

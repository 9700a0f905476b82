"""The whole text of a small module beside what is expected, so that a changed template shows as a diff.

To take over a change that is meant: python3 tests/typegen/expected_text_test.py --update
"""

import sys
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent.parent / "tools"))

from typegen import catalogue, checks, emit_description, output, parser  # noqa: E402
from typegen.model import Catalogue  # noqa: E402

EXPECTED = HERE / "expected"


def generate() -> dict[str, str]:
    expected = catalogue.read(HERE / "modules" / "shape_catalogue.txt")
    module = parser.parse_file(HERE / "modules" / "Shape.asn1", "Shape.asn1")
    found = Catalogue(catalogue.in_order([module], expected), expected)
    checks.check(found)
    return output.generate(found) | {"described_types.cpp": emit_description.description(found)}


class ExpectedText(unittest.TestCase):
    maxDiff = None

    def test_shape_comes_out_as_expected(self):
        generated = generate()
        self.assertEqual(sorted(generated), sorted(path.name for path in EXPECTED.iterdir()))
        for name, text in generated.items():
            with self.subTest(file=name):
                self.assertEqual(text, (EXPECTED / name).read_text(encoding="utf-8"))

    def test_same_input_gives_same_text(self):
        self.assertEqual(generate(), generate())


if __name__ == "__main__":
    if sys.argv[1:] == ["--update"]:
        output.write_all(generate(), EXPECTED)
    else:
        unittest.main()

"""How files are written, and how lines are laid out."""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent.parent / "tools"))

from typegen import output, template  # noqa: E402


class WriteAll(unittest.TestCase):
    def test_leaves_an_unchanged_file_alone(self):
        with tempfile.TemporaryDirectory() as directory:
            place = Path(directory) / "new"
            self.assertEqual(output.write_all({"a.h": "one", "b.h": "two"}, place), ["a.h", "b.h"])
            before = (place / "a.h").stat().st_mtime_ns
            self.assertEqual(output.write_all({"a.h": "one", "b.h": "changed"}, place), ["b.h"])
            self.assertEqual((place / "a.h").stat().st_mtime_ns, before)


class Fill(unittest.TestCase):
    def test_takes_the_indentation_of_its_line(self):
        self.assertEqual(template.fill("\n    {\n        $body\n    }\n", body="a;\nb;"), "{\n    a;\n    b;\n}")

    def test_drops_the_line_of_an_empty_hole(self):
        self.assertEqual(template.fill("a\n$nothing\nb", nothing=""), "a\nb")

    def test_refuses_a_hole_without_value(self):
        with self.assertRaises(KeyError):
            template.fill("$missing")


class Layout(unittest.TestCase):
    def test_keeps_what_fits(self):
        self.assertEqual(template.layout("x" * 110), "x" * 110)

    def test_breaks_behind_a_comma_below_the_parenthesis(self):
        line = "    return function(" + "a" * 50 + ", " + "b" * 50 + ");"
        self.assertEqual(template.layout(line), "    return function(" + "a" * 50 + ",\n" + " " * 20 + "b" * 50 + ");")

    def test_breaks_behind_an_operator_of_a_condition(self):
        line = "if (" + "a" * 60 + " && " + "b" * 60 + ") {"
        self.assertEqual(template.layout(line), "if (" + "a" * 60 + " &&\n    " + "b" * 60 + ") {")

    def test_does_not_break_a_string(self):
        line = 'call("' + "a, " * 40 + '");'
        self.assertEqual(template.layout(line), line)


if __name__ == "__main__":
    unittest.main()

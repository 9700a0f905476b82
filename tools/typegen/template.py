"""Blocks of C++ with named holes (`$name`, or `${name}` in front of a letter), and the layout of long lines."""

from __future__ import annotations

import re
import textwrap

WIDTH = 110
_HOLE = re.compile(r"\$(?:([a-z_]+)|\{([a-z_]+)\})")


def fill(block: str, **holes: str) -> str:
    """The block with its holes filled. A line that is only a hole takes the indentation of that line for the
    whole filling and goes away with an empty one. A hole without a filling is an error."""
    lines = []
    for line in textwrap.dedent(block).strip("\n").split("\n"):
        alone = re.fullmatch(r"(\s*)\$([a-z_]+)", line)
        if alone is None:
            lines.append(_HOLE.sub(lambda match: holes[match.group(1) or match.group(2)], line).rstrip())
            continue
        filling = holes[alone.group(2)]
        if filling:
            lines.append(textwrap.indent(filling, alone.group(1)))
    return "\n".join(lines)


def signature(name: str, parameters: list[str], initializers: str = "") -> str:
    """The head of a definition up to its brace, on as few lines as it takes; `initializers` are those of a
    constructor."""
    head = f"{name}({', '.join(parameters)})"
    tail = f" : {initializers}" if initializers else ""
    if len(head + tail) + 4 <= WIDTH:
        return head + tail
    if len(head) + 2 > WIDTH:
        below = (",\n" + " " * (len(name) + 1)).join(parameters)
        fits = all(len(name) + len(one) + 4 <= WIDTH for one in parameters)
        head = f"{name}({below})" if fits else f"{name}(\n    " + ", ".join(parameters) + ")"
    return f"{head}\n    : {initializers}" if initializers else head


def layout(text: str) -> str:
    """Breaks lines that are too long as clang-format would: behind a comma or an operator at the outermost
    place that fits, the rest below the open parenthesis; or behind an assignment where that reads better."""
    return "\n".join(piece for line in text.split("\n") for piece in _broken(line))


def _broken(line: str) -> list[str]:
    if len(line) <= WIDTH or line.lstrip().startswith("//") or line.startswith("#"):
        return [line]
    indent = len(line) - len(line.lstrip())
    candidates = [_at_commas(line, indent, [])]
    equals = line.find(" = ")
    if equals > 0:
        head, rest = line[: equals + 2], line[equals + 3 :]
        candidates.append([head] + _at_commas(" " * (indent + 4) + rest, indent, []))
    return min(candidates, key=lambda lines: (sum(len(one) > WIDTH for one in lines), len(lines), _raggedness(lines)))


def _raggedness(lines: list[str]) -> int:
    return max(len(one) - len(one.lstrip()) for one in lines)


def _at_commas(line: str, indent: int, open_columns: list[int]) -> list[str]:
    """Breaks `line`, which begins inside the parentheses that `open_columns` tells, as often as it takes."""
    if len(line) <= WIDTH:
        return [line]
    best: tuple[int, int] | None = None
    best_columns: list[int] = []
    columns = list(open_columns)
    quoted = False
    start = len(line) - len(line.lstrip())
    for column, character in enumerate(line):
        if column > WIDTH and best is not None:
            break
        if character == '"':
            quoted = not quoted
        if quoted:
            continue
        if character in "({":
            columns.append(column + 1)
        elif character in ")}" and columns:
            columns.pop()
        may_break = character == " " and column > start and line[:column].endswith((",", " &&", " ||"))
        if may_break and (best is None or len(columns) <= best[0]):
            best = (len(columns), column)
            best_columns = list(columns)
    if best is None:
        return [line]
    head, rest = line[: best[1]], line[best[1] + 1 :]
    margin = best_columns[-1] if best_columns else indent + 4
    return [head] + _at_commas(" " * margin + rest, indent, best_columns)

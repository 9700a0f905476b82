"""Writes records.h: every record, each behind those that it embeds."""

from __future__ import annotations

from . import model, names, values
from .plan import Field, Plan
from .template import fill, layout

_HEADER = """
    #pragma once

    // The records of the ASN.1 types. Made by tools/typegen from the modules of asn1data/modules.
    //
    // A record owns nothing but a reference to a context, and only when `mpContext` is set does its destructor
    // free what its pointers hold. `m` tells which OPTIONAL elements are there.

    #include <cstdint>

    #include "runtime/context.h"
    #include "runtime/list.h"
    #include "runtime/object_id.h"
    #include "runtime/value_types.h"

    namespace asn1data {

    $defaults
    $forwards

    $records

    }  // namespace asn1data
"""

_SEQUENCE = """
    $remark
    struct $record : ASN1TPDU {
        $presence
        $fields

        $record();
        $members
    };
"""

_CHOICE = """
    enum : uint32_t {
        $selectors
    };

    $remark
    struct $record : ASN1TPDU {
        uint32_t t = 0;  ///< a `T_$type` selector, 0 for none
        $union

        $record() {}
        $members
    };
"""

_LIST = """
    $remark
    struct $record : ASN1TPDUSeqOfList {
        $record() {}
        $members
    };
"""

_PLAIN = """
    $remark
    struct $record : ASN1TPDU {
        $fields

        $record() {}
        $members
    };
"""

_MEMBERS = """
    explicit $record($control& source);
    $record(const $record&) = delete;
    $record& operator=(const $record&) = default;
    $destructor
"""


def records_header(plans: list[Plan]) -> str:
    ordered = in_dependency_order(plans)
    forwards = [f"struct {plan.record};\nclass {names.control(plan.name)};" for plan in plans if _is_struct(plan)]
    text = fill(
        _HEADER, defaults="\n".join(_default_texts(plans)), forwards="\n".join(forwards),
        records="\n\n".join(_definition(plan) for plan in ordered if plan.construct != "null"),
    )
    return layout(text) + "\n"


def default_constant(text: str) -> str:
    return f"kDefault_{text}"


def _default_texts(plans: list[Plan]) -> list[str]:
    texts = {field.default.value for plan in plans for field in plan.fields if field.default and field.default.text}
    return [f'inline constexpr char {default_constant(text)}[] = "{text}";' for text in sorted(texts)]


def _is_struct(plan: Plan) -> bool:
    return plan.is_record and plan.construct != "alias"


def in_dependency_order(plans: list[Plan]) -> list[Plan]:
    """Each type behind those whose records it embeds or renames; otherwise in the order of the modules."""
    by_name = {plan.name: plan for plan in plans}
    ordered: list[Plan] = []
    placed: set[str] = set()

    def place(plan: Plan, path: tuple[str, ...]) -> None:
        if plan.name in placed:
            return
        if plan.name in path:
            raise model.ModuleError(plan.assignment.position, f"{plan.name} embeds itself: {' in '.join(path)}")
        for name in _embedded(plan):
            place(by_name[name], path + (plan.name,))
        placed.add(plan.name)
        ordered.append(plan)

    for plan in plans:
        place(plan, ())
    return ordered


def _embedded(plan: Plan) -> list[str]:
    if plan.construct == "alias":
        return [plan.base]
    families = [
        (field, field.value.name) for field in plan.fields if isinstance(field.value, values.Family) and field.value.cpp
    ]
    if plan.construct == "choice":
        # A pointer to a record needs no more than its forward declaration; the name of a value must be there.
        return [name for field, name in families if not field.value.is_record]
    if plan.construct in ("sequence", "set"):
        return [name for _, name in families]
    if plan.construct == "array" and isinstance(plan.value, values.Family):
        return [plan.value.name]
    return []


def remark_lines(plan: Plan) -> list[str]:
    """The remark over the definition in the module."""
    lines = []
    for line in plan.assignment.text:
        if not line.startswith("--"):
            break
        lines.append(line[2:].strip())
    return lines


def _remark(plan: Plan) -> str:
    lines = remark_lines(plan) or [f"{plan.name} of {plan.module.name}"]
    return "\n".join("/// " + line for line in lines)


def _definition(plan: Plan) -> str:
    if plan.construct in ("sequence", "set"):
        return _sequence(plan)
    if plan.construct == "choice":
        return _choice(plan)
    if plan.construct == "list":
        return fill(_LIST, remark=_remark(plan), record=plan.record, members=_members(plan))
    if plan.construct == "array":
        fields = f"uint32_t n = 0;\n{plan.value.cpp}* elem = nullptr;"
        return fill(_PLAIN, remark=_remark(plan), record=plan.record, fields=fields, members=_members(plan))
    if plan.construct == "sized":
        fields = "\n".join(plan.value.fields())
        return fill(_PLAIN, remark=_remark(plan), record=plan.record, fields=fields, members=_members(plan))
    if plan.construct == "alias":
        return f"{_remark(plan)}\ntypedef {names.record(plan.base)} {plan.record};"
    return f"{_remark(plan)}\ntypedef {plan.value.cpp} {plan.record};"


def _members(plan: Plan) -> str:
    return fill(
        _MEMBERS, record=plan.record, control=names.control(plan.name),
        destructor=f"~{plan.record}();" if plan.frees else "",
    )


def _sequence(plan: Plan) -> str:
    bits = [field.present for field in plan.fields if field.present]
    presence = ""
    if bits:
        members = "\n".join(f"    unsigned {bit} : 1;" for bit in bits)
        presence = f"struct {{\n{members}\n}} m;"
    fields = [text for field in plan.fields if (text := _declaration(field))]
    if plan.extension:
        fields.append(f"ASN1TSeqOfList {plan.extension}{{}};  ///< elements behind the extension marker")
    return fill(
        _SEQUENCE, remark=_remark(plan), record=plan.record, presence=presence, fields="\n".join(fields),
        members=_members(plan),
    )


def _declaration(field: Field) -> str:
    value = field.value
    if isinstance(value, values.SizedString):
        inner = "\n".join("    " + line for line in value.fields())
        return f"struct {{\n{inner}\n}} {field.name};"
    if not value.cpp:
        return ""
    initializer = value.initializer
    if field.default and field.default.text:
        initializer = f" = {default_constant(field.default.value)}"
    elif field.default and not field.default.kept:
        initializer = f" = {field.default.value}"
    text = f"{value.cpp} {field.name}{initializer};"
    if field.member:
        text += f"\nAsn1TObject {field.member};  ///< the value inside {field.name}"
    return text


def _choice(plan: Plan) -> str:
    first, *rest = plan.fields
    selectors = [f"{first.selector} = 1,"] + [f"{field.selector}," for field in rest]
    selectors[-1] = selectors[-1].rstrip(",")
    members = [text for field in plan.fields if (text := _alternative(field))]
    union = "union {\n" + "\n".join("    " + text for text in members) + "\n} u{};" if members else ""
    return fill(
        _CHOICE, selectors="\n".join(selectors), remark=_remark(plan), record=plan.record,
        type=names.identifier(plan.name), union=union, members=_members(plan),
    )


def _alternative(field: Field) -> str:
    if not field.value.cpp:
        return ""
    return f"{field.value.cpp}{'*' if field.indirect else ''} {field.name};"

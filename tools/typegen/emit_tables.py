"""Writes what a record does with the value whose type its identifier tells."""

from __future__ import annotations

from . import names
from .plan import Plan, Table
from .template import fill

_STEP = """
    int $function(ASN1CTXT* ctxt, $record* pvalue) {
        $body
    }
"""


def operation(table: Table, verb: str) -> str:
    """The virtual operation of the object class: `encodeBERType`, `copyExtnType` ..."""
    prefix = {"encode": "encodeBER", "decode": "decodeBER", "copy": "copy", "free": "free"}[verb]
    return f"&{names.identifier(table.object_class)}::{prefix}{table.type_field}"


def _lookup(table: Table, record: str) -> str:
    return f"{names.identifier(table.object_set)}::instance(ctxt)->lookupObject({record}->{table.identifier})"


def _carried(table: Table, verb: str, *records: str) -> str:
    """A call of `encode_carried` and its like on the open field of the records."""
    function = f"{verb}_carried{'_list' if table.shape == 'list' else ''}"
    places = ", ".join(f"{record}->{table.member}" for record in records)
    return f"{function}(ctxt, {_lookup(table, records[0])}, {operation(table, verb)}, {places})"


def table_steps(plan: Plan) -> str:
    if plan.table is None:
        return ""
    steps = [
        fill(_STEP, function=names.function(role, plan.name), record=plan.record, body=body)
        for role, body in (("ETC", _encode_step(plan.table)), ("DTC", _decode_step(plan.table)))
    ]
    return "\n\n".join(steps)


def _leave_if(condition: str) -> str:
    return f"if ({condition}) {{\n    return RT_OK;\n}}\n"


def _encode_step(table: Table) -> str:
    conditions = []
    if table.optional:
        conditions.append(f"!pvalue->m.{names.presence_bit(table.field)}")
    if table.shape == "wrapped":
        conditions.append(f"pvalue->{table.member}.decoded == nullptr")
    guard = _leave_if(" || ".join(conditions)) if conditions else ""
    call = _carried(table, "encode", "pvalue")
    if table.shape != "wrapped":
        return f"{guard}return {call};"
    return (
        f"{guard}const int status = {call};\nif (status == RT_OK) {{\n"
        f"    take_contents(pvalue->{table.member}, pvalue->{table.field});\n}}\nreturn status;"
    )


def _decode_step(table: Table) -> str:
    guard = _leave_if(f"!pvalue->m.{names.presence_bit(table.field)}") if table.optional else ""
    view = f"view_contents(pvalue->{table.field}, pvalue->{table.member});\n" if table.shape == "wrapped" else ""
    return f"{guard}{view}return {_carried(table, 'decode', 'pvalue')};"


def encode_open(plan: Plan, tagging: str) -> str:
    """Writes the open field: the carried record where the identifier is known, the octets otherwise."""
    table = plan.table
    function = {"open": "encode_open", "wrapped": "encode_wrapped", "list": "encode_open_set"}[table.shape]
    arguments = ["ctxt", _lookup(table, "pvalue"), operation(table, "encode"), f"pvalue->{table.field}"]
    if table.shape == "wrapped":
        arguments.append(f"pvalue->{table.member}")
    if table.shape != "open":
        arguments.append(tagging)
    return f"{function}({', '.join(arguments)})"


def after_decoding(plan: Plan, finish: str) -> str:
    function = names.function("DTC", plan.name)
    return (
        f"if ({finish} != RT_OK) {{\n    return in.status();\n}}\n"
        f"const BufferSnapshot message(ctxt);\nreturn {function}(ctxt, pvalue);"
    )


def free_open(plan: Plan, free: str) -> str:
    """Frees the open field, whose octets `free` frees. A wrapped record goes with the context."""
    table = plan.table
    if table.shape == "wrapped":
        return f"{free}\npvalue->{table.member}.data = nullptr;"
    return f"{_carried(table, 'free', 'pvalue')};\n{free}"


def copy_open(plan: Plan, copy: str) -> str:
    """Copies the open field, whose octets `copy` copies."""
    table = plan.table
    carried = _carried(table, "copy", "src", "dst") + ";"
    if table.shape == "list":
        return f"{copy}\n{carried}"
    if table.shape == "wrapped":
        view = f"copy_value(ctxt, src->{table.member}, dst->{table.member});"
        return f"{carried}\n{view}\n{copy}"
    return f"{carried}\n{copy}"

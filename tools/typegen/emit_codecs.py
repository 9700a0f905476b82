"""Writes the source of a module: for each type encoder, decoder, free and copy."""

from __future__ import annotations

from . import emit_control, emit_tables, names, values
from .emit_records import default_constant
from .model import Module, ModuleError
from .plan import Field, Plan
from .template import fill, layout, signature

_SOURCE = """
    // Made by tools/typegen from asn1data/modules/$file.

    #include "asn1data/codecs.h"
    #include "asn1data/control_classes.h"
    $objects_include
    #include "runtime/detail/codec_support.h"

    namespace asn1data {

    using namespace Quillmark::detail;

    $families

    $objects

    }  // namespace asn1data
"""

_FAMILY = """
    $schema

    $elements

    $tables

    $encoder

    $decoder

    $free

    $copy

    $record_members

    $control
"""

def module_source(module: Module, plans: list[Plan], objects: str) -> str:
    """`objects` are the information objects of the module."""
    needs_objects = objects or any(plan.table for plan in plans)
    text = fill(
        _SOURCE, file=module.file, families="\n\n".join(_family(plan) for plan in plans),
        objects_include='#include "asn1data/information_objects.h"' if needs_objects else "", objects=objects,
    )
    return _without_blank_runs(layout(text)) + "\n"


def _without_blank_runs(text: str) -> str:
    lines: list[str] = []
    for line in text.split("\n"):
        if line or (lines and lines[-1]):
            lines.append(line)
    return "\n".join(lines)


def _family(plan: Plan) -> str:
    return fill(
        _FAMILY, schema="\n".join(_schema_line(line) for line in plan.assignment.text),
        elements=_element_functions(plan), tables=emit_tables.table_steps(plan), encoder=_encoder(plan),
        decoder=_decoder(plan), free=_free(plan), copy=_copy(plan), record_members=_record_members(plan),
        control=emit_control.control_members(plan),
    )


def _schema_line(line: str) -> str:
    return ("// " + line.removeprefix("-- ")).rstrip()


def _function(signature: str, body: str) -> str:
    return signature + " {\n" + _indent(body) + "\n}" if body else signature + " {}"


def _indent(text: str) -> str:
    return "\n".join("    " + line if line else line for line in text.split("\n"))


def _block(condition: str, body: str) -> str:
    return f"if ({condition}) {{\n{_indent(body)}\n}}"


# Encoders


def _encoder(plan: Plan) -> str:
    body = {
        "alias": _encode_alias, "null": _encode_value, "value": _encode_value, "sized": _encode_value,
        "sequence": _encode_structure, "set": _encode_structure, "choice": _encode_choice, "list": _encode_list,
        "array": _encode_list,
    }[plan.construct](plan)
    unused_tagging = plan.construct == "choice" or isinstance(plan.value, values.Open) and plan.construct == "value"
    parameter = "ASN1TagType /*tagging*/" if unused_tagging else "ASN1TagType tagging"
    place = "void* /*pvalue*/" if plan.construct == "null" else f"{plan.record}* pvalue"
    return _function(f"int {names.function('E', plan.name)}(ASN1CTXT* ctxt, {place}, {parameter})", body)


def _encode_alias(plan: Plan) -> str:
    return f"return {names.function('E', plan.base)}(ctxt, pvalue, tagging);"


def _encode_value(plan: Plan) -> str:
    check = plan.value.check("*pvalue")
    if isinstance(plan.value, values.SizedString) and check is None:
        check = plan.value.room_check("*pvalue")
    write = f"return recorded(ctxt, {plan.value.encode('*pvalue', 'tagging')});"
    if isinstance(plan.value, values.EnumeratedValue):
        write = f"return {plan.value.encode('*pvalue', 'tagging')};"
    return _early_check(check) + write


def _early_check(check: values.Check | None) -> str:
    if check is None:
        return ""
    call = _free_check(check)
    return f"if ({call} != RT_OK) {{\n    return RT_E_CONSVIO;\n}}\n"


def _free_check(check: values.Check) -> str:
    """The check as a function of the context."""
    return check.call("").replace("(", "(ctxt, ", 1)


def _encode_structure(plan: Plan) -> str:
    steps = ["ContentEncoder out(ctxt);"]
    if plan.extension:
        steps.append(f"out.add(xe_OpenTypeExt(ctxt, &pvalue->{plan.extension}));")
    for index, field in enumerate(reversed(plan.fields)):
        steps.append(_encode_field(field, plan, first=index == 0 and not plan.extension))
    steps.append(f"return out.finish({'kSet' if plan.construct == 'set' else 'kSequence'}, tagging);")
    return "\n".join(steps)


def _encode_field(field: Field, plan: Plan, first: bool) -> str:
    lvalue = f"pvalue->{field.name}"
    conditions = [] if first else ["out.good()"]
    if field.present:
        conditions.append(f"pvalue->m.{field.present}")
    elif field.default and field.default.text:
        conditions.append(f"differs(ctxt, {lvalue}, {default_constant(field.default.value)})")
    elif field.default:
        conditions.append(f"{lvalue} != {field.default.value}")
    check = field.value.check(lvalue)
    if isinstance(field.value, values.SizedString) and check is None:
        check = field.value.room_check(lvalue)
    if check:
        conditions.append(check.call("out."))
    write = _add(field, lvalue, plan)
    return _block(" && ".join(conditions), write) if conditions else write


def _add(field: Field, lvalue: str, plan: Plan) -> str:
    """Writes an element or alternative with its tag."""
    tagging = "ASN1EXPL" if field.tag is None or field.tag.explicit else "ASN1IMPL"
    inner = field.value.encode(lvalue, tagging)
    if plan.table and plan.table.field == field.name:
        inner = emit_tables.encode_open(plan, tagging)
    if field.tag is None:
        return f"out.add({inner});"
    if field.own_tag:
        return f"out.add(encode_retagged(ctxt, {lvalue}, {field.own_tag}, {field.tag.cpp}));"
    return f"out.add_tagged({field.tag.cpp}, {inner});"


def _encode_choice(plan: Plan) -> str:
    cases = []
    for field in plan.fields:
        lvalue = _alternative_place(field)
        check = field.value.check(lvalue)
        body = _add(field, lvalue, plan)
        if field.indirect:
            body = _block(f"out.given(pvalue->u.{field.name})", body)
        elif check:
            body = _block(check.call("out."), body)
        cases.append(f"case {field.selector}:\n{_indent(body)}\n    break;")
    cases.append("default:\n    out.add(RT_E_INVOPT);\n    break;")
    tail = "return out.result();"
    if plan.outer_tag:
        tail = f"return out.finish({plan.outer_tag.cpp}, ASN1EXPL);"
    return "ContentEncoder out(ctxt);\nswitch (pvalue->t) {\n" + _indent("\n".join(cases)) + "\n}\n" + tail


def _alternative_place(field: Field) -> str:
    return f"*pvalue->u.{field.name}" if field.indirect else f"pvalue->u.{field.name}"


def _encode_list(plan: Plan) -> str:
    check = ""
    if plan.size:
        check = _early_check(plan.size)
    function = f"encode_{'sorted_' if plan.sorted else ''}{plan.construct}"
    tag = "kSet" if plan.universal == "SET" else "kSequence"
    return check + f"return {function}(ctxt, *pvalue, {_element_function(plan, 'encode', 'E')}, {tag}, tagging);"


# Decoders


def _decoder(plan: Plan) -> str:
    body = {
        "alias": _decode_alias, "null": _decode_value, "value": _decode_value, "sized": _decode_value,
        "sequence": _decode_sequence, "set": _decode_set, "choice": _decode_choice, "list": _decode_list,
        "array": _decode_list,
    }[plan.construct](plan)
    tagging, length = "ASN1TagType tagging", "int length"
    if plan.construct == "choice" or isinstance(plan.value, values.Open) and plan.construct == "value":
        tagging, length = "ASN1TagType /*tagging*/", "int /*length*/"
    if plan.nests:
        body = fill(_NESTING) + "\n" + body
    place = f"{plan.record}* pvalue"
    if plan.construct == "null":
        place, length = "void* /*pvalue*/", "int /*length*/"
    return _function(f"int {names.function('D', plan.name)}(ASN1CTXT* ctxt, {place}, {tagging}, {length})", body)


def _decode_alias(plan: Plan) -> str:
    return f"return {names.function('D', plan.base)}(ctxt, pvalue, tagging, length);"


def _decode_value(plan: Plan) -> str:
    read = plan.value.decode("*pvalue", "tagging", "length")
    check = plan.value.check("*pvalue")
    if isinstance(plan.value, values.EnumeratedValue):
        return f"return {read};"
    if check is None:
        return f"return recorded(ctxt, {read});"
    return _then_check(read, check)


def _then_check(read: str, check: values.Check, failure: str = "recorded(ctxt, status)") -> str:
    """Reads, and holds what was read against its constraint."""
    return (
        f"const int status = {read};\nif (status != RT_OK) {{\n    return {failure};\n}}\n"
        f"return {_free_check(check)};"
    )


_NESTING = """
    const NestingLevel level(ctxt);
    if (level.too_deep()) {
        return rtErrSetData(&ctxt->errInfo, RT_E_NOTSUPP);
    }
"""


def _decode_sequence(plan: Plan) -> str:
    steps = ["SequenceDecoder in(ctxt, kSequence, tagging, length);"]
    steps.extend(_absent(plan))
    steps.extend(_decode_field(field, plan) for field in plan.fields)
    if plan.extension:
        steps.append(
            _block("in.more()", f"in.taken(keep_unknown(ctxt, in, pvalue->{plan.extension}));")
        )
    required = sum(field.required for field in plan.fields)
    finish = f"in.finish{'_closed' if plan.closes else ''}({required})"
    if plan.table is None:
        steps.append(f"return {finish};")
    else:
        steps.append(emit_tables.after_decoding(plan, finish))
    return "\n".join(steps)


def _absent(plan: Plan) -> list[str]:
    """What a record holds when nothing of it came."""
    steps = []
    if any(field.present for field in plan.fields):
        steps.append("pvalue->m = {};")
    for field in plan.fields:
        if field.default and field.default.text:
            steps.append(f"pvalue->{field.name} = {default_constant(field.default.value)};")
        elif field.default and not field.default.kept:
            steps.append(f"pvalue->{field.name} = {field.default.value};")
    if plan.extension:
        steps.append(f"rtDListInit(&pvalue->{plan.extension});")
    return steps


def _decode_field(field: Field, plan: Plan) -> str:
    lvalue = f"pvalue->{field.name}"
    check = field.value.check(lvalue)
    if field.tag is None:
        condition = "in.more()"
        if field.peeked:
            condition += f" && in.next_is({', '.join(field.labels)})"
            verb = "taken"
        else:
            verb = "required" if field.required else "optional"
        outcome = [f"in.{verb}({field.value.decode(lvalue, 'ASN1EXPL', '0')})"]
    else:
        condition = f"in.tagged({field.tag.number})"
        outcome = [f"in.{'required' if field.required else 'taken'}({_decode_tagged(field, lvalue)})"]
        if plan.closes and not _reads_own_end(field):
            outcome.append("in.close()")
    if check:
        outcome.append(check.call("in."))
    if field.present or len(outcome) == 1:
        return _block(condition, _use(outcome, f"pvalue->m.{field.present}" if field.present else None))
    return _block(" && ".join([condition, *outcome[:-1]]), outcome[-1] + ";")


def _use(outcome: list[str], bit: str | None) -> str:
    """Steps that each need the one before; the last tells whether the element is there."""
    if bit is not None:
        return f"{bit} = {' && '.join(outcome)};"
    if len(outcome) == 1:
        return outcome[0] + ";"
    return _block(" && ".join(outcome[:-1]), outcome[-1] + ";")


def _decode_tagged(field: Field, lvalue: str) -> str:
    if field.own_tag:
        return f"in.keep_retagged({lvalue}, {field.own_tag})"
    if field.tag.explicit:
        return field.value.decode(lvalue, "ASN1EXPL", "0")
    return field.value.decode(lvalue, "ASN1IMPL", "in.length()")


def _reads_own_end(field: Field) -> bool:
    return not field.tag.explicit and field.value.reads_own_end


def _decode_set(plan: Plan) -> str:
    cases = []
    required = 0
    for index, field in enumerate(plan.fields):
        required |= field.required << index
        cases.append(_decode_member(index, field))
    cases.append("default:\n    in.fail(RT_E_NOTINSET);\n    break;")
    switch = "switch (tag) {\n" + _indent("\n".join(cases)) + "\n}"
    steps = ["SetDecoder in(ctxt, tagging, length);", *_absent(plan), "ASN1TAG tag = 0;"]
    steps.append("while (in.next(tag)) {\n" + _indent(switch) + "\n}")
    steps.append(f"return in.finish({required:#x});")
    return "\n".join(steps)


def _decode_member(index: int, field: Field) -> str:
    lvalue = f"pvalue->{field.name}"
    outcome = [f"in.first({index})", f"in.taken({_decode_behind_header(field, lvalue)})"]
    check = field.value.check(lvalue)
    if check:
        outcome.append(check.call("in."))
    return _case(field, _use(outcome, f"pvalue->m.{field.present}" if field.present else None))


def _case(field: Field, body: str) -> str:
    """A branch on the tag of an element whose header was read."""
    labels = "\n".join(f"case {label}:" for label in field.labels)
    rewind = "in.rewind();\n" if field.reads_header else ""
    return f"{labels}\n{_indent(rewind + body)}\n    break;"


def _decode_behind_header(field: Field, lvalue: str) -> str:
    if field.reads_header:
        return field.value.decode(lvalue, "ASN1EXPL", "0")
    if field.tag is not None:
        return _decode_tagged(field, lvalue)
    return field.value.decode(lvalue, "ASN1IMPL", "in.length()")


def _decode_choice(plan: Plan) -> str:
    steps = ["pvalue->t = 0;"]
    if plan.outer_tag:
        steps.append(
            "int length = 0;\n"
            f"const int status = xd_match1(ctxt, identifier_octet({plan.outer_tag.cpp}), &length);\n"
            "if (status != RT_OK) {\n    return recorded(ctxt, status);\n}"
        )
    cases = [_decode_alternative(field, plan) for field in plan.fields]
    cases.append("default:\n    return in.unknown();")
    steps.append("ChoiceDecoder in(ctxt);\nswitch (in.tag()) {\n" + _indent("\n".join(cases)) + "\n}")
    steps.append("return in.status();")
    return "\n".join(steps)


def _decode_alternative(field: Field, plan: Plan) -> str:
    lvalue = _alternative_place(field)
    outcome = [f"in.allocate(pvalue->u.{field.name})"] if field.indirect else []
    outcome.append(f"in.taken({_decode_behind_header(field, lvalue)})")
    own_end = field.reads_header or field.value.reads_own_end and (field.tag is None or not field.tag.explicit)
    if plan.closes and not own_end:
        outcome.append("in.close()")
    check = field.value.check(lvalue)
    if check:
        outcome.append(check.call("in."))
    return _case(field, _block(" && ".join(outcome), f"pvalue->t = {field.selector};"))


def _decode_list(plan: Plan) -> str:
    tag = "kSet" if plan.universal == "SET" else "kSequence"
    read = (
        f"decode_{plan.construct}(ctxt, *pvalue, {_element_function(plan, 'decode', 'D')}, {tag}, tagging, length)"
    )
    if plan.size is None:
        return f"return {read};"
    # Lists and arrays have recorded of their failures what is to be recorded.
    return _then_check(read, plan.size, failure="status")


# Functions of list elements that have no family of their own


def _element_function(plan: Plan, verb: str, role: str) -> str:
    if isinstance(plan.value, values.Family):
        return names.function(role, plan.value.name)
    return f"{verb}_element_of_{names.identifier(plan.name)}"


def _element_functions(plan: Plan) -> str:
    if plan.construct not in ("list", "array") or isinstance(plan.value, values.Family):
        return ""
    value = plan.value
    if not value.cpp:
        raise ModuleError(plan.assignment.position, f"elements of {plan.name} need a type with a name")
    name = names.identifier(plan.name)
    check = value.check("*pvalue")
    if check:
        check = values.Check(check.subject, check.low, check.high, "pvalue->elem[xx1]")
    tagging = "ASN1TagType /*tagging*/" if isinstance(value, values.Open) else "ASN1TagType tagging"
    length = "int /*length*/" if isinstance(value, values.Open) else "int length"
    read = value.decode("*pvalue", "tagging", "length")
    decode = f"return {read};"
    if check:
        decode = _then_check(read, check)
    context = "ASN1CTXT* ctxt"
    place = f"{value.cpp}* pvalue"
    free = value.free("*pvalue")
    copy = value.copy("*src", "*dst")
    functions = [
        _function(
            f"int encode_element_of_{name}({context}, {place}, {tagging})",
            _early_check(check) + f"return {value.encode('*pvalue', 'tagging')};",
        ),
        _function(f"int decode_element_of_{name}({context}, {place}, {tagging}, {length})", decode),
        _function(f"void free_element_of_{name}({_used(context, free)}, {_used(place, free)})", free or ""),
        _function(
            f"void copy_element_of_{name}({_used(context, 'ctxt' in copy)}, {value.cpp}* src, {value.cpp}* dst)", copy
        ),
    ]
    return "namespace {\n\n" + "\n\n".join(functions) + "\n\n}  // namespace"


def _used(parameter: str, used: object) -> str:
    """A parameter, its name in a remark when the body does not need it."""
    if used:
        return parameter
    kind, _, name = parameter.rpartition(" ")
    return f"{kind} /*{name}*/"


# Free


def _free(plan: Plan) -> str:
    body = _free_body(plan)
    place = "void* pvalue" if plan.construct == "null" else f"{plan.record}* pvalue"
    return _function(
        f"void {names.function('Free', plan.name)}({_used('ASN1CTXT* ctxt', body)}, {_used(place, body)})", body
    )


def _free_body(plan: Plan) -> str:
    if not plan.frees:
        return ""
    if plan.construct == "alias":
        return f"{names.function('Free', plan.base)}(ctxt, pvalue);"
    if plan.construct in ("value", "sized", "null"):
        return plan.value.free("*pvalue") or ""
    if plan.construct in ("list", "array"):
        return f"free_{plan.construct}(ctxt, *pvalue, {_element_function(plan, 'free', 'Free')});"
    if plan.construct == "choice":
        return _free_choice(plan)
    steps = [_free_field(field, plan) for field in plan.fields]
    if plan.extension:
        steps.append(f"rtMemFreeOpenSeqExt(ctxt, &pvalue->{plan.extension});")
    return "\n".join(step for step in steps if step)


def _free_field(field: Field, plan: Plan) -> str:
    free = field.value.free(f"pvalue->{field.name}")
    if plan.table and plan.table.field == field.name:
        free = emit_tables.free_open(plan, free)
    elif free and field.default and field.default.text:
        free = f"free_text(ctxt, pvalue->{field.name}, {default_constant(field.default.value)});"
    if not free or not field.freed:
        return ""
    return _block(f"pvalue->m.{field.present}", free) if field.present else free


def _free_choice(plan: Plan) -> str:
    cases = []
    for field in plan.fields:
        place = f"pvalue->u.{field.name}"
        free = field.value.free(_alternative_place(field))
        if field.indirect:
            steps = [_block(f"{place} != nullptr", free)] if free else []
            cases.append((field, "\n".join([*steps, f"free_pointer(ctxt, {place});"])))
        elif free:
            cases.append((field, free))
    text = "\n".join(f"case {field.selector}:\n{_indent(body)}\n    break;" for field, body in cases)
    return "switch (pvalue->t) {\n" + _indent(text + "\ndefault:\n    break;") + "\n}"


# Copy


def _copy(plan: Plan) -> str:
    body = _copy_body(plan)
    kind = "void" if plan.construct == "null" else plan.record
    uses_context = "ctxt" in body
    return _function(
        f"void {names.function('Copy', plan.name)}({_used('ASN1CTXT* ctxt', uses_context)}, "
        f"{_used(f'{kind}* src', body)}, {_used(f'{kind}* dst', body)})", body,
    )


def _copy_body(plan: Plan) -> str:
    if plan.construct == "null":
        return ""
    if plan.construct == "alias":
        return f"{names.function('Copy', plan.base)}(ctxt, src, dst);"
    if plan.construct == "value":
        inner = plan.value.copy("*src", "*dst")
        return _block("src != dst", inner) if "ctxt" in inner else inner
    guard = "if (src == dst) {\n    return;\n}\n"
    if plan.construct == "sized":
        return guard + plan.value.copy("*src", "*dst")
    if plan.construct in ("list", "array"):
        return guard + f"copy_{plan.construct}(ctxt, *src, *dst, {_element_function(plan, 'copy', 'Copy')});"
    if plan.construct == "choice":
        return guard + _copy_choice(plan)
    steps = ["dst->m = src->m;"] if any(field.present for field in plan.fields) else []
    steps.extend(step for field in plan.fields if (step := _copy_field(field, plan)))
    if plan.extension:
        steps.append(f"copy_extensions(ctxt, src->{plan.extension}, dst->{plan.extension});")
    return guard + "\n".join(steps)


def _copy_field(field: Field, plan: Plan) -> str:
    copy = field.value.copy(f"src->{field.name}", f"dst->{field.name}")
    if plan.table and plan.table.field == field.name:
        copy = emit_tables.copy_open(plan, copy)
    return _block(f"src->m.{field.present}", copy) if field.present and copy else copy


def _copy_choice(plan: Plan) -> str:
    cases = []
    for field in plan.fields:
        source, target = f"src->u.{field.name}", f"dst->u.{field.name}"
        if field.indirect:
            copier = _alternative_copier(field)
            body = f"{target} = {copier};"
        else:
            body = field.value.copy(source, target)
        if body:
            cases.append(f"case {field.selector}:\n{_indent(body)}\n    break;")
    cases.append("default:\n    break;")
    return (
        "dst->t = 0;\nswitch (src->t) {\n" + _indent("\n".join(cases)) + "\n}\ndst->t = src->t;"
    )


def _alternative_copier(field: Field) -> str:
    if isinstance(field.value, values.Family):
        return f"copy_alternative(ctxt, src->u.{field.name}, {names.function('Copy', field.value.name)})"
    return f"copy_alternative(ctxt, src->u.{field.name})"


# Members of the record


def _record_members(plan: Plan) -> str:
    if plan.construct == "alias" or not plan.is_record:
        return ""
    record, control = plan.record, names.control(plan.name)
    head = signature(f"{record}::{record}", [f"{control}& source"], f"{record}()")
    members = [f"{head} {{\n    source.getCopy(this);\n}}"]
    if plan.construct in ("sequence", "set"):
        absent = "\n".join(f"m.{field.present} = 0;" for field in plan.fields if field.present)
        members.insert(0, _function(f"{record}::{record}()", absent))
    if plan.frees:
        release = _block("!mpContext.isNull()", f"{names.function('Free', plan.name)}(mpContext, this);")
        members.append(f"{record}::~{record}() {{\n{_indent(release)}\n}}")
    return "\n\n".join(members)

"""Writes the control classes: control_classes.h and, for a module's source, their members."""

from __future__ import annotations

from . import names
from .emit_records import remark_lines
from .plan import Plan
from .template import fill, layout, signature

_HEADER = """
    #pragma once

    // The control classes: each joins a record with a message buffer. Made by tools/typegen.

    #include "asn1data/records.h"
    #include "runtime/bit_string.h"
    #include "runtime/message_buffer.h"

    namespace asn1data {

    $classes

    }  // namespace asn1data
"""

_CLASS = """
    $remark
    class $control : public $base {
      public:
        explicit $control($record& data);
        $control(ASN1MessageBufferIF& buffer, $record& data);
        $control($control& other);

        int EncodeTo(ASN1MessageBufferIF& buffer) override;
        int DecodeFrom(ASN1MessageBufferIF& buffer) override;

        /// Copies the record to `dst` or, with null, to one on the heap of the context. The copy takes a
        /// reference to the context unless it has one. Throws `std::bad_alloc`.
        $record* getCopy($record* dst = nullptr);
        /// Copies the record to one made with `new`, owned by the caller.
        $record* newCopy();
        /// Copies the record of `other` into its own.
        $control& operator=($control& other);

      protected:
        $record& msgData;

      private:
        $control(ASN1Context& context, $record& data);
    };
"""

_NULL_CLASS = """
    $remark
    class $control : public ASN1CType {
      public:
        $control() {}
        /// A NULL has no record.
        $control(ASN1MessageBufferIF& buffer, void*) : ASN1CType(buffer) {}

        int EncodeTo(ASN1MessageBufferIF& buffer) override;
        int DecodeFrom(ASN1MessageBufferIF& buffer) override;
    };
"""

_ALIAS_CLASS = """
    $remark
    class $control : public $base {
      public:
        using $base::$base;
        using $base::operator=;
        $copy_constructor {}

        int EncodeTo(ASN1MessageBufferIF& buffer) override;
        int DecodeFrom(ASN1MessageBufferIF& buffer) override;
    };
"""

_MEMBERS = """
    $on_context {}

    $own_context {}

    $on_buffer {}

    $copy_constructor {
        mpMsgBuf = other.mpMsgBuf;
    }

    int $control::EncodeTo(ASN1MessageBufferIF& buffer) {
        return $encode(start_message(*this, buffer), &msgData, ASN1EXPL);
    }

    int $control::DecodeFrom(ASN1MessageBufferIF& buffer) {
        return $decode(start_message(*this, buffer), &msgData, ASN1EXPL, 0);
    }

    $get_copy {
        return copy_record(*mpContext, msgData, dst, $copy);
    }

    $record* $control::newCopy() {
        return new_copy(*mpContext, msgData, $copy);
    }

    $assignment {
        other.getCopy(&msgData);
        return *this;
    }
"""

_FORWARDS = """
    int $control::EncodeTo(ASN1MessageBufferIF& buffer) {
        return $encode(start_message(*this, buffer), $data, ASN1EXPL);
    }

    int $control::DecodeFrom(ASN1MessageBufferIF& buffer) {
        return $decode(start_message(*this, buffer), $data, ASN1EXPL, 0);
    }
"""


def control_header(plans: list[Plan]) -> str:
    return layout(fill(_HEADER, classes="\n\n".join(_class(plan) for plan in _bases_first(plans)))) + "\n"


def _bases_first(plans: list[Plan]) -> list[Plan]:
    """A class behind the one that it derives from."""
    by_name = {plan.name: plan for plan in plans}
    ordered: list[Plan] = []

    def place(plan: Plan) -> None:
        if plan in ordered:
            return
        if plan.construct == "alias":
            place(by_name[plan.base])
        ordered.append(plan)

    for plan in plans:
        place(plan)
    return ordered


def _class(plan: Plan) -> str:
    remark = "/// " + (" ".join(remark_lines(plan)) or plan.name)
    holes = {"remark": remark, "control": names.control(plan.name), "record": plan.record}
    if plan.construct == "null":
        return fill(_NULL_CLASS, **holes)
    if plan.construct == "alias":
        base = names.control(plan.base)
        head = signature(holes["control"], [f"{holes['control']}& other"], f"{base}(other)")
        return fill(_ALIAS_CLASS, base=base, copy_constructor=head, **holes)
    return fill(_CLASS, base="ASN1CBitStr" if plan.bit_control else "ASN1CType", **holes)


def control_members(plan: Plan) -> str:
    holes = {
        "control": names.control(plan.name), "encode": names.function("E", plan.name),
        "decode": names.function("D", plan.name),
    }
    if plan.construct == "null":
        return fill(_FORWARDS, data="nullptr", **holes)
    if plan.construct == "alias":
        return fill(_FORWARDS, data="nullptr" if plan.value.is_null else "&msgData", **holes)
    return fill(
        _MEMBERS, record=plan.record, copy=names.function("Copy", plan.name), **_heads(plan), **holes,
    )


def _heads(plan: Plan) -> dict[str, str]:
    """The heads of constructors and assignment."""
    control = names.control(plan.name)
    constructor = f"{control}::{control}"
    data = f"{plan.record}& data"
    base, arguments = ("ASN1CBitStr", ", data") if plan.bit_control else ("ASN1CType", "")
    if plan.construct == "sized" and plan.bit_control:
        arguments = f", data.data, data.numbits, {plan.value.capacity}"
    copy = f"copy_for_control(*other.mpContext, other.msgData, {names.function('Copy', plan.name)})"
    return {
        "on_context": signature(
            constructor, ["ASN1Context& context", data], f"{base}(context{arguments}), msgData(data)"
        ),
        "own_context": signature(constructor, [data], f"{control}(new_context(), data)"),
        "on_buffer": signature(
            constructor, ["ASN1MessageBufferIF& buffer", data], f"{base}(buffer{arguments}), msgData(data)"
        ),
        "copy_constructor": signature(constructor, [f"{control}& other"], f"{control}(*other.mpContext, {copy})"),
        "get_copy": signature(f"{plan.record}* {control}::getCopy", [f"{plan.record}* dst"]),
        "assignment": signature(f"{control}& {control}::operator=", [f"{control}& other"]),
    }

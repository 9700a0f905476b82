"""Writes codecs.h: the functions of every type."""

from __future__ import annotations

from . import names
from .plan import Plan
from .template import fill, layout

_HEADER = """
    #pragma once

    // The functions of the ASN.1 types. Made by tools/typegen.
    //
    // `asn1E_` encodes and returns the number of octets written or a negative status, `asn1D_` decodes and
    // returns 0 or a negative status; both record their failures in the context. With `ASN1EXPL` they handle
    // the tag of the type themselves, with `ASN1IMPL` the caller does and gives the length of the contents.
    // A record keeps what was decoded before a failure. `asn1Free_` gives back what a record holds on the heap
    // of the context, `asn1Copy_` copies it to that heap and throws `std::bad_alloc`. `asn1ETC_` and
    // `asn1DTC_` encode and decode the value that an identifier in the record tells the type of.

    #include "asn1data/records.h"
    #include "runtime/context.h"

    namespace asn1data {

    $functions

    }  // namespace asn1data
"""

_FUNCTIONS = """
    int $encode(ASN1CTXT* ctxt, $record* pvalue, ASN1TagType tagging);
    int $decode(ASN1CTXT* ctxt, $record* pvalue, ASN1TagType tagging, int length);
    void $free(ASN1CTXT* ctxt, $record* pvalue);
    void $copy(ASN1CTXT* ctxt, $record* src, $record* dst);
    $tables
"""

_TABLES = """
    int $encode(ASN1CTXT* ctxt, $record* pvalue);
    int $decode(ASN1CTXT* ctxt, $record* pvalue);
"""


def codecs_header(plans: list[Plan]) -> str:
    return layout(fill(_HEADER, functions="\n\n".join(_functions(plan) for plan in plans))) + "\n"


def _functions(plan: Plan) -> str:
    tables = ""
    if plan.table:
        tables = fill(
            _TABLES, encode=names.function("ETC", plan.name), decode=names.function("DTC", plan.name),
            record=plan.record,
        )
    return fill(
        _FUNCTIONS, record=plan.record, tables=tables,
        **{role.lower(): names.function(short, plan.name) for role, short in
           (("encode", "E"), ("decode", "D"), ("free", "Free"), ("copy", "Copy"))},
    )

#pragma once

// What the generated codecs share. A generated function goes down its type element by element and reads like
// the schema; the rules of the encoding that every type obeys are here.
//
//     SequenceDecoder in(ctxt, kSequence, tagging, length);
//     if (in.more()) {
//         in.required(xd_integer(ctxt, &pvalue->version, ASN1EXPL, 0));
//     }
//     if (in.tagged(0)) {
//         pvalue->m.namePresent = in.taken(asn1D_Name(ctxt, &pvalue->name, ASN1IMPL, in.length()));
//     }
//     return in.finish(1);

#include "runtime/detail/carried_value.h"
#include "runtime/detail/control_object.h"
#include "runtime/detail/element_decoder.h"
#include "runtime/detail/element_encoder.h"
#include "runtime/detail/nesting.h"
#include "runtime/detail/record_list.h"
#include "runtime/detail/record_memory.h"

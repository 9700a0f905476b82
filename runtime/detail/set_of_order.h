#pragma once

// The order of a SET OF in DER (X.690 11.6): ascending as octet strings, the shorter first where one begins
// the other.

#include "runtime/der_encode.h"

namespace Quillmark::detail {

/// Puts the elements at the write position in order. The data of the nodes, in the order of writing, are the
/// `ASN1BufLocDescr` of the elements; the nodes are linked anew. Returns the octets of all elements, or
/// `RT_E_NOMEM`.
int order_set_of(ASN1CTXT* ctxt, rtSList* list);

}  // namespace Quillmark::detail

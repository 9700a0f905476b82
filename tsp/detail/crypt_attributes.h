#pragma once

// Attributes and certificates between the object layer and the records of the platform service. The records
// hold raw pointers, so the octets lie in stores that the caller keeps, unchanged, as long as the records are
// in use.

#include <cstddef>
#include <vector>

#include "asn1/attribute.h"
#include "platform/cryptoapi.h"
#include "values/blob.h"

namespace Quillmark::PKI::TSP {

/// The number of values of all attributes together; 0 for null.
std::size_t count_values(const ASN1::CAttributes* attributes);

/// Records that point into the three stores, to which it appends: OID texts with terminators, one blob record
/// per value, and the values. When the stores hold what earlier records point into, the caller has reserved
/// room for all attributes and values in advance; growth would move them.
std::vector<CRYPT_ATTRIBUTE> LODESTtoCRYPTAttributes(const ASN1::CAttributes* attributes,
                                                     std::vector<CBlob>& oid_store,
                                                     std::vector<CRYPT_ATTR_BLOB>& blobs,
                                                     std::vector<CBlob>& value_store);

/// Records that point into `store`, to which it appends a copy of each certificate.
std::vector<CERT_BLOB> LODESTToCRYPTCerts(const CBlobList* certificates, std::vector<CBlob>& store);

/// Copies of all attributes and their values, in order.
ASN1::CAttributes CRYPTToLODESTAttributes(CRYPT_ATTRIBUTES* attributes);
/// The same of a block that the service has filled. Throws `CRYPT_E_BAD_MSG` for one that holds no record.
ASN1::CAttributes attributes_in(const CBlob& block);

}  // namespace Quillmark::PKI::TSP

#include "tsp/detail/crypt_attributes.h"

#include <cstring>

#include "tsp/detail/record.h"

namespace Quillmark::PKI::TSP {

namespace {

/// The octets of `stored`, which must stay where it is.
CRYPT_ATTR_BLOB blob_over(const CBlob& stored) {
    return {.cbData = static_cast<DWORD>(detail::checked_length(stored)), .pbData = stored.pbData()};
}

/// Stores `text` with its terminator.
LPSTR store_text(const char* text, std::vector<CBlob>& store) {
    const std::size_t size = std::strlen(text) + 1;
    store.emplace_back(reinterpret_cast<const unsigned char*>(text), size);
    return reinterpret_cast<LPSTR>(store.back().pbData());
}

void store_values(const ASN1::CAttribute& attribute, std::vector<CRYPT_ATTR_BLOB>& blobs,
                  std::vector<CBlob>& value_store) {
    for (const ASN1::CAttrValue& value : attribute) {
        value_store.push_back(value.get_value());
        blobs.push_back(blob_over(value_store.back()));
    }
}

}  // namespace

std::size_t count_values(const ASN1::CAttributes* attributes) {
    std::size_t count = 0;
    if (attributes != nullptr) {
        for (const ASN1::CAttribute& attribute : *attributes) {
            count += attribute.size();
        }
    }
    return count;
}

std::vector<CRYPT_ATTRIBUTE> LODESTtoCRYPTAttributes(const ASN1::CAttributes* attributes,
                                                     std::vector<CBlob>& oid_store,
                                                     std::vector<CRYPT_ATTR_BLOB>& blobs,
                                                     std::vector<CBlob>& value_store) {
    std::vector<CRYPT_ATTRIBUTE> records;
    if (attributes == nullptr) {
        return records;
    }
    const std::size_t value_count = count_values(attributes);
    records.reserve(attributes->size());
    oid_store.reserve(oid_store.size() + attributes->size());
    blobs.reserve(blobs.size() + value_count);
    value_store.reserve(value_store.size() + value_count);

    for (const ASN1::CAttribute& attribute : *attributes) {
        store_values(attribute, blobs, value_store);
        const std::size_t count = attribute.size();
        records.push_back({.pszObjId = store_text(attribute.get_oid(), oid_store),
                           .cValue = static_cast<DWORD>(count),
                           .rgValue = count == 0 ? nullptr : blobs.data() + (blobs.size() - count)});
    }
    return records;
}

std::vector<CERT_BLOB> LODESTToCRYPTCerts(const CBlobList* certificates, std::vector<CBlob>& store) {
    std::vector<CERT_BLOB> records;
    if (certificates == nullptr) {
        return records;
    }
    records.reserve(certificates->size());
    store.reserve(store.size() + certificates->size());
    for (const CBlob& certificate : *certificates) {
        store.push_back(certificate);
        records.push_back(blob_over(store.back()));
    }
    return records;
}

ASN1::CAttributes CRYPTToLODESTAttributes(CRYPT_ATTRIBUTES* attributes) {
    ASN1::CAttributes list;
    for (DWORD i = 0; i < attributes->cAttr; ++i) {
        const CRYPT_ATTRIBUTE& source = attributes->rgAttr[i];
        ASN1::CAttribute& attribute = list.emplace_back(source.pszObjId);
        for (DWORD k = 0; k < source.cValue; ++k) {
            attribute.add(CBlob(source.rgValue[k].pbData, source.rgValue[k].cbData));
        }
    }
    return list;
}

ASN1::CAttributes attributes_in(const CBlob& block) {
    if (block.cbData() < sizeof(CRYPT_ATTRIBUTES)) {
        throw CAtlException(CRYPT_E_BAD_MSG);
    }
    // Array new aligns the block for any record.
    return CRYPTToLODESTAttributes(reinterpret_cast<CRYPT_ATTRIBUTES*>(block.pbData()));
}

}  // namespace Quillmark::PKI::TSP

#include "tsp/detail/signed_message.h"

#include "tsp/detail/crypt_attributes.h"
#include "tsp/detail/message.h"
#include "tsp/detail/record.h"
#include "values/detail/last_error.h"

namespace Quillmark::PKI::TSP {

using namespace ASN1;

static_assert(sizeof(CMSG_SIGNER_ENCODE_INFO) == 96, "the published form without the optional CMS fields");
static_assert(sizeof(CMSG_SIGNED_ENCODE_INFO) == 48, "the published form without attribute certificates");

namespace {

std::size_t size_of(const CAttributes* attributes) {
    return attributes != nullptr ? attributes->size() : 0;
}

}  // namespace

SignerDescription::SignerDescription(PCERT_INFO certificate, HCRYPTPROV provider, DWORD key_spec,
                                     const CAlgorithmIdentifierEx& hash_algorithm) {
    record_.cbSize = sizeof record_;
    record_.pCertInfo = certificate;
    record_.hCryptProv = provider;
    record_.dwKeySpec = key_spec;
    record_.HashAlgorithm.pszObjId = const_cast<LPSTR>(hash_algorithm.get_algorithm());
    const CBlob& parameters = hash_algorithm.get_parameters();
    record_.HashAlgorithm.Parameters = {static_cast<DWORD>(detail::checked_length(parameters)),
                                        parameters.pbData()};
}

void SignerDescription::set_attributes(const CAttributes* signed_attributes,
                                       const CAttributes* unsigned_attributes) {
    // Both lists share the stores, so there is room for all of it before the first record points into them.
    const std::size_t attribute_count = size_of(signed_attributes) + size_of(unsigned_attributes);
    const std::size_t value_count = count_values(signed_attributes) + count_values(unsigned_attributes);
    oid_store_.reserve(attribute_count);
    blobs_.reserve(value_count);
    value_store_.reserve(value_count);

    signed_ = LODESTtoCRYPTAttributes(signed_attributes, oid_store_, blobs_, value_store_);
    record_.cAuthAttr = static_cast<DWORD>(signed_.size());
    record_.rgAuthAttr = signed_.empty() ? nullptr : signed_.data();
    unsigned_ = LODESTtoCRYPTAttributes(unsigned_attributes, oid_store_, blobs_, value_store_);
    record_.cUnauthAttr = static_cast<DWORD>(unsigned_.size());
    record_.rgUnauthAttr = unsigned_.empty() ? nullptr : unsigned_.data();
}

HCRYPTMSG open_to_encode(SignerDescription& signer, const CBlobList* certificates, InnerContent content) {
    std::vector<CBlob> store;
    std::vector<CERT_BLOB> records = LODESTToCRYPTCerts(certificates, store);
    CMSG_SIGNED_ENCODE_INFO description{};
    description.cbSize = sizeof description;
    description.cSigners = 1;
    description.rgSigners = signer.record();
    description.cCertEncoded = static_cast<DWORD>(records.size());
    description.rgCertEncoded = records.empty() ? nullptr : records.data();
    HCRYPTMSG message = CryptMsgOpenToEncode(detail::kEncodingTypes, content.flags, CMSG_SIGNED, &description,
                                             const_cast<LPSTR>(content.type), nullptr);
    if (message == nullptr) {
        detail::throw_last_error();
    }
    return message;
}

}  // namespace Quillmark::PKI::TSP

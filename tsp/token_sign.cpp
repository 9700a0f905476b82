// Signing a token: the TSTInfo becomes the content of a SignedData (RFC 5652 5.1) that the platform service
// builds.

#include "asn1data/control_classes.h"
#include "runtime/detail/local_buffer.h"
#include "tsp/detail/crypt_attributes.h"
#include "tsp/detail/handles.h"
#include "tsp/detail/message.h"
#include "tsp/detail/record.h"
#include "tsp/detail/token_impl.h"
#include "tsp/token.h"
#include "values/detail/last_error.h"
#include "values/result.h"

namespace Quillmark::PKI::TSP {

using namespace ASN1;

namespace {

// The published flag, and a bit that services beside the first one ignore.
constexpr DWORD kEncodeFlags = CMSG_CMS_ENCAPSULATED_CONTENT_FLAG | 0x200;

/// The signer's description, with all that it points to but for the arguments of the constructor.
class SignerDescription {
  public:
    SignerDescription(PCERT_INFO certificate, HCRYPTPROV provider, DWORD key_spec,
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

    void set_attributes(const CAttributes* signed_attributes, const CAttributes* unsigned_attributes) {
        // Both lists share the stores, so there is room for all of it before the first record points into
        // them.
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

    CMSG_SIGNER_ENCODE_INFO* record() { return &record_; }

  private:
    static std::size_t size_of(const CAttributes* attributes) {
        return attributes != nullptr ? attributes->size() : 0;
    }

    std::vector<CBlob> oid_store_;
    std::vector<CRYPT_ATTR_BLOB> blobs_;
    std::vector<CBlob> value_store_;
    std::vector<CRYPT_ATTRIBUTE> signed_;
    std::vector<CRYPT_ATTRIBUTE> unsigned_;
    CMSG_SIGNER_ENCODE_INFO record_{};
};

static_assert(sizeof(CMSG_SIGNER_ENCODE_INFO) == 96, "the published form without the optional CMS fields");
static_assert(sizeof(CMSG_SIGNED_ENCODE_INFO) == 48, "the published form without attribute certificates");

/// A message open for encoding, with the content inside. Throws the last error, also when that is 0.
HCRYPTMSG open_message(SignerDescription& signer, const CBlobList* certificates) {
    std::vector<CBlob> store;
    std::vector<CERT_BLOB> records = LODESTToCRYPTCerts(certificates, store);
    CMSG_SIGNED_ENCODE_INFO description{};
    description.cbSize = sizeof description;
    description.cSigners = 1;
    description.rgSigners = signer.record();
    description.cCertEncoded = static_cast<DWORD>(records.size());
    description.rgCertEncoded = records.empty() ? nullptr : records.data();
    HCRYPTMSG message = CryptMsgOpenToEncode(detail::kEncodingTypes, kEncodeFlags, CMSG_SIGNED, &description,
                                             const_cast<LPSTR>(detail::kTSTInfoType), nullptr);
    if (message == nullptr) {
        detail::throw_last_error();
    }
    return message;
}

}  // namespace

void CToken::sign(unsigned long long provider, unsigned int keySpec, const CBlob& certificate,
                  const CAlgorithmIdentifierEx& hashAlgorithm) {
    impl_->encodedToken.clear();

    detail::LocalEncodeBuffer buffer;
    asn1data::ASN1T_TSTInfo record;
    impl_->fillTSTInfo(record, buffer.getCtxtPtr());
    const int length = asn1data::ASN1C_TSTInfo(buffer, record).EncodeTo(buffer);
    if (length < 1) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }

    // Intended: the old message goes before the new one is sure, and until then its handle stays. After a
    // failure below, the service answers every use of it with an error.
    if (impl_->messageHandle != nullptr) {
        CryptMsgClose(impl_->messageHandle);
    }
    const ATL2::CCertContext context(detail::open_certificate(certificate));
    SignerDescription signer(context.get()->pCertInfo, provider, keySpec, hashAlgorithm);
    signer.set_attributes(impl_->signedAttributes.get(), impl_->unsignedAttributes.get());
    HCRYPTMSG message = open_message(signer, impl_->certificates.get());
    // Intended: a message whose update fails is not closed.
    detail::check_call(CryptMsgUpdate(message, buffer.getMsgPtr(), static_cast<DWORD>(length), 1));
    impl_->messageHandle = message;
    CBlob encoded = encode();
    impl_->encodedToken.swap(encoded);
}

}  // namespace Quillmark::PKI::TSP

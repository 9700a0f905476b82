// Reading and checking a token: a SignedData (RFC 5652 5.1) around a TSTInfo, opened by the platform service.

#include <cstring>
#include <utility>

#include "asn1/codec.h"
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

/// True when the service took the message in full. False when it knows not all of its algorithms: such a
/// message can be read, only its signature cannot be checked. Anything else is thrown.
bool update_knows_algorithms(HCRYPTMSG message, const CBlob& encoded) {
    if (CryptMsgUpdate(message, encoded.pbData(), static_cast<DWORD>(encoded.cbData()), 1)) {
        return true;
    }
    const HRESULT result = detail::last_error_result();
    if (result != CRYPT_E_UNKNOWN_ALGO && result != NTE_BAD_ALGID) {
        throw CAtlException(result);
    }
    return false;
}

/// The DER of the TSTInfo. A service may hand the eContent out as the OCTET STRING that it is.
CBlob read_content(detail::MessageReader& message) {
    CBlob content = message.read(CMSG_CONTENT_PARAM);
    if (content.cbData() == 0 || content.pbData() == nullptr) {
        throw CAtlException(TRUST_E_TIME_STAMP);
    }
    constexpr unsigned char kOctetString = 0x04;
    if (content.pbData()[0] == kOctetString) {
        return fromOctetString(content);
    }
    return content;
}

void require_tst_info(const CBlob& type) {
    if (type.cbData() == 0 || type.pbData() == nullptr) {
        throw CAtlException(TRUST_E_TIME_STAMP);
    }
    const bool terminated = std::memchr(type.pbData(), 0, type.cbData()) != nullptr;
    if (!terminated || std::strcmp(reinterpret_cast<const char*>(type.pbData()), detail::kTSTInfoType) != 0) {
        throw CAtlException(CRYPT_E_BAD_MSG);
    }
}

/// Null when the message has none.
std::unique_ptr<CAttributes> read_attributes(detail::MessageReader& message, DWORD parameter) {
    const CBlob block = message.read_attributes(parameter);
    if (block.cbData() == 0) {
        return nullptr;
    }
    return std::make_unique<CAttributes>(attributes_in(block));
}

}  // namespace

void CToken::decode(const CBlob& blob) {
    detail::checked_length(blob);
    // The copy is made before the old fields go, as `blob` may be one of them.
    auto fresh = std::make_unique<Impl>();
    fresh->encodedToken = blob;
    delete std::exchange(impl_, fresh.release());
    impl_->decode();
}

void CToken::Impl::decode() {
    ATL2::CCryptMsg handle(detail::open_to_decode());
    unknownAlgorithm = !update_knows_algorithms(handle.get(), encodedToken);

    detail::MessageReader message(handle.get());
    const CBlob content = read_content(message);
    require_tst_info(message.read(CMSG_INNER_CONTENT_TYPE_PARAM));
    message.read_signer(signerInfo);

    detail::LocalDecodeBuffer buffer(content.pbData(), detail::checked_length(content));
    detail::lend_message(buffer.getCtxtPtr());
    asn1data::ASN1T_TSTInfo record;
    if (asn1data::ASN1C_TSTInfo(buffer, record).DecodeFrom(buffer) < 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    readTSTInfo(record);

    signedAttributes = read_attributes(message, CMSG_SIGNER_AUTH_ATTR_PARAM);
    unsignedAttributes = read_attributes(message, CMSG_SIGNER_UNAUTH_ATTR_PARAM);
    certificates = message.read_certificates();
    messageHandle = handle.detach();
}

bool CToken::verify(const CBlob& certificate) const {
    if (impl_->unknownAlgorithm) {
        throw CAtlException(CRYPT_E_UNKNOWN_ALGO);
    }
    if (impl_->messageHandle == nullptr) {
        throw CAtlException(E_FAIL);
    }
    // RFC 3161 2.4.2: the token has the signature of the authority and no other.
    if (detail::MessageReader(impl_->messageHandle).read_count(CMSG_SIGNER_COUNT_PARAM) != 1) {
        return false;
    }
    const ATL2::CCertContext context(detail::open_certificate(certificate));
    return CryptMsgControl(impl_->messageHandle, 0, CMSG_CTRL_VERIFY_SIGNATURE, context.get()->pCertInfo) !=
           0;
}

}  // namespace Quillmark::PKI::TSP

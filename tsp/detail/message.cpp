#include "tsp/detail/message.h"

#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "runtime/detail/local_buffer.h"
#include "tsp/detail/record.h"
#include "values/detail/last_error.h"
#include "values/result.h"

namespace Quillmark::detail {

CBlob MessageReader::read(DWORD parameter, DWORD index) {
    check_call(CryptMsgGetParam(message_, parameter, index, nullptr, &size_));
    CBlob value(size_);
    check_call(CryptMsgGetParam(message_, parameter, index, value.pbData(), &size_));
    value.resize_to(size_);
    return value;
}

CBlob MessageReader::read_attributes(DWORD parameter) {
    if (!CryptMsgGetParam(message_, parameter, 0, nullptr, &size_) &&
        last_error_result() != CRYPT_E_ATTRIBUTES_MISSING) {
        throw_last_error();
    }
    CBlob block(size_);
    if (size_ != 0) {
        check_call(CryptMsgGetParam(message_, parameter, 0, block.pbData(), &size_));
    }
    block.resize_to(size_);
    return block;
}

DWORD MessageReader::read_count(DWORD parameter) {
    DWORD count = 0;
    size_ = sizeof count;
    check_call(CryptMsgGetParam(message_, parameter, 0, &count, &size_));
    return count;
}

std::unique_ptr<CBlobList> MessageReader::read_certificates() {
    const DWORD count = read_count(CMSG_CERT_COUNT_PARAM);
    if (count == 0) {
        return nullptr;
    }
    auto certificates = std::make_unique<CBlobList>();
    for (DWORD i = 0; i < count; ++i) {
        CBlob certificate = read(CMSG_CERT_PARAM, i);
        certificates->emplace_back().swap(certificate);
    }
    return certificates;
}

void MessageReader::read_signer(ASN1::CSignerInfo& signer) {
    const CBlob encoded = read(CMSG_ENCODED_SIGNER);
    LocalDecodeBuffer buffer(encoded.pbData(), checked_length(encoded));
    lend_message(buffer.getCtxtPtr());
    asn1data::ASN1T_SignerInfo record;
    if (asn1data::ASN1C_SignerInfo(buffer, record).DecodeFrom(buffer) < 0) {
        throw CAtlException(CRYPT_E_ASN1_INTERNAL);
    }
    ASN1::ASN1T_SignerInfo_get(signer, record);
}

HCRYPTMSG open_to_decode() {
    HCRYPTMSG message = CryptMsgOpenToDecode(kEncodingTypes, 0, 0, 0, nullptr, nullptr);
    if (message == nullptr) {
        throw_null_handle();
    }
    return message;
}

PCCERT_CONTEXT open_certificate(const CBlob& certificate) {
    PCCERT_CONTEXT context = CertCreateCertificateContext(kEncodingTypes, certificate.pbData(),
                                                          static_cast<DWORD>(checked_length(certificate)));
    if (context == nullptr) {
        throw_null_handle();
    }
    return context;
}

void throw_null_handle() {
    const HRESULT result = last_error_result();
    throw CAtlException(result == S_OK ? static_cast<HRESULT>(E_FAIL) : result);
}

}  // namespace Quillmark::detail

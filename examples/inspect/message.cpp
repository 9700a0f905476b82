#include "inspect/message.h"

#include <cstring>
#include <memory>

#include "support/failure.h"
#include "values/result.h"

namespace inspect {

using namespace Quillmark;

namespace {

[[noreturn]] void throw_last_error() {
    throw CAtlException(example::last_error());
}

ASN1::CAttributes to_attributes(const CRYPT_ATTRIBUTES& block) {
    ASN1::CAttributes attributes;
    for (DWORD i = 0; i < block.cAttr; ++i) {
        const CRYPT_ATTRIBUTE& from = block.rgAttr[i];
        ASN1::CAttribute attribute(from.pszObjId);
        for (DWORD value = 0; value < from.cValue; ++value) {
            attribute.add(CBlob(from.rgValue[value].pbData, from.rgValue[value].cbData));
        }
        attributes.push_back(attribute);
    }
    return attributes;
}

}  // namespace

Message::Message(const CBlob& encoded)
    : handle_(CryptMsgOpenToDecode(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING, 0, 0, 0, nullptr, nullptr)) {
    if (handle_ == nullptr) {
        throw_last_error();
    }
    if (CryptMsgUpdate(handle_, encoded.pbData(), static_cast<DWORD>(encoded.cbData()), 1) == 0) {
        const HRESULT result = example::last_error();
        // Such a message can be read all the same, only its signature cannot be checked.
        if (result != CRYPT_E_UNKNOWN_ALGO && result != NTE_BAD_ALGID) {
            CryptMsgClose(handle_);
            throw CAtlException(result);
        }
    }
}

Message::~Message() {
    CryptMsgClose(handle_);
}

std::string Message::content_type() const {
    const CBlob oid = query(CMSG_INNER_CONTENT_TYPE_PARAM);
    // Its terminator is part of it.
    return std::string(reinterpret_cast<const char*>(oid.pbData()), oid.cbData() == 0 ? 0 : oid.cbData() - 1);
}

CBlob Message::content() const {
    return query(CMSG_CONTENT_PARAM);
}

unsigned int Message::signers() const {
    return count(CMSG_SIGNER_COUNT_PARAM);
}

unsigned int Message::certificates() const {
    return count(CMSG_CERT_COUNT_PARAM);
}

unsigned int Message::revocation_lists() const {
    return count(CMSG_CRL_COUNT_PARAM);
}

CBlob Message::certificate(unsigned int index) const {
    return query(CMSG_CERT_PARAM, index);
}

ASN1::CSignerInfo Message::signer(unsigned int index) const {
    ASN1::CSignerInfo signer;
    signer.decode(query(CMSG_ENCODED_SIGNER, index));
    return signer;
}

ASN1::CAttributes Message::signed_attributes(unsigned int index) const {
    return attributes(CMSG_SIGNER_AUTH_ATTR_PARAM, index);
}

ASN1::CAttributes Message::unsigned_attributes(unsigned int index) const {
    return attributes(CMSG_SIGNER_UNAUTH_ATTR_PARAM, index);
}

CBlob Message::query(DWORD parameter, DWORD index) const {
    DWORD size = 0;
    if (CryptMsgGetParam(handle_, parameter, index, nullptr, &size) == 0) {
        throw_last_error();
    }
    CBlob answer(static_cast<unsigned long>(size));
    if (CryptMsgGetParam(handle_, parameter, index, answer.pbData(), &size) == 0) {
        throw_last_error();
    }
    return answer;
}

unsigned int Message::count(DWORD parameter) const {
    DWORD value = 0;
    DWORD size = sizeof value;
    if (CryptMsgGetParam(handle_, parameter, 0, &value, &size) == 0) {
        throw_last_error();
    }
    return value;
}

ASN1::CAttributes Message::attributes(DWORD parameter, DWORD index) const {
    try {
        // Array new aligns the block for any record. What it points at lies behind it.
        const CBlob block = query(parameter, index);
        return to_attributes(*reinterpret_cast<const CRYPT_ATTRIBUTES*>(block.pbData()));
    } catch (const CAtlException& exception) {
        if (exception == CRYPT_E_ATTRIBUTES_MISSING) {
            return ASN1::CAttributes();
        }
        throw;
    }
}

}  // namespace inspect

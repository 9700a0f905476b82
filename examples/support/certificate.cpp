#include "certificate.h"

#include <vector>

#include "asn1/name.h"
#include "failure.h"
#include "number.h"

namespace example {

namespace {

Quillmark::CBlob blob_of(const CERT_NAME_BLOB& name) {
    return Quillmark::CBlob(name.pbData, name.cbData);
}

}  // namespace

Certificate::Certificate(const Quillmark::CBlob& der)
    : context_(
          CertCreateCertificateContext(X509_ASN_ENCODING, der.pbData(), static_cast<DWORD>(der.cbData()))) {
    if (context_ == nullptr) {
        throw Failure("reading the certificate", last_error());
    }
}

Certificate::~Certificate() {
    CertFreeCertificateContext(context_);
}

Quillmark::CBlob Certificate::subject() const {
    return blob_of(context_->pCertInfo->Subject);
}

Quillmark::CBlob Certificate::issuer() const {
    return blob_of(context_->pCertInfo->Issuer);
}

Quillmark::ASN1::CBigInteger Certificate::serial_number() const {
    // The interface gives it least significant octet first.
    const CRYPT_INTEGER_BLOB& serial = context_->pCertInfo->SerialNumber;
    Quillmark::ASN1::CBigInteger number(serial.pbData, serial.cbData);
    number.reverse();
    return number;
}

std::string Certificate::key_algorithm() const {
    return context_->pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId;
}

std::string name_text(const Quillmark::CBlob& name) {
    return attempt("reading a distinguished name", [&] {
        Quillmark::ASN1::CName decoded;
        decoded.decode(name);
        return to_utf8(decoded.toString().c_str());
    });
}

std::string to_utf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::vector<char> narrow(size > 0 ? static_cast<std::size_t>(size) : 0);
    if (size <= 0 || WideCharToMultiByte(CP_UTF8, 0, text, -1, narrow.data(), size, nullptr, nullptr) <= 0) {
        throw Failure("converting text", last_error());
    }
    return narrow.data();
}

}  // namespace example

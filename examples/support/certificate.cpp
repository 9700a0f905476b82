#include "certificate.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <vector>

#include "asn1/name.h"
#include "failure.h"
#include "number.h"

namespace example {

namespace {

// SEQUENCE { OBJECT IDENTIFIER 1.3.6.1.5.5.7.3.8 }
constexpr BYTE kTimeStampingAlone[] = {0x30, 0x0A, 0x06, 0x08, 0x2B, 0x06,
                                       0x01, 0x05, 0x05, 0x07, 0x03, 0x08};

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

Quillmark::CDateTime Certificate::not_before() const {
    return Quillmark::CDateTime(context_->pCertInfo->NotBefore);
}

Quillmark::CDateTime Certificate::not_after() const {
    return Quillmark::CDateTime(context_->pCertInfo->NotAfter);
}

bool Certificate::is_for_time_stamping() const {
    const CERT_INFO& info = *context_->pCertInfo;
    const auto is_extended_key_usage = [](const CERT_EXTENSION& extension) {
        return std::strcmp(extension.pszObjId, "2.5.29.37") == 0;
    };
    const CERT_EXTENSION* const begin = info.rgExtension;
    const CERT_EXTENSION* const end = begin + info.cExtension;
    const CERT_EXTENSION* const found = std::find_if(begin, end, is_extended_key_usage);
    return found != end && found->fCritical &&
           std::equal(found->Value.pbData, found->Value.pbData + found->Value.cbData,
                      std::begin(kTimeStampingAlone), std::end(kTimeStampingAlone));
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

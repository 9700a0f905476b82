#include "signer.h"

#include "asn1/signing_certificate.h"
#include "certificate.h"

namespace example {

namespace {

using namespace Quillmark;

// id-aa-signingCertificate (RFC 2634 5.4), id-aa-signingCertificateV2 (RFC 5035 3)
constexpr char kSigningCertificate[] = "1.2.840.113549.1.9.16.2.12";
constexpr char kSigningCertificateV2[] = "1.2.840.113549.1.9.16.2.47";

ASN1::CIssuerSerial issuer_and_serial_number(const CBlob& der) {
    const Certificate certificate(der);
    ASN1::CGeneralName issuer;
    issuer.put_directoryName(certificate.issuer());
    ASN1::CGeneralNames issuers;
    issuers.push_back(issuer);
    return ASN1::CIssuerSerial(issuers, certificate.serial_number());
}

ASN1::CAttribute signing_certificate_v1(const CBlob& certificate) {
    const ASN1::CIssuerSerial issuer_serial = issuer_and_serial_number(certificate);
    ASN1::CESSCertID identifier(hash_of(sha1(), certificate));
    identifier.put_issuerSerial(&issuer_serial);
    ASN1::CESSCertIDList identifiers;
    identifiers.push_back(identifier);
    ASN1::CAttribute attribute(kSigningCertificate);
    attribute.add(ASN1::CAttrSigningCertificate(identifiers));
    return attribute;
}

ASN1::CAttribute signing_certificate_v2(const CBlob& certificate, const HashAlgorithm& hash) {
    const ASN1::CIssuerSerial issuer_serial = issuer_and_serial_number(certificate);
    ASN1::CESSCertIDv2 identifier(hash_of(hash, certificate), ASN1::CAlgorithmIdentifier(hash.oid));
    identifier.put_issuerSerial(&issuer_serial);
    ASN1::CESSCertIDv2List identifiers;
    identifiers.push_back(identifier);
    ASN1::CAttribute attribute(kSigningCertificateV2);
    attribute.add(ASN1::CAttrSigningCertificateV2(identifiers));
    return attribute;
}

}  // namespace

const char* bound_digest(const std::string& key_algorithm) {
    struct Row {
        const char* key_algorithm;
        const char* digest;
    };
    static constexpr Row kBoundDigests[] = {
        {"1.3.101.112", "2.16.840.1.101.3.4.2.3"},   // Ed25519: SHA-512 (RFC 8419 3.1)
        {"1.2.643.7.1.1.1.1", "1.2.643.7.1.1.2.2"},  // GOST R 34.10-2012, 256 bits (RFC 9215 3)
        {"1.2.643.7.1.1.1.2", "1.2.643.7.1.1.2.3"},  // GOST R 34.10-2012, 512 bits
    };
    for (const Row& row : kBoundDigests) {
        if (key_algorithm == row.key_algorithm) {
            return row.digest;
        }
    }
    return nullptr;
}

ASN1::CAttributes signing_certificate(const CBlob& certificate, const HashAlgorithm& hash) {
    ASN1::CAttributes attributes;
    attributes.push_back(&hash == &sha1() ? signing_certificate_v1(certificate)
                                          : signing_certificate_v2(certificate, hash));
    return attributes;
}

}  // namespace example

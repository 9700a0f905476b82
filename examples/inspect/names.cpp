#include "inspect/names.h"

#include <map>

namespace inspect {

namespace {

const std::map<std::string, const char*>& table() {
    static const std::map<std::string, const char*> kNames = {
        // Hashes (RFC 8017, NIST CSOR, TeleTrusT, RFC 6986)
        {"1.2.840.113549.2.5", "md5"},
        {"1.3.14.3.2.26", "sha1"},
        {"1.3.36.3.2.1", "ripemd160"},
        {"2.16.840.1.101.3.4.2.1", "sha256"},
        {"2.16.840.1.101.3.4.2.2", "sha384"},
        {"2.16.840.1.101.3.4.2.3", "sha512"},
        {"2.16.840.1.101.3.4.2.4", "sha224"},
        {"2.16.840.1.101.3.4.2.6", "sha512-256"},
        {"2.16.840.1.101.3.4.2.8", "sha3-256"},
        {"2.16.840.1.101.3.4.2.9", "sha3-384"},
        {"2.16.840.1.101.3.4.2.10", "sha3-512"},
        {"1.2.643.2.2.9", "gostR3411-94"},
        {"1.2.643.7.1.1.2.2", "gostR3411-2012-256"},
        {"1.2.643.7.1.1.2.3", "gostR3411-2012-512"},
        // Keys and signatures (RFC 8017, RFC 5480, RFC 5758, RFC 8410, RFC 9215)
        {"1.2.840.113549.1.1.1", "rsaEncryption"},
        {"1.2.840.113549.1.1.4", "md5WithRSAEncryption"},
        {"1.2.840.113549.1.1.5", "sha1WithRSAEncryption"},
        {"1.2.840.113549.1.1.10", "id-RSASSA-PSS"},
        {"1.2.840.113549.1.1.11", "sha256WithRSAEncryption"},
        {"1.2.840.113549.1.1.12", "sha384WithRSAEncryption"},
        {"1.2.840.113549.1.1.13", "sha512WithRSAEncryption"},
        {"1.2.840.113549.1.1.14", "sha224WithRSAEncryption"},
        {"1.2.840.10040.4.1", "id-dsa"},
        {"1.2.840.10040.4.3", "id-dsa-with-sha1"},
        {"1.2.840.10045.2.1", "id-ecPublicKey"},
        {"1.2.840.10045.4.1", "ecdsa-with-SHA1"},
        {"1.2.840.10045.4.3.1", "ecdsa-with-SHA224"},
        {"1.2.840.10045.4.3.2", "ecdsa-with-SHA256"},
        {"1.2.840.10045.4.3.3", "ecdsa-with-SHA384"},
        {"1.2.840.10045.4.3.4", "ecdsa-with-SHA512"},
        {"1.3.101.112", "id-Ed25519"},
        {"1.3.101.113", "id-Ed448"},
        {"1.2.643.2.2.19", "gostR3410-2001"},
        {"1.2.643.7.1.1.1.1", "gostR3410-2012-256"},
        {"1.2.643.7.1.1.1.2", "gostR3410-2012-512"},
        {"1.2.643.7.1.1.3.2", "gostR3410-2012-gostR3411-2012-256"},
        {"1.2.643.7.1.1.3.3", "gostR3410-2012-gostR3411-2012-512"},
        // Curves (RFC 5480, RFC 5639)
        {"1.2.840.10045.3.1.7", "P-256"},
        {"1.3.132.0.10", "secp256k1"},
        {"1.3.132.0.34", "P-384"},
        {"1.3.132.0.35", "P-521"},
        {"1.3.36.3.3.2.8.1.1.7", "brainpoolP256r1"},
        {"1.3.36.3.3.2.8.1.1.11", "brainpoolP384r1"},
        {"1.3.36.3.3.2.8.1.1.13", "brainpoolP512r1"},
        // Contents (RFC 5652, RFC 3161, RFC 5083, RFC 6960)
        {"1.2.840.113549.1.7.1", "data"},
        {"1.2.840.113549.1.7.2", "signedData"},
        {"1.2.840.113549.1.7.3", "envelopedData"},
        {"1.2.840.113549.1.7.5", "digestedData"},
        {"1.2.840.113549.1.7.6", "encryptedData"},
        {"1.2.840.113549.1.9.16.1.2", "authData"},
        {"1.2.840.113549.1.9.16.1.4", "TSTInfo"},
        {"1.2.840.113549.1.9.16.1.9", "compressedData"},
        {"1.2.840.113549.1.9.16.1.23", "authEnvelopedData"},
        {"1.3.6.1.4.1.311.2.1.4", "spcIndirectData"},
        {"1.3.6.1.4.1.311.3.2.1", "spcTimeStampRequest"},
        {"1.3.6.1.5.5.7.48.1.1", "BasicOCSPResponse"},
        // Attributes (RFC 5652, RFC 5035, RFC 5126, RFC 6211, RFC 8551)
        {"1.2.840.113549.1.9.3", "contentType"},
        {"1.2.840.113549.1.9.4", "messageDigest"},
        {"1.2.840.113549.1.9.5", "signingTime"},
        {"1.2.840.113549.1.9.6", "countersignature"},
        {"1.2.840.113549.1.9.15", "smimeCapabilities"},
        {"1.2.840.113549.1.9.52", "cmsAlgorithmProtection"},
        {"1.2.840.113549.1.9.16.2.12", "signingCertificate"},
        {"1.2.840.113549.1.9.16.2.14", "signatureTimeStampToken"},
        {"1.2.840.113549.1.9.16.2.15", "signaturePolicyIdentifier"},
        {"1.2.840.113549.1.9.16.2.21", "completeCertificateReferences"},
        {"1.2.840.113549.1.9.16.2.22", "completeRevocationReferences"},
        {"1.2.840.113549.1.9.16.2.23", "certificateValues"},
        {"1.2.840.113549.1.9.16.2.24", "revocationValues"},
        {"1.2.840.113549.1.9.16.2.47", "signingCertificateV2"},
        {"0.4.0.1733.2.5", "archiveTimestampV3"},
        // Extensions (RFC 5280, RFC 3739, RFC 6960, RFC 6962)
        {"2.5.29.14", "subjectKeyIdentifier"},
        {"2.5.29.15", "keyUsage"},
        {"2.5.29.16", "privateKeyUsagePeriod"},
        {"2.5.29.17", "subjectAltName"},
        {"2.5.29.18", "issuerAltName"},
        {"2.5.29.19", "basicConstraints"},
        {"2.5.29.20", "cRLNumber"},
        {"2.5.29.21", "reasonCode"},
        {"2.5.29.24", "invalidityDate"},
        {"2.5.29.27", "deltaCRLIndicator"},
        {"2.5.29.28", "issuingDistributionPoint"},
        {"2.5.29.29", "certificateIssuer"},
        {"2.5.29.30", "nameConstraints"},
        {"2.5.29.31", "cRLDistributionPoints"},
        {"2.5.29.32", "certificatePolicies"},
        {"2.5.29.33", "policyMappings"},
        {"2.5.29.35", "authorityKeyIdentifier"},
        {"2.5.29.36", "policyConstraints"},
        {"2.5.29.37", "extKeyUsage"},
        {"2.5.29.46", "freshestCRL"},
        {"2.5.29.54", "inhibitAnyPolicy"},
        {"1.3.6.1.5.5.7.1.1", "authorityInfoAccess"},
        {"1.3.6.1.5.5.7.1.3", "qcStatements"},
        {"1.3.6.1.5.5.7.1.11", "subjectInfoAccess"},
        {"1.3.6.1.5.5.7.48.1.5", "ocspNoCheck"},
        {"1.3.6.1.4.1.11129.2.4.2", "signedCertificateTimestamps"},
        // Purposes and access methods (RFC 5280, RFC 3161)
        {"2.5.29.37.0", "anyExtendedKeyUsage"},
        {"1.3.6.1.5.5.7.3.1", "serverAuth"},
        {"1.3.6.1.5.5.7.3.2", "clientAuth"},
        {"1.3.6.1.5.5.7.3.3", "codeSigning"},
        {"1.3.6.1.5.5.7.3.4", "emailProtection"},
        {"1.3.6.1.5.5.7.3.8", "timeStamping"},
        {"1.3.6.1.5.5.7.3.9", "OCSPSigning"},
        {"1.3.6.1.5.5.7.48.1", "ocsp"},
        {"1.3.6.1.5.5.7.48.2", "caIssuers"},
        {"1.3.6.1.5.5.7.48.3", "timeStampingAccess"},
    };
    return kNames;
}

}  // namespace

const char* known_name(const std::string& oid) {
    const auto found = table().find(oid);
    return found == table().end() ? nullptr : found->second;
}

std::string name_or_oid(const std::string& oid) {
    const char* name = known_name(oid);
    return name != nullptr ? name : oid;
}

std::string name_and_oid(const std::string& oid) {
    const char* name = known_name(oid);
    return name != nullptr ? std::string(name) + " (" + oid + ")" : oid;
}

}  // namespace inspect

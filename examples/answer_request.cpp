// The authority: answers a time-stamp request.
//
//     answer_request REQUEST RESPONSE CERTIFICATES KEY
//
// CERTIFICATES is a PEM file that begins with the authority's own certificate, KEY its private key: a file,
// or any other name that the platform service opens, such as
// "pkcs11:token=T;object=K?module-path=/usr/lib/module.so&pin-value=1234". Writes the DER of a TimeStampResp
// (RFC 3161 2.4.2) to RESPONSE: a stamp, or a rejection that says why. A request that is refused is answered
// and no failure of this program; trouble of its own is one, though the client gets an answer then too.

#include <cstdio>
#include <string>
#include <vector>

#include "asn1/signing_certificate.h"
#include "platform/cryptoapi.h"
#include "support/certificate.h"
#include "support/failure.h"
#include "support/failure_info.h"
#include "support/files.h"
#include "support/hash.h"
#include "support/number.h"
#include "tsp/request.h"
#include "tsp/response.h"

namespace {

using namespace Quillmark;
using namespace example;

// The one policy of this authority, under the arc for examples (X.660).
constexpr char kPolicy[] = "2.999.1";

// id-aa-signingCertificateV2 (RFC 5035 3)
constexpr char kSigningCertificateV2[] = "1.2.840.113549.1.9.16.2.47";

// Why a request is not stamped.
struct Refusal {
    FailureBit reason;
    std::string text;
};

class Key {
  public:
    explicit Key(const std::string& container) {
        if (!CryptAcquireContextA(&provider_, container.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT)) {
            throw Failure("opening the key " + name_to_show(container), last_error());
        }
    }
    ~Key() { CryptReleaseContext(provider_, 0); }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    HCRYPTPROV provider() const { return provider_; }

  private:
    // The name of a key may hold a PIN, which is nobody's to read in a log.
    static std::string name_to_show(const std::string& container) {
        const std::size_t pin = container.find("pin-value=");
        return pin == std::string::npos ? container : container.substr(0, pin) + "...";
    }

    HCRYPTPROV provider_ = 0;
};

struct Authority {
    Authority(const std::string& certificate_file, const std::string& key_container)
        : certificates(read_certificates(certificate_file)), key(key_container) {}

    CBlobList certificates;  // its own first
    Key key;
};

PKI::TSP::CRequest decode_request(const CBlob& bytes) {
    PKI::TSP::CRequest request;
    try {
        request.decode(bytes);
    } catch (const CAtlException& exception) {
        if (exception == CRYPT_E_ASN1_MEMORY) {
            throw;
        }
        throw Refusal{badDataFormat, std::string("the request cannot be decoded: ") + result_name(exception)};
    }
    return request;
}

void check_request(const PKI::TSP::CRequest& request) {
    if (request.get_version() != 1) {
        throw Refusal{badRequest, "only version 1 is known here"};
    }
    const HashAlgorithm* hash = find_hash(request.get_hashAlgorithm().get_algorithm());
    if (hash == nullptr) {
        throw Refusal{badAlg, "the hash algorithm is not accepted here"};
    }
    if (request.get_hashedMessage().cbData() != hash->octets) {
        throw Refusal{badDataFormat, "the hash has another length than its algorithm gives"};
    }
    if (request.get_reqPolicy() != nullptr && std::string(request.get_reqPolicy()) != kPolicy) {
        throw Refusal{unacceptedPolicy, std::string("the policy here is ") + kPolicy};
    }
    if (request.get_extensions() != nullptr) {
        throw Refusal{unacceptedExtension, "no extension is known here"};
    }
}

// The digest to sign with: most keys go with any, and SHA-256 is understood everywhere.
const char* signing_digest(const std::string& key_algorithm) {
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
    return sha256().oid;
}

// Binds the signature to the certificate (RFC 5816 2.2.1).
ASN1::CAttributes signing_certificate(const CBlob& der) {
    const Certificate certificate(der);
    ASN1::CGeneralName issuer;
    issuer.put_directoryName(certificate.issuer());
    ASN1::CGeneralNames issuers;
    issuers.push_back(issuer);
    const ASN1::CIssuerSerial issuer_serial(issuers, certificate.serial_number());

    ASN1::CESSCertIDv2 identifier(hash_of(sha256(), der));
    identifier.put_issuerSerial(&issuer_serial);
    ASN1::CESSCertIDv2List identifiers;
    identifiers.push_back(identifier);

    ASN1::CAttribute attribute(kSigningCertificateV2);
    attribute.add(ASN1::CAttrSigningCertificateV2(identifiers));
    ASN1::CAttributes attributes;
    attributes.push_back(attribute);
    return attributes;
}

PKI::TSP::CToken make_token(const PKI::TSP::CRequest& request, const Authority& authority) {
    const CBlob& certificate = authority.certificates.front();
    // Unique (RFC 3161 2.4.2) without a memory of the serial numbers given before: 128 random bits.
    PKI::TSP::CToken token(kPolicy, request.get_hashAlgorithm(), request.get_hashedMessage(),
                           random_number(16), CDateTime::Now(), false);
    const PKI::TSP::CAccuracy accuracy{1, 0, 0};
    token.put_accuracy(&accuracy);
    token.put_nonce(request.get_nonce());

    ASN1::CGeneralName name;
    name.put_directoryName(Certificate(certificate).subject());
    token.put_tsa(&name);

    const ASN1::CAttributes attributes = signing_certificate(certificate);
    token.put_signedAttributes(&attributes);
    if (request.get_certReq()) {
        token.put_certificates(&authority.certificates);
    }
    token.sign(authority.key.provider(), AT_SIGNATURE, certificate,
               ASN1::CAlgorithmIdentifierEx(signing_digest(Certificate(certificate).key_algorithm())));
    return token;
}

PKI::TSP::CResponse granted(const PKI::TSP::CToken& token) {
    PKI::TSP::CResponse response;
    response.put_status(ASN1::CPKIStatusInfo(ASN1::PKIStatus_granted));
    response.put_timeStampToken(&token);
    return response;
}

PKI::TSP::CResponse rejection(const Refusal& refusal) {
    ASN1::CPKIFailureInfo failure;
    failure.put_bit(refusal.reason, true);
    ASN1::CPKIStatusInfo status(ASN1::PKIStatus_rejection);
    status.put_failureInfo(failure);
    status.put_statusString(
        ASN1::CPKIFreeText(ASN1::CPKIFreeTextString(refusal.text.c_str(), ASN1::CLanguageTagDefaultRead())));
    PKI::TSP::CResponse response;
    response.put_status(status);
    return response;
}

// The answer, and a line that says what it is.
PKI::TSP::CResponse answer(const CBlob& bytes, const Authority& authority, std::string& summary) {
    try {
        const PKI::TSP::CRequest request = decode_request(bytes);
        check_request(request);
        const PKI::TSP::CToken token = make_token(request, authority);
        summary =
            std::string("granted, serial number ") + token.get_serialNumber().writeToHexString(0).c_str();
        return granted(token);
    } catch (const Refusal& refusal) {
        summary = std::string("rejected (") + failure_name(refusal.reason) + "): " + refusal.text;
        return rejection(refusal);
    }
}

int answer_request(const std::vector<std::string>& arguments) {
    if (arguments.size() != 4) {
        throw Failure("usage: answer_request REQUEST RESPONSE CERTIFICATES KEY");
    }
    const std::string& response_file = arguments[1];
    const CBlob bytes = read_file(arguments[0]);
    try {
        const Authority authority(arguments[2], arguments[3]);
        std::string summary;
        const PKI::TSP::CResponse response =
            attempt("stamping", [&] { return answer(bytes, authority, summary); });
        write_file(response_file, attempt("encoding the response", [&] { return response.encode(); }));
        std::printf("%s: %s\n", response_file.c_str(), summary.c_str());
    } catch (...) {
        write_file(response_file,
                   rejection({systemFailure, "the authority has trouble of its own"}).encode());
        throw;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    return run(argc, argv, answer_request);
}

// Messages and certificates of hostile shapes at the platform service.

#include <gtest/gtest.h>

#include <vector>

#include "platform/cryptoapi.h"
#include "tests/robustness/shapes_messages.h"
#include "tests/robustness/shapes_ways.h"
#include "tests/support/case_name.h"

namespace Quillmark::test {
namespace {

constexpr std::size_t kTenThousand = 10'000;
constexpr std::size_t kHundredThousand = 100'000;
constexpr std::size_t kMillion = 1'000'000;
constexpr std::size_t kHundredMillion = 100'000'000;

DWORD size_of(const CBlob& blob) {
    return static_cast<DWORD>(blob.cbData());
}

Outcome last_error() {
    return static_cast<Outcome>(GetLastError());
}

/// Asks for one parameter the way that its size is asked for first. True when there is an answer.
bool ask(HCRYPTMSG message, DWORD parameter, DWORD index) {
    DWORD size = 0;
    if (!CryptMsgGetParam(message, parameter, index, nullptr, &size)) {
        return false;
    }
    const std::unique_ptr<BYTE[]> answer(new BYTE[size]);
    return CryptMsgGetParam(message, parameter, index, answer.get(), &size) != 0;
}

void ask_everything(HCRYPTMSG message) {
    for (const DWORD parameter : {CMSG_TYPE_PARAM, CMSG_CONTENT_PARAM, CMSG_INNER_CONTENT_TYPE_PARAM,
                                  CMSG_SIGNER_COUNT_PARAM, CMSG_CERT_COUNT_PARAM, CMSG_CRL_COUNT_PARAM}) {
        ask(message, parameter, 0);
    }
    for (const DWORD parameter : {CMSG_SIGNER_AUTH_ATTR_PARAM, CMSG_SIGNER_UNAUTH_ATTR_PARAM, CMSG_CERT_PARAM,
                                  CMSG_CRL_PARAM, CMSG_ENCODED_SIGNER}) {
        for (DWORD index = 0; ask(message, parameter, index); ++index) {
        }
    }
    ask(message, CMSG_COMPUTED_HASH_PARAM, 0);
}

/// Everything that can be done with a message of others: all questions, and its signature.
Outcome read_message(const CBlob& input) {
    static const CBlob encoded = blob_of(certificate_of({}));
    HCRYPTMSG message = CryptMsgOpenToDecode(PKCS_7_ASN_ENCODING, 0, 0, 0, nullptr, nullptr);
    const bool taken = CryptMsgUpdate(message, input.pbData(), size_of(input), 1) != 0;
    const Outcome outcome = taken ? kTaken : last_error();
    ask_everything(message);
    const PCCERT_CONTEXT certificate =
        CertCreateCertificateContext(X509_ASN_ENCODING, encoded.pbData(), size_of(encoded));
    CryptMsgControl(message, 0, CMSG_CTRL_VERIFY_SIGNATURE, certificate->pCertInfo);
    CertFreeCertificateContext(certificate);
    CryptMsgClose(message);
    return outcome;
}

/// A certificate of others, against which a message is verified.
Outcome read_certificate(const CBlob& input) {
    static const CBlob encoded = blob_of(token_of({}));
    const PCCERT_CONTEXT certificate =
        CertCreateCertificateContext(X509_ASN_ENCODING, input.pbData(), size_of(input));
    if (certificate == nullptr) {
        return last_error();
    }
    HCRYPTMSG message = CryptMsgOpenToDecode(PKCS_7_ASN_ENCODING, 0, 0, 0, nullptr, nullptr);
    CryptMsgUpdate(message, encoded.pbData(), size_of(encoded), 1);
    CryptMsgControl(message, 0, CMSG_CTRL_VERIFY_SIGNATURE, certificate->pCertInfo);
    CryptMsgClose(message);
    CertFreeCertificateContext(certificate);
    return kTaken;
}

class ServiceShape : public testing::TestWithParam<Shape> {};

TEST_P(ServiceShape, GrowsInProportion) {
    expect_growth(GetParam());
}

/// With the digest of the content and its type, so that the signature itself is looked at.
Octets bound_attributes(const Octets& more) {
    const Octets digest = attribute_of(element(0x04, "00"), element(0x06, "2a 86 48 86 f7 0d 01 09 04"));
    const Octets type = attribute_of(kTSTInfoType, element(0x06, "2a 86 48 86 f7 0d 01 09 03"));
    return join({digest, type, more});
}

const Shape kMessages[] = {
    {"MessageOfManyOctets", read_message,
     [](std::size_t n) { return token_of({.content = filled(0x04, n)}); }, kHundredMillion, kTaken, 4},
    {"MessageOfManySegments", read_message,
     [](std::size_t n) { return token_of({.content = wrap_indefinite(0x24, repeated("04 01 aa", n))}); },
     kMillion, kTaken, 5},
    {"MessageOfEmptySegments", read_message,
     [](std::size_t n) { return token_of({.content = wrap(0x24, repeated("24 00", n))}); }, kMillion, kTaken,
     3},
    {"MessageOfOtherContent", read_message,
     [](std::size_t n) { return token_of({.content = wrap(0x30, repeated("05 00", n))}); }, kMillion, kTaken,
     4},
    {"MessageOfIndefiniteLengths", read_message,
     [](std::size_t n) {
         Octets content = repeated("30 80 00 00", n);
         for (int level = 0; level < 24; ++level) {
             content = wrap_indefinite(0x30, std::move(content));
         }
         return token_of({.content = content});
     },
     kHundredThousand, kTaken, 4},
    {"MessageOfTinyCertificates", read_message,
     [](std::size_t n) { return token_of({.certificates = repeated("30 00", n)}); }, kMillion, kTaken, 30},
    {"MessageOfTinyRevocationLists", read_message,
     [](std::size_t n) { return token_of({.revocation_lists = repeated("30 00", n)}); }, kMillion, kTaken,
     30},
    {"MessageOfManySigners", read_message,
     [](std::size_t n) { return token_of({.signers = repeated(sample_signer(), n)}); }, kHundredThousand,
     kTaken, 12},
    {"MessageOfManyAttributes", read_message,
     [](std::size_t n) {
         const Octets more = repeated("30 08 06 02 2a 04 31 02 05 00", n);
         return token_of({.signers = signer_with(bound_attributes(more), more)});
     },
     kHundredThousand, kTaken, 8},
    {"MessageOfManyValues", read_message,
     [](std::size_t n) { return token_of({.signers = signer_with(attribute_of(repeated("05 00", n)))}); },
     kMillion, kTaken, 12},
    {"MessageOfValuesUnderALongType", read_message,
     [](std::size_t n) {
         return token_of({.signers = signer_with(attribute_of(repeated("05 00", n), long_object_id(n)))});
     },
     kHundredThousand, kTaken, 12},
    {"MessageOfALongInnerType", read_message,
     [](std::size_t n) { return token_of({.type = long_object_id(n)}); }, kMillion, kTaken, 6},
    {"MessageOfALongIdentifier", read_message,
     [](std::size_t n) {
         TokenParts parts;
         parts.signer_identifier = filled(0x80, n);
         return token_of({.signers = sample_signer(parts)});
     },
     kHundredMillion, kTaken, 4},
    {"MessageWithOctetsBehind", read_message,
     [](std::size_t n) {
         return join({token_of({}), Octets(n, 0x55)});
     },
     kHundredMillion, kTaken, 2},
};

const Shape kCertificates[] = {
    {"CertificateOfManyExtensions", read_certificate,
     [](std::size_t n) { return certificate_of({.extensions = repeated("30 06 06 02 2a 05 04 00", n)}); },
     kHundredThousand, kTaken, 20},
    {"CertificateOfALongExtension", read_certificate,
     [](std::size_t n) {
         return certificate_of({.extensions = wrap(0x30, join({element(0x06, "2a 05"), filled(0x04, n)}))});
     },
     kHundredMillion, kTaken, 3},
    {"CertificateOfALongIdentifier", read_certificate,
     [](std::size_t n) {
         const Octets identifier = wrap(0x04, filled(0x04, n));
         return certificate_of({.extensions = wrap(0x30, join({element(0x06, "55 1d 0e"), identifier}))});
     },
     kHundredMillion, kTaken, 4},
    {"CertificateOfALongExtensionType", read_certificate,
     [](std::size_t n) {
         return certificate_of({.extensions = wrap(0x30, join({long_object_id(n), element(0x04, "")}))});
     },
     kMillion, kTaken, 12},
    {"CertificateOfALongSerialNumber", read_certificate,
     [](std::size_t n) { return certificate_of({.serial = filled(0x02, n)}); }, kHundredMillion, kTaken, 4},
    {"CertificateOfALongKey", read_certificate,
     [](std::size_t n) { return certificate_of({.key = wrap(0x03, Octets(n, 0x00))}); }, kHundredMillion,
     kTaken, 4},
    {"CertificateOfALongIssuer", read_certificate,
     [](std::size_t n) {
         return certificate_of({.issuer = wrap(0x30, repeated("31 09 30 07 06 03 55 04 03 0c 00", n))});
     },
     kMillion, kTaken, 3},
    {"CertificateWithOctetsBehind", read_certificate,
     [](std::size_t n) {
         return join({certificate_of({}), Octets(n, 0x55)});
     },
     kTenThousand, static_cast<Outcome>(CRYPT_E_ASN1_CORRUPT), 2},
};

INSTANTIATE_TEST_SUITE_P(Messages, ServiceShape, testing::ValuesIn(kMessages), case_name);
INSTANTIATE_TEST_SUITE_P(Certificates, ServiceShape, testing::ValuesIn(kCertificates), case_name);

}  // namespace
}  // namespace Quillmark::test

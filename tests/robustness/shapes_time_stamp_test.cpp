// Requests, responses, tokens and the Authenticode exchange of hostile shapes.

#include <gtest/gtest.h>

#include "platform/cryptoapi.h"
#include "tests/robustness/shapes_messages.h"
#include "tests/robustness/shapes_ways.h"
#include "tests/support/case_name.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"

namespace Quillmark::test {
namespace {

using namespace PKI::TSP;

constexpr std::size_t kTenThousand = 10'000;
constexpr std::size_t kHundredThousand = 100'000;
constexpr std::size_t kMillion = 1'000'000;
constexpr std::size_t kHundredMillion = 100'000'000;

// Elements in great number

Octets extensions(std::size_t count) {
    return repeated("30 06 06 02 2a 05 04 00", count);
}

Octets attributes(std::size_t count) {
    return repeated("30 08 06 02 2a 04 31 02 05 00", count);
}

Octets null_values(std::size_t count) {
    return repeated("05 00", count);
}

/// OCTET STRING in segments (X.690 8.7.3) of an octet each, in the indefinite form.
Octets segments(std::size_t count) {
    return wrap_indefinite(0x24, repeated("04 01 aa", count));
}

/// GeneralName directoryName of `count` RDNs.
Octets long_directory_name(std::size_t count) {
    return wrap(0xa4, wrap(0x30, repeated("31 09 30 07 06 03 55 04 03 0c 00", count)));
}

/// GeneralName directoryName of one RDN, whose attributes are not in the order of DER.
Octets wide_directory_name(std::size_t count) {
    Octets attributes;
    for (std::size_t i = 0; i < count; ++i) {
        const auto low = static_cast<std::uint8_t>(~i);
        const auto middle = static_cast<std::uint8_t>(~i >> 8);
        const auto high = static_cast<std::uint8_t>(~i >> 16);
        const Octets number = {0x30, 0x0a, 0x06, 0x03, 0x2a, 0x03, 0x04, 0x04, 0x03, high, middle, low};
        attributes.insert(attributes.end(), number.begin(), number.end());
    }
    return wrap(0xa4, wrap(0x30, wrap(0x31, attributes)));
}

/// Contents that can be told from an OCTET STRING, as TSTInfo can.
Octets token_around(const Octets& optional) {
    return token_of({.content = wrap(0x04, tst_info_with(optional))});
}

class TimeStampShape : public testing::TestWithParam<Shape> {};

TEST_P(TimeStampShape, GrowsInProportion) {
    expect_growth(GetParam());
}

constexpr Outcome kInternal = CRYPT_E_ASN1_INTERNAL;

const Shape kRequests[] = {
    {"RequestExtensions", decode_value<CRequest>,
     [](std::size_t n) { return request_with(wrap(0xa0, extensions(n))); }, kHundredThousand, kTaken, 110},
    {"RequestExtensionOfManyNames", decode_value<CRequest>,
     [](std::size_t n) {
         const Octets names = wrap(0x04, wrap(0x30, repeated("82 00", n)));
         return request_with(wrap(0xa0, wrap(0x30, join({element(0x06, "55 1d 11"), names}))));
     },
     kMillion, kTaken, 80},
    {"RequestExtensionOfManyOctets", decode_value<CRequest>,
     [](std::size_t n) {
         return request_with(wrap(0xa0, wrap(0x30, join({element(0x06, "2a 05"), filled(0x04, n)}))));
     },
     kHundredMillion, kTaken, 4},
    {"RequestNonceOfManyOctets", decode_value<CRequest>,
     [](std::size_t n) { return request_with(filled(0x02, n)); }, kHundredMillion, kTaken, 5},
    {"RequestHashOfManyOctets", decode_value<CRequest>,
     [](std::size_t n) { return request_with({}, filled(0x04, n)); }, kHundredMillion, kTaken, 3},
    {"RequestHashOfManySegments", decode_value<CRequest>,
     [](std::size_t n) { return request_with({}, segments(n)); }, kMillion, kTaken, 3},
    {"RequestHashOfEmptySegments", decode_value<CRequest>,
     [](std::size_t n) { return request_with({}, wrap_indefinite(0x24, repeated("04 00", n))); }, kMillion,
     kTaken, 3},
    {"RequestPolicyOfManyArcs", decode_value<CRequest>,
     [](std::size_t n) { return request_with(long_object_id(n)); }, kMillion, kInternal, 3},
    {"RequestWithOctetsBehind", decode_value<CRequest>,
     [](std::size_t n) {
         return join({request_with({}), Octets(n, 0x55)});
     },
     kHundredMillion, kTaken, 3},
};

const Shape kTokens[] = {
    {"TokenContentOfManyOctets", decode_value<CToken>,
     [](std::size_t n) { return token_around(filled(0x02, n)); }, kHundredMillion, kTaken, 8},
    {"TokenContentOfManySegments", decode_value<CToken>,
     [](std::size_t n) {
         const Octets info = tst_info_with(filled(0x02, n));
         Octets pieces;
         for (const std::uint8_t octet : info) {
             pieces.insert(pieces.end(), {0x04, 0x01, octet});
         }
         return token_of({.content = wrap(0x24, pieces)});
     },
     kMillion, kTaken, 8},
    {"TokenExtensions", decode_value<CToken>,
     [](std::size_t n) { return token_around(wrap(0xa1, extensions(n))); }, kHundredThousand, kTaken, 110},
    {"TokenAuthorityOfManyNames", decode_value<CToken>,
     [](std::size_t n) { return token_around(wrap(0xa0, long_directory_name(n))); }, kHundredThousand, kTaken,
     160},
    {"TokenAuthorityOfOneWideName", decode_value<CToken>,
     [](std::size_t n) { return token_around(wrap(0xa0, wide_directory_name(n))); }, kHundredThousand, kTaken,
     160},
    {"TokenTimeOfManyDigits", decode_value<CToken>,
     [](std::size_t n) {
         Octets time(n, '1');
         time.push_back('Z');
         return token_of(
             {.content = wrap(
                  0x04, tst_info_with({}, wrap(0x18, join({text_element(0x18, "20240102030405."), time}))))});
     },
     kMillion, kTaken, 8},
    {"TokenCertificates", decode_value<CToken>,
     [](std::size_t n) {
         return token_of({.certificates = repeated(certificate_of({.key = filled(0x03, 700)}), n)});
     },
     kTenThousand, kTaken, 4},
    {"TokenTinyCertificates", decode_value<CToken>,
     [](std::size_t n) { return token_of({.certificates = repeated("30 00", n)}); }, kMillion, kTaken, 60},
    {"TokenTinyRevocationLists", decode_value<CToken>,
     [](std::size_t n) { return token_of({.revocation_lists = repeated("30 00", n)}); }, kMillion, kTaken,
     30},
    {"TokenSigners", decode_value<CToken>,
     [](std::size_t n) { return token_of({.signers = repeated(sample_signer(), n)}); }, kHundredThousand,
     kTaken, 14},
    {"TokenAttributes", decode_value<CToken>,
     [](std::size_t n) { return token_of({.signers = signer_with(attributes(n), attributes(n))}); },
     kHundredThousand, kTaken, 100},
    {"TokenValuesOfOneAttribute", decode_value<CToken>,
     [](std::size_t n) { return token_of({.signers = signer_with(attribute_of(null_values(n)))}); }, kMillion,
     kTaken, 100},
    {"TokenValuesUnderALongType", decode_value<CToken>,
     [](std::size_t n) {
         return token_of({.signers = signer_with(attribute_of(null_values(n), long_object_id(128, 5)))});
     },
     kHundredThousand, kTaken, 100},
    {"TokenValueOfManyOctets", decode_value<CToken>,
     [](std::size_t n) { return token_of({.signers = signer_with(attribute_of(filled(0x04, n)))}); },
     kHundredMillion, kTaken, 8},
    {"TokenInNamesOfTokensWithManyOctets", decode_value<CToken>,
     [](std::size_t n) { return tokens_in_names(20, token_around(filled(0x02, n))); }, kMillion, kTaken, 200},
    {"TokenTypeOfManyArcs", decode_value<CToken>,
     [](std::size_t n) { return token_of({.type = long_object_id(n)}); }, kMillion, CRYPT_E_BAD_MSG, 8},
};

const Shape kResponses[] = {
    {"ResponseTexts", decode_value<CResponse>,
     [](std::size_t n) {
         return response_of({}, wrap(0x30, join({element(0x02, "02"), wrap(0x30, repeated("0c 00", n))})));
     },
     kMillion, kTaken, 200},
    {"ResponseTextOfManyOctets", decode_value<CResponse>,
     [](std::size_t n) {
         return response_of({}, wrap(0x30, join({element(0x02, "02"), wrap(0x30, filled(0x0c, n))})));
     },
     kHundredMillion, kTaken, 12},
    {"ResponseFailureOfManyBits", decode_value<CResponse>,
     [](std::size_t n) {
         return response_of({}, wrap(0x30, join({element(0x02, "02"), filled(0x03, n)})));
     },
     kHundredMillion, kInternal, 4},
    {"ResponseTokenContentOfManyOctets", decode_value<CResponse>,
     [](std::size_t n) { return response_of(token_around(filled(0x02, n))); }, kHundredMillion, kTaken, 10},
    {"ResponseTokenInNamesOfTokensWithManyOctets", decode_value<CResponse>,
     [](std::size_t n) { return response_of(tokens_in_names(20, token_around(filled(0x02, n)))); }, kMillion,
     kTaken, 200},
    {"ResponseTokenCertificates", decode_value<CResponse>,
     [](std::size_t n) {
         return response_of(
             token_of({.certificates = repeated(certificate_of({.key = filled(0x03, 700)}), n)}));
     },
     kTenThousand, kTaken, 8},
    {"ResponseTokenTinyCertificates", decode_value<CResponse>,
     [](std::size_t n) { return response_of(token_of({.certificates = repeated("30 00", n)})); }, kMillion,
     kInternal, 60},
    {"ResponseTokenAttributes", decode_value<CResponse>,
     [](std::size_t n) {
         return response_of(token_of({.signers = signer_with(attributes(n), attributes(n))}));
     },
     kHundredThousand, kTaken, 160},
    {"ResponseTokenSigners", decode_value<CResponse>,
     [](std::size_t n) { return response_of(token_of({.signers = repeated(sample_signer(), n)})); },
     kHundredThousand, kTaken, 40},
};

Octets data_message(const Octets& content, const Octets& signers, const Octets& certificates = {}) {
    return token_of(
        {.content = content, .certificates = certificates, .signers = signers, .type = kDataType});
}

Octets signing_time() {
    return attribute_of(text_element(0x17, "240102030405Z"), element(0x06, "2a 86 48 86 f7 0d 01 09 05"));
}

Octets cms_request(const Octets& attributes, const Octets& content) {
    const Octets algorithm = element(0x06, "2b 06 01 04 01 82 37 03 02 01");
    return wrap(0x30, join({algorithm, attributes.empty() ? Octets{} : wrap(0x31, attributes),
                            wrap(0x30, join({kDataType, wrap(0xa0, content)}))}));
}

Outcome verify_stamp(const CBlob& input) {
    static const CBlob certificate = blob_of(certificate_of({}));
    return outcome_of([&] {
        CMSStamp stamp;
        stamp.decode(input);
        (void)stamp.verify(certificate);
        (void)stamp.get_signerInfo();
    });
}

const Shape kAuthenticode[] = {
    {"AuthenticodeRequestAttributes", decode_and_encode<CMSRequest>,
     [](std::size_t n) { return cms_request(attributes(n), element(0x04, "aa")); }, kHundredThousand, kTaken,
     140},
    {"AuthenticodeRequestValues", decode_and_encode<CMSRequest>,
     [](std::size_t n) { return cms_request(attribute_of(null_values(n)), element(0x04, "aa")); }, kMillion,
     kTaken, 140},
    {"AuthenticodeRequestContentOfManyOctets", decode_and_encode<CMSRequest>,
     [](std::size_t n) { return cms_request({}, filled(0x04, n)); }, kHundredMillion, kTaken, 8},
    {"AuthenticodeStampContentOfManyOctets", verify_stamp,
     [](std::size_t n) { return data_message(filled(0x04, n), signer_with(signing_time())); },
     kHundredMillion, kTaken, 8},
    {"AuthenticodeStampAttributes", verify_stamp,
     [](std::size_t n) {
         return data_message(element(0x04, "aa"), signer_with(join({attributes(n), signing_time()})));
     },
     kHundredThousand, kTaken, 100},
    {"AuthenticodeStampValues", verify_stamp,
     [](std::size_t n) {
         return data_message(element(0x04, "aa"),
                             signer_with(join({attribute_of(null_values(n)), signing_time()})));
     },
     kMillion, kTaken, 100},
    {"AuthenticodeStampValuesUnderALongType", decode_value<CMSStamp>,
     [](std::size_t n) {
         const Octets long_type = attribute_of(null_values(n), long_object_id(n));
         return data_message(element(0x04, "aa"), signer_with(join({long_type, signing_time()})));
     },
     kTenThousand, kTaken, 100},
    {"AuthenticodeStampTinyCertificates", verify_stamp,
     [](std::size_t n) {
         return data_message(element(0x04, "aa"), signer_with(signing_time()), repeated("30 00", n));
     },
     kMillion, kTaken, 60},
};

// Signing, and verifying what was signed: attributes and certificates that are not in the order of DER

struct SignerOfTest {
    HCRYPTPROV provider = 0;
    CBlob certificate;

    SignerOfTest() {
        const std::string key = std::string(QUILLMARK_TEST_PKI) + "/tsa_p256.key";
        CryptAcquireContextA(&provider, key.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT);
        certificate.readFromFile((std::string(QUILLMARK_TEST_PKI) + "/tsa_p256.der").c_str());
    }
};

/// Signs a token with the attributes of the input, reads it and verifies it.
Outcome sign_and_verify(const CToken& unsigned_token) {
    static const SignerOfTest& signer = *new SignerOfTest;
    const ASN1::CAlgorithmIdentifierEx sha256("2.16.840.1.101.3.4.2.1");
    bool holds = false;
    const Outcome outcome = outcome_of([&] {
        CToken token(unsigned_token);
        token.sign(signer.provider, AT_SIGNATURE, signer.certificate, sha256);
        CToken received;
        received.decode(token.encode());
        holds = received.verify(signer.certificate);
    });
    return outcome == kTaken && !holds ? static_cast<Outcome>(CRYPT_E_HASH_VALUE) : outcome;
}

CToken token_to_sign() {
    const unsigned char hash[32] = {};
    const unsigned char serial[] = {5};
    return CToken("1.2.3", ASN1::CAlgorithmIdentifierEx("2.16.840.1.101.3.4.2.1"), CBlob(hash, sizeof hash),
                  ASN1::CBigInteger(serial, sizeof serial), CDateTime::Now(), false);
}

Outcome sign_attributes(const CBlob& input) {
    CToken token = token_to_sign();
    const Outcome outcome = outcome_of([&] {
        ASN1::CAttributes attributes;
        attributes.decode(input);
        token.put_signedAttributes(&attributes);
        token.put_unsignedAttributes(&attributes);
    });
    return outcome == kTaken ? sign_and_verify(token) : outcome;
}

/// Certificates of 1000 octets.
Outcome sign_certificates(const CBlob& input) {
    constexpr unsigned long kSize = 1000;
    CToken token = token_to_sign();
    CBlobList certificates;
    for (unsigned long at = 0; at < input.cbData(); at += kSize) {
        certificates.emplace_back(input.pbData() + at, kSize);
    }
    token.put_certificates(&certificates);
    return sign_and_verify(token);
}

const Shape kSigning[] = {
    {"SignedAttributes", sign_attributes,
     [](std::size_t n) {
         Octets values;
         for (std::size_t i = n; i-- != 0;) {
             values.insert(values.end(), {0x04, 0x03, static_cast<std::uint8_t>(i >> 16),
                                          static_cast<std::uint8_t>(i >> 8), static_cast<std::uint8_t>(i)});
         }
         return wrap(0x31, join({attributes(n), attribute_of(values)}));
     },
     kHundredThousand, kTaken, 240},
    {"SignedCertificates", sign_certificates,
     [](std::size_t n) {
         Octets all;
         for (std::size_t i = n; i-- != 0;) {
             const Octets number = {static_cast<std::uint8_t>(i >> 8), static_cast<std::uint8_t>(i)};
             const Octets one = wrap(0x30, join({wrap(0x04, number), filled(0x04, 988)}));
             all.insert(all.end(), one.begin(), one.end());
         }
         return all;
     },
     kTenThousand, kTaken, 10},
};

INSTANTIATE_TEST_SUITE_P(Signing, TimeStampShape, testing::ValuesIn(kSigning), case_name);
INSTANTIATE_TEST_SUITE_P(Requests, TimeStampShape, testing::ValuesIn(kRequests), case_name);
INSTANTIATE_TEST_SUITE_P(Tokens, TimeStampShape, testing::ValuesIn(kTokens), case_name);
INSTANTIATE_TEST_SUITE_P(Responses, TimeStampShape, testing::ValuesIn(kResponses), case_name);
INSTANTIATE_TEST_SUITE_P(Authenticode, TimeStampShape, testing::ValuesIn(kAuthenticode), case_name);

}  // namespace
}  // namespace Quillmark::test

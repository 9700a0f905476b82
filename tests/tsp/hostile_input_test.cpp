// Bytes from strangers: whatever comes, each `decode` takes it or throws a result code that its documentation
// names, and nothing stays behind on the codec's heap or open at the message service. Meant to be run with
// the sanitizers.

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <random>
#include <set>
#include <string>

#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/big_integer.h"
#include "asn1/certificate.h"
#include "asn1/codec.h"
#include "asn1/content_info.h"
#include "asn1/extension.h"
#include "asn1/extension_value.h"
#include "asn1/general_name.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1/policy_information.h"
#include "asn1/signer_info.h"
#include "asn1/signing_certificate.h"
#include "tests/support/blob.h"
#include "tests/support/case_name.h"
#include "tests/support/codec_heap.h"
#include "tests/support/message_service.h"
#include "tests/support/result_code.h"
#include "tests/support/sample_stamp.h"
#include "tests/support/sample_token.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::element;
using test::from_hex;
using test::join;
using test::Octets;
using test::sequence;
using test::text_element;

// Elements that the samples share

Octets common_name() {  // CN=A
    return sequence({element(0x31, sequence({element(0x06, "55 04 03"), text_element(0x0c, "A")}))});
}

Octets directory_name() {
    return element(0xa4, common_name());
}

Octets attribute() {
    return sequence(
        {element(0x06, "2a 04"), element(0x31, join({element(0x02, "01"), element(0x02, "02")}))});
}

Octets extension() {
    return sequence({element(0x06, "2a 05"), element(0x01, "ff"), element(0x04, "05 00")});
}

/// RFC 5280 4.1, version 1.
Octets certificate() {
    const Octets key_or_signature = element(0x03, "00 aa");
    const Octets from = text_element(0x17, "240102030405Z");
    const Octets to = text_element(0x17, "250102030405Z");
    return sequence({sequence({element(0x02, "09"), test::kSha256, common_name(), sequence({from, to}),
                               common_name(), sequence({test::kSha256, key_or_signature})}),
                     test::kSha256, key_or_signature});
}

Octets issuer_serial() {
    return sequence({sequence({directory_name()}), element(0x02, "09")});
}

/// With another digest than the default one, so that every element is there.
Octets certificate_id() {
    return sequence(
        {sequence({element(0x06, "60 86 48 01 65 03 04 02 03")}), element(0x04, "aa bb"), issuer_serial()});
}

Octets full_request() {
    return sequence({element(0x02, "01"), sequence({test::kSha256, element(0x04, "aa bb")}),
                     element(0x06, "2a 03"), element(0x02, "2a"), element(0x01, "ff"),
                     element(0xa0, extension())});
}

/// With every optional element; the names and attributes are ones that the tables know.
Octets full_token() {
    test::TokenParts parts;
    parts.tst_info = test::sample_tst_info(
        join({element(0x30, "02 01 01 80 01 02 81 01 03"), element(0x01, "ff"), element(0x02, "2a"),
              element(0xa0, directory_name()),
              element(0xa1, sequence({element(0x06, "2a 05"), element(0x04, "05 00")}))}));
    parts.certificates = test::sample_certificate("02 01 09");
    parts.signed_attributes = attribute();
    parts.unsigned_attributes = attribute();
    return sample_token(parts);
}

Octets full_response() {
    const Octets status =
        sequence({element(0x02, "00"), sequence({text_element(0x0c, "ok")}), element(0x03, "05 20")});
    return sequence({status, full_token()});
}

/// With attributes that the tables know and do not know, and content that they know.
Octets full_authenticode_request() {
    const Octets attributes =
        element(0x31, {attribute(), test::signing_time_attribute(text_element(0x17, "240102030405Z"))});
    return sequence({element(0x06, "2b 06 01 04 01 82 37 03 02 01"), attributes,
                     sequence({test::kDataType, element(0xa0, element(0x04, "aa bb"))})});
}

Octets full_stamp() {
    test::StampParts parts;
    parts.certificates = test::sample_certificate("02 01 09");
    parts.signed_attributes = join({attribute(), parts.signed_attributes});
    return sample_stamp(parts);
}

// What is under test

struct Decoder {
    const char* name;
    Octets sample;  ///< a message that it takes
    void (*decode)(const CBlob& bytes);
    std::set<HRESULT> codes;  ///< what it may throw of others
    /// The content begins with the tag of the whole and holds nothing that must be there, so that what is
    /// left of a message that was cut off may still be one.
    bool may_fit_when_cut = false;
};

std::ostream& operator<<(std::ostream& out, const Decoder& decoder) {
    return out << decoder.name;
}

template <class Value>
void decode_value(const CBlob& bytes) {
    Value value;
    value.decode(bytes);
}

template <class Value>
void construct_value(const CBlob& bytes) {
    (void)Value(bytes);
}

const std::set<HRESULT> kCodec = {CRYPT_E_ASN1_INTERNAL};
const std::set<HRESULT> kCodecOrValue = {CRYPT_E_ASN1_INTERNAL, E_INVALIDARG};
/// Malformed messages, as the service reports them.
const std::set<HRESULT> kService = {CRYPT_E_ASN1_EOD,    CRYPT_E_ASN1_CORRUPT,     CRYPT_E_ASN1_LARGE,
                                    CRYPT_E_ASN1_BADTAG, CRYPT_E_INVALID_MSG_TYPE, CRYPT_E_INVALID_INDEX,
                                    CRYPT_E_BAD_MSG,     TRUST_E_TIME_STAMP};

/// What a stamp does not tolerate, unlike a token.
const std::set<HRESULT> kStamp = {CRYPT_E_UNKNOWN_ALGO, CRYPT_E_ATTRIBUTES_MISSING};

const std::set<HRESULT> kTime = {E_FAIL, HRESULT_FROM_WIN32(ERROR_INVALID_TIME)};

std::set<HRESULT> all_of(std::initializer_list<std::set<HRESULT>> sets) {
    std::set<HRESULT> all;
    for (const auto& codes : sets) {
        all.insert(codes.begin(), codes.end());
    }
    return all;
}

const std::vector<Decoder>& decoders() {
    static const std::vector<Decoder> list = {
        {"CRequest", full_request(), decode_value<CRequest>, all_of({kCodecOrValue, {CRYPT_E_ASN1_EOD}})},
        {"CResponse", full_response(), decode_value<CResponse>,
         all_of({kCodecOrValue, kService, {CRYPT_E_ASN1_UTF8}})},
        {"CToken", full_token(), decode_value<CToken>, all_of({kCodecOrValue, kService})},
        {"CMSRequest", full_authenticode_request(), decode_value<CMSRequest>, kCodec},
        {"CMSStamp", full_stamp(), decode_value<CMSStamp>, all_of({kCodecOrValue, kService, kStamp, kTime})},
        {"CAlgorithmIdentifier", test::kSha256, decode_value<CAlgorithmIdentifier>, kCodec},
        {"CBigInteger", element(0x02, "00 80"), decode_value<CBigInteger>, kCodec},
        {"CExtensions", sequence({extension()}), decode_value<CExtensions>, kCodec},
        {"CGeneralName", directory_name(), decode_value<CGeneralName>, kCodecOrValue},
        {"CGeneralNames", sequence({directory_name(), text_element(0x82, "a")}), decode_value<CGeneralNames>,
         kCodecOrValue},
        {"CName", common_name(), decode_value<CName>, kCodec},
        {"CPKIStatusInfo",
         sequence({element(0x02, "02"), sequence({text_element(0x0c, "no")}), element(0x03, "05 20")}),
         decode_value<CPKIStatusInfo>, all_of({kCodecOrValue, {CRYPT_E_ASN1_UTF8}})},
        {"CPKIFailureInfo", element(0x03, "05 20"), decode_value<CPKIFailureInfo>, kCodec},
        {"CAttribute", attribute(), decode_value<CAttribute>, kCodec},
        {"CAttributes", element(0x31, attribute()), decode_value<CAttributes>, kCodec},
        {"CSignerInfo", test::sample_signer(), decode_value<CSignerInfo>, kCodec},
        {"CContentInfo", full_token(), decode_value<CContentInfo>, kCodec},
        {"CAttrContentType", element(0x06, "2a 03"), construct_value<CAttrContentType>, kCodec},
        {"CAttrMessageDigest", element(0x04, "aa bb"), construct_value<CAttrMessageDigest>, kCodec},
        {"CAttrSigningTime", text_element(0x17, "240102030405Z"), construct_value<CAttrSigningTime>,
         all_of({kCodecOrValue, kTime})},
        {"CExtension", extension(), decode_value<CExtension>, kCodec},
        {"CAttributeTypeAndValue", sequence({element(0x06, "55 04 03"), text_element(0x0c, "A")}),
         decode_value<CAttributeTypeAndValue>, kCodec},
        {"CRelativeDistinguishedName",
         element(0x31, sequence({element(0x06, "55 04 03"), text_element(0x0c, "A")})),
         decode_value<CRelativeDistinguishedName>, kCodec},
        {"CTimeChoice", text_element(0x18, "20500102030405Z"), decode_value<CTimeChoice>,
         all_of({kCodecOrValue, kTime})},
        {"CExtInvalidityDate", text_element(0x18, "20240102030405Z"), construct_value<CExtInvalidityDate>,
         all_of({kCodecOrValue, kTime})},
        {"CExtHoldInstructionCode", element(0x06, "2a 03"), construct_value<CExtHoldInstructionCode>, kCodec},
        {"CExtCertificateIssuer", sequence({directory_name()}), construct_value<CExtCertificateIssuer>,
         kCodecOrValue},
        {"CCertificateValue", certificate(), decode_value<CCertificateValue>, kCodec},
        {"CPolicyInformation", sequence({element(0x06, "2a 03")}), decode_value<CPolicyInformation>, kCodec},
        {"CIssuerSerial", issuer_serial(), decode_value<CIssuerSerial>, kCodecOrValue},
        {"CESSCertIDv2", certificate_id(), decode_value<CESSCertIDv2>, kCodecOrValue},
        {"CAttrSigningCertificateV2",
         sequence({sequence({certificate_id()}), sequence({sequence({element(0x06, "2a 03")})})}),
         construct_value<CAttrSigningCertificateV2>, kCodecOrValue, true},
        {"CharacterString", text_element(0x0c, "text"),
         [](const CBlob& bytes) { (void)decodeCharString(bytes); }, kCodec},
        {"OctetString", element(0x04, "aa bb"), [](const CBlob& bytes) { (void)fromOctetString(bytes); },
         kCodec},
    };
    return list;
}

class HostileInput : public testing::TestWithParam<Decoder> {
  protected:
    /// Decodes and judges what comes of it. True when the bytes were taken.
    bool attempt(const Octets& octets) {
        // A copy of exactly this size, so that a read beyond it is seen.
        const CBlob bytes(octets.data(), octets.size());
        bool taken = false;
        try {
            GetParam().decode(bytes);
            taken = true;
        } catch (const CAtlException& failure) {
            EXPECT_TRUE(GetParam().codes.contains(failure))
                << result_name(failure) << " for " << describe(octets);
        }
        EXPECT_EQ(heap_.live_blocks(), 0u) << "after " << describe(octets);
        EXPECT_EQ(service_.open_messages(), 0) << "after " << describe(octets);
        return taken;
    }

    static std::string describe(const Octets& octets) {
        constexpr std::size_t kShown = 600;
        return test::to_hex(octets.data(), std::min(octets.size(), kShown)) +
               (octets.size() > kShown ? " ..." : "");
    }

    const Octets& sample() const { return GetParam().sample; }

  private:
    test::CodecHeap heap_;
    test::MessageService service_{test::MessageService::kHandles};
};

TEST_P(HostileInput, TakesTheSample) {
    EXPECT_TRUE(attempt(sample()));
}

TEST_P(HostileInput, RefusesNothing) {
    EXPECT_FALSE(attempt({}));
}

TEST_P(HostileInput, SurvivesOneOctet) {
    for (int octet = 0; octet < 256; ++octet) {
        EXPECT_FALSE(attempt({static_cast<std::uint8_t>(octet)})) << octet;
    }
}

TEST_P(HostileInput, RefusesEveryTruncation) {
    for (std::size_t size = 0; size < sample().size(); ++size) {
        const bool taken =
            attempt(Octets(sample().begin(), sample().begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_TRUE(!taken || GetParam().may_fit_when_cut) << size;
    }
}

TEST_P(HostileInput, SurvivesEveryChangeOfOneOctet) {
    Octets octets = sample();
    for (std::uint8_t& octet : octets) {
        const std::uint8_t original = octet;
        for (int other = 0; other < 256; ++other) {
            octet = static_cast<std::uint8_t>(other);
            attempt(octets);
        }
        octet = original;
    }
}

/// One to eight changes of a message: an octet replaced, removed, doubled, a run copied elsewhere.
Octets mutated(Octets octets, std::mt19937& random) {
    const auto below = [&](std::size_t bound) { return static_cast<std::ptrdiff_t>(random() % bound); };
    for (std::ptrdiff_t change = below(8); change >= 0 && !octets.empty(); --change) {
        const auto at = octets.begin() + below(octets.size());
        switch (below(5)) {
            case 0:
                *at = static_cast<std::uint8_t>(random());
                break;
            case 1:
                *at ^= static_cast<std::uint8_t>(1u << below(8));
                break;
            case 2:
                octets.erase(at);
                break;
            case 3:
                octets.insert(at, static_cast<std::uint8_t>(random()));
                break;
            default: {
                const auto end = at + 1 + below(static_cast<std::size_t>(octets.end() - at));
                const Octets run(at, end);
                octets.insert(octets.begin() + below(octets.size()), run.begin(), run.end());
            }
        }
    }
    return octets;
}

TEST_P(HostileInput, SurvivesRandomMutations) {
    std::mt19937 random(20240102);  // fixed, so that a failure comes again
    constexpr int kMutations = 100'000;
    for (int i = 0; i < kMutations; ++i) {
        attempt(mutated(sample(), random));
    }
}

// Each octet gives way to each of these, which meets every length and every tag among others.
TEST_P(HostileInput, SurvivesLengthsThatLie) {
    const std::vector<Octets> lies = {
        from_hex("80"),              // indefinite, without an end
        from_hex("00"),              // too short
        from_hex("7f"),              // too long, in one octet
        from_hex("81 ff"),           // too long, in two
        from_hex("84 7f ff ff ff"),  // 2 GiB - 1
        from_hex("84 80 00 00 00"),  // negative in 32 bits
        from_hex("84 ff ff ff ff"),  // 4 GiB - 1
        from_hex("85 01 00 00 00 00"),
        from_hex("84 ff ff d8 f1"),  // the run-time's mark of the indefinite form
        from_hex("ff"),              // reserved (X.690 8.1.3.5)
        from_hex("84 00 00 00 03"),  // more octets than needed
    };
    for (std::size_t i = 0; i < sample().size(); ++i) {
        for (const Octets& lie : lies) {
            Octets octets(sample().begin(), sample().begin() + static_cast<std::ptrdiff_t>(i));
            octets.insert(octets.end(), lie.begin(), lie.end());
            octets.insert(octets.end(), sample().begin() + static_cast<std::ptrdiff_t>(i) + 1,
                          sample().end());
            attempt(octets);
        }
    }
}

Octets nested(std::uint8_t tag, int levels) {
    Octets octets;
    for (int i = 0; i < levels; ++i) {
        octets = element(tag, octets);
    }
    return octets;
}

// Elements one in the other, alone and in the place of each element of a message that opens with `tag`.
TEST_P(HostileInput, SurvivesDeepNesting) {
    constexpr int kLevels = 10'000;
    for (const std::uint8_t tag : Octets{0x30, 0x31, 0x24, 0x23, 0x2c, 0xa0, 0xa4}) {
        Octets indefinite;
        for (int i = 0; i < kLevels; ++i) {
            indefinite.push_back(tag);
            indefinite.push_back(0x80);
        }
        EXPECT_FALSE(attempt(indefinite));
        const Octets definite = nested(tag, kLevels);
        attempt(definite);
        for (std::size_t i = 1; i < sample().size(); i += 3) {
            Octets spliced(sample().begin(), sample().begin() + static_cast<std::ptrdiff_t>(i));
            spliced.insert(spliced.end(), definite.begin(), definite.end());
            attempt(spliced);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Decoders, HostileInput, testing::ValuesIn(decoders()), test::case_name);

// Nesting where the tables lead from value to value

/// GeneralName directoryName around a SEQUENCE OF RDN whose only value is `value`.
Octets name_around(const Octets& type, const Octets& value) {
    return sequence({element(0x31, sequence({type, value}))});
}

/// A token whose TSTInfo names its authority by an attribute that holds a token (RFC 3161 appendix A) whose
/// TSTInfo ..
Octets token_of_tokens(int levels) {
    const Octets signature_time_stamp = element(0x06, "2a 86 48 86 f7 0d 01 09 10 02 0e");
    Octets token = test::sample_token();
    for (int level = 0; level < levels; ++level) {
        test::TokenParts parts;
        parts.tst_info =
            test::sample_tst_info(element(0xa0, element(0xa4, name_around(signature_time_stamp, token))));
        token = test::sample_token(parts);
    }
    return token;
}

TEST(HostileNesting, StampsInsideNamesInsideStampsHaveALimit) {
    test::CodecHeap heap;
    const auto decode = [](int levels) {
        CToken token;
        token.decode(test::blob_of(token_of_tokens(levels)));
    };
    const auto decode_response = [](int levels) {
        CResponse response;
        response.decode(test::blob_of(sequence({element(0x30, "02 01 00"), token_of_tokens(levels)})));
    };
    const auto decode_authenticode_request = [](int levels) {
        CMSRequest request;
        request.decode(test::blob_of(sequence({element(0x06, "2a 03"), token_of_tokens(levels)})));
    };
    EXPECT_NO_THROW(decode(3));
    EXPECT_NO_THROW(decode_response(3));
    EXPECT_NO_THROW(decode_authenticode_request(3));
    for (const int levels : {65, 300}) {
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decode(levels));
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decode_response(levels));
        EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decode_authenticode_request(levels));
    }
    EXPECT_EQ(heap.live_blocks(), 0u);
}

TEST(HostileNesting, ConstructedStringsHaveALimit) {
    const auto decode = [](int levels) {
        Octets content = element(0x04, "aa");
        for (int level = 0; level < levels; ++level) {
            content = element(0x24, content);
        }
        (void)fromOctetString(test::blob_of(content));
    };
    EXPECT_NO_THROW(decode(64));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decode(65));
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, decode(10'000));
}

TEST(HostileNesting, AKnownAttributeWithAStrayOctetForItsValueIsRefused) {
    // The value reads as the end of the message, so nothing is decoded under a type that the tables know.
    const Octets signing_time = element(0x06, "2a 86 48 86 f7 0d 01 09 05");
    const Octets stray = from_hex("17");
    const Octets tsa = element(0xa0, element(0xa4, name_around(signing_time, stray)));
    test::TokenParts parts;
    parts.tst_info = test::sample_tst_info(tsa);
    const CBlob token = test::blob_of(test::sample_token(parts));
    const CBlob response = test::blob_of(sequence({element(0x30, "02 01 00"), test::sample_token(parts)}));
    CToken token_object;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, token_object.decode(token));
    CResponse response_object;
    EXPECT_CODE(CRYPT_E_ASN1_INTERNAL, response_object.decode(response));
}

}  // namespace
}  // namespace Quillmark::PKI::TSP

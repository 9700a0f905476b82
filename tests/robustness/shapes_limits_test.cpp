// Limits: how deep, how long and how large something may be, the last that is taken and the first that is
// refused.

#include <gtest/gtest.h>

#include <cstdio>

#include "asn1/attribute.h"
#include "asn1/extension.h"
#include "asn1/general_name.h"
#include "asn1/name.h"
#include "asn1data/control_classes.h"
#include "asn1data/records.h"
#include "platform/cryptoapi.h"
#include "runtime/ber_decode.h"
#include "tests/robustness/shapes_element.h"
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

using namespace ASN1;
using namespace PKI::TSP;

constexpr Outcome kInternal = CRYPT_E_ASN1_INTERNAL;

Outcome read_octets(const CBlob& input) {
    return outcome_of([&] { (void)fromOctetString(input); });
}

Outcome read_bits(const CBlob& input) {
    ASN1BERDecodeBuffer buffer(input.pbData(), static_cast<int>(input.cbData()));
    buffer.init();
    const uint8_t* data;
    uint32_t numbits;
    return xd_bitstr(buffer.getCtxtPtr(), &data, &numbits, ASN1EXPL, 0);
}

Outcome read_text(const CBlob& input) {
    ASN1BERDecodeBuffer buffer(input.pbData(), static_cast<int>(input.cbData()));
    buffer.init();
    char* text;
    return xd_charstr(buffer.getCtxtPtr(), &text, ASN1EXPL, 12, 0);
}

template <class Control, class Record>
Outcome decode_record(const CBlob& input) {
    ASN1BERDecodeBuffer buffer(input.pbData(), static_cast<int>(input.cbData()));
    Record record;
    return Control(buffer, record).Decode();
}

Outcome read_message(const CBlob& input) {
    HCRYPTMSG message = CryptMsgOpenToDecode(PKCS_7_ASN_ENCODING, 0, 0, 0, nullptr, nullptr);
    const BOOL taken = CryptMsgUpdate(message, input.pbData(), static_cast<DWORD>(input.cbData()), 1);
    const Outcome outcome = taken != 0 ? kTaken : static_cast<Outcome>(GetLastError());
    CryptMsgClose(message);
    return outcome;
}

Outcome read_certificate(const CBlob& input) {
    const PCCERT_CONTEXT certificate =
        CertCreateCertificateContext(X509_ASN_ENCODING, input.pbData(), static_cast<DWORD>(input.cbData()));
    CertFreeCertificateContext(certificate);
    return certificate != nullptr ? kTaken : static_cast<Outcome>(GetLastError());
}

// Nesting: what lies in itself

struct Nest {
    const char* name;
    Way way;
    Octets (*make)(std::size_t levels);
    std::size_t deepest;  ///< levels that are taken; one more is refused
    Outcome outcome;      ///< of more levels
};

void PrintTo(const Nest& nest, std::ostream* out) {
    *out << nest.name;
}

Octets nested_messages(std::size_t levels) {
    const Octets header = element(0x30, "02 01 02 82 00 82 00");
    Octets message = wrap(0x30, join({header, element(0xb3, "05 00")}));
    for (; levels != 0; --levels) {
        message = wrap(0x30, join({header, wrap(0xb4, wrap(0x30, message))}));
    }
    return message;
}

/// A SignedData whose content is a SignedData, with 1000 octets at the innermost place.
Octets messages_in_messages(std::size_t levels) {
    const Octets signed_data_type = element(0x06, "2a 86 48 86 f7 0d 01 07 02");
    const auto signed_data = [](const Octets& type, const Octets& content) {
        return wrap(0x30,
                    join({element(0x02, "03"), element(0x31, ""),
                          wrap(0x30, join({type, wrap(0xa0, wrap(0x04, content))})), element(0x31, "")}));
    };
    Octets data = signed_data(kDataType, filled(0x04, 1000));
    for (; levels != 0; --levels) {
        data = signed_data(signed_data_type, data);
    }
    return wrap(0x30, join({signed_data_type, wrap(0xa0, data)}));
}

constexpr auto decode_pki_message = decode_record<asn1data::ASN1C_PKIMessage, asn1data::ASN1T_PKIMessage>;
constexpr auto decode_content_info = decode_record<asn1data::ASN1C_ContentInfo, asn1data::ASN1T_ContentInfo>;

const Nest kNests[] = {
    {"OctetString", read_octets, [](std::size_t n) { return nested(0x24, n, element(0x04, "aa")); }, 64,
     kInternal},
    {"BitString", read_bits, [](std::size_t n) { return nested(0x23, n, element(0x03, "00 aa")); }, 64,
     RT_E_NOTSUPP},
    {"Text", read_text, [](std::size_t n) { return wrap(0x2c, nested(0x24, n - 1, element(0x04, "aa"))); },
     64, RT_E_NOTSUPP},
    {"MessageInMessage", decode_pki_message, nested_messages, 64, RT_E_NOTSUPP},
    {"SignedDataInSignedData", decode_content_info, messages_in_messages, 63, RT_E_NOTSUPP},
    {"StampInNameInToken", decode_value<CToken>, [](std::size_t n) { return tokens_in_names(n); }, 21,
     kInternal},
    {"StampInNameInResponse", decode_value<CResponse>,
     [](std::size_t n) { return response_of(tokens_in_names(n)); }, 20, kInternal},
    {"StampInNameInExtension", decode_value<CExtensions>,
     [](std::size_t n) {
         const Octets names = wrap(0x30, wrap(0xa4, name_around(tokens_in_names(n))));
         return wrap(0x30, wrap(0x30, join({element(0x06, "55 1d 11"), wrap(0x04, names)})));
     },
     20, kInternal},
    {"StampInName", decode_value<CName>, [](std::size_t n) { return name_around(tokens_in_names(n)); }, 20,
     kInternal},
    {"ContentOfSegmentsAtTheService", read_message,
     [](std::size_t n) { return token_of({.content = nested(0x24, n, element(0x04, "aa"))}); }, 32,
     CRYPT_E_ASN1_CORRUPT},
    {"IndefiniteLengthsAtTheService", read_message,
     [](std::size_t n) {
         return token_of({.certificates = join({nested_headers(0x30, n), Octets(2 * n, 0x00)})});
     },
     32, CRYPT_E_ASN1_CORRUPT},
};

class NestedInput : public testing::TestWithParam<Nest> {};

TEST_P(NestedInput, HasALimitAndFitsTheStack) {
    const Nest& nest = GetParam();
    // Records of each level, and the octets of the inner ones copied by the outer ones.
    constexpr double kMemory = 150;
    std::size_t deepest = 0;
    while (deepest < 100 && nest.way(blob_of(nest.make(deepest + 1))) == kTaken) {
        ++deepest;
    }
    EXPECT_EQ(deepest, nest.deepest);
    std::printf("%s\n", nest.name);
    expect_bounds("the deepest", nest.way, nest.make(nest.deepest), kTaken, kMemory);
    expect_bounds("one deeper", nest.way, nest.make(nest.deepest + 1), nest.outcome, kMemory);
    expect_bounds("much deeper", nest.way, nest.make(1000), nest.outcome, kMemory);
}

INSTANTIATE_TEST_SUITE_P(Limits, NestedInput, testing::ValuesIn(kNests), case_name);

// Object identifiers: 128 arcs of 32 bits in the library, any number of arcs of 64 bits at the service

struct IdentifierCase {
    const char* name;
    Way way;
    Octets (*around)(const Octets& identifier);
    Outcome beyond_64_bits = kTaken;  ///< of an arc that is larger
};

void PrintTo(const IdentifierCase& row, std::ostream* out) {
    *out << row.name;
}

const IdentifierCase kIdentifiers[] = {
    {"RequestPolicy", decode_value<CRequest>, [](const Octets& id) { return request_with(id); }},
    {"RequestHashAlgorithm", decode_value<CRequest>,
     [](const Octets& id) {
         return sequence({element(0x02, "01"), sequence({sequence({id}), element(0x04, "aa")})});
     }},
    {"RequestExtension", decode_value<CRequest>,
     [](const Octets& id) {
         return request_with(wrap(0xa0, sequence({id, element(0x04, "")})));
     }},
    {"TokenAttribute", decode_value<CToken>,
     [](const Octets& id) { return token_of({.signers = signer_with(attribute_of(element(0x05, ""), id))}); },
     CRYPT_E_ASN1_CORRUPT},
    {"TokenAuthority", decode_value<CToken>,
     [](const Octets& id) {
         Element registered = element_of(id);
         registered.identifier = {0x88};
         return token_of({.content = wrap(0x04, tst_info_with(wrap(0xa0, encode(registered))))});
     }},
    {"ResponseTokenAttribute", decode_value<CResponse>,
     [](const Octets& id) {
         return response_of(token_of({.signers = signer_with({}, attribute_of(element(0x05, ""), id))}));
     }},
    {"AuthenticodeRequest", decode_value<CMSRequest>,
     [](const Octets& id) {
         return sequence({id, sequence({kDataType, element(0xa0, element(0x04, "aa"))})});
     }},
    {"Extension", decode_value<CExtension>,
     [](const Octets& id) {
         return sequence({id, element(0x04, "")});
     }},
    {"Attribute", decode_value<CAttribute>,
     [](const Octets& id) { return attribute_of(element(0x05, ""), id); }},
};

class LongIdentifier : public testing::TestWithParam<IdentifierCase> {};

TEST_P(LongIdentifier, HasAtMost128Arcs) {
    const IdentifierCase& row = GetParam();
    for (const std::size_t octets : {1, 5}) {
        expect_bounds(row.name, row.way, row.around(long_object_id(128, octets)), kTaken, 0);
        expect_bounds(row.name, row.way, row.around(long_object_id(129, octets)), kInternal, 0);
        expect_bounds(row.name, row.way, row.around(long_object_id(10'000, octets)), kInternal, 6);
    }
}

TEST_P(LongIdentifier, MayHaveLargeArcs) {
    // Intended: an arc is gathered in 32 bits, and what does not fit is lost. The service is asked first
    // about a token, and knows 64 bits.
    const IdentifierCase& row = GetParam();
    expect_bounds(row.name, row.way, row.around(long_object_id(3, 6)), kTaken, 0);
    for (const std::size_t octets : {10, 11, 10'000}) {
        expect_bounds(row.name, row.way, row.around(long_object_id(3, octets)), row.beyond_64_bits, 6);
    }
}

INSTANTIATE_TEST_SUITE_P(Limits, LongIdentifier, testing::ValuesIn(kIdentifiers), case_name);

TEST(LongIdentifierAtTheService, HasAnyNumberOfArcsOf64Bits) {
    const auto read = [](const char* name, const Octets& id, Outcome outcome) {
        expect_bounds(name, read_message, token_of({.type = id}), outcome, 8);
        expect_bounds(name, read_certificate,
                      certificate_of({.extensions = sequence({id, element(0x04, "")})}), outcome, 8);
    };
    read("128 arcs", long_object_id(128), kTaken);
    read("129 arcs", long_object_id(129), kTaken);
    read("10,000 arcs", long_object_id(10'000), kTaken);
    const Octets largest = element(0x06, "2a 81 ff ff ff ff ff ff ff ff 7f");
    const Octets too_large = element(0x06, "2a 82 80 80 80 80 80 80 80 80 00");
    read("2^64 - 1", largest, kTaken);
    read("2^64", too_large, CRYPT_E_ASN1_CORRUPT);
}

// Lengths that lie, and tags of large numbers: refused at once, before memory is taken for them

struct Decoder {
    const char* name;
    Way way;
    Octets sample;
};

const std::vector<Decoder>& decoders() {
    static const std::vector<Decoder> list = {
        {"CRequest", decode_value<CRequest>, request_with({})},
        {"CToken", decode_value<CToken>, token_of({})},
        {"CResponse", decode_value<CResponse>, response_of(token_of({}))},
        {"CMSRequest", decode_value<CMSRequest>,
         sequence({element(0x06, "2a 03"), sequence({kDataType, element(0xa0, element(0x04, "aa"))})})},
        {"CExtensions", decode_value<CExtensions>, element(0x30, "30 06 06 02 2a 05 04 00")},
        {"CGeneralNames", decode_value<CGeneralNames>,
         element(0x30, "82 01 61 a4 0d 30 0b 31 09 30 07 06 03 55 04 03 0c 00")},
        {"CName", decode_value<CName>, element(0x30, "31 09 30 07 06 03 55 04 03 0c 00")},
        {"CAttributes", decode_value<CAttributes>, element(0x31, "30 08 06 02 2a 04 31 02 05 00")},
        {"OctetString", read_octets, element(0x24, "04 02 aa bb 24 03 04 01 cc")},
        {"ContentInfo", decode_content_info, token_of({})},
        {"Service", read_message, token_of({})},
        {"ServiceCertificate", read_certificate, certificate_of({})},
    };
    return list;
}

/// What any failing decode may take, whatever a length announces.
constexpr std::size_t kSmall = 48 << 10;

/// What libcrypto makes at its first use is no part of what a decode takes.
void use_once(const Decoder& decoder) {
    decoder.way(blob_of(decoder.sample));
}

/// Expects that nothing bad comes of the octets. The worst memory is kept for the table.
void try_lie(const Decoder& decoder, const Octets& octets, std::size_t& worst) {
    const CBlob input = blob_of(octets);
    const Cost cost = count([&] { decoder.way(input); });
    EXPECT_LE(cost.peak, kSmall) << decoder.name << " " << to_hex(octets);
    worst = std::max(worst, cost.peak);
}

TEST(LyingLength, TakesNoMemory) {
    for (const Decoder& decoder : decoders()) {
        use_once(decoder);
        std::size_t worst = 0;
        for (std::size_t at = 1; at < decoder.sample.size(); ++at) {
            for (const char* length :
                 {"84 7f ff ff fe", "84 7f ff ff ff", "84 80 00 00 00", "84 80 00 00 01", "84 ff ff ff fe",
                  "84 ff ff ff ff", "85 01 00 00 00 00", "88 ff ff ff ff ff ff ff ff"}) {
                Octets octets = decoder.sample;
                octets.erase(octets.begin() + static_cast<std::ptrdiff_t>(at));
                const Octets lie = from_hex(length);
                octets.insert(octets.begin() + static_cast<std::ptrdiff_t>(at), lie.begin(), lie.end());
                try_lie(decoder, octets, worst);
            }
        }
        std::printf("%-20s %6zu octets at most\n", decoder.name, worst);
    }
}

TEST(LargeTag, TakesNoMemory) {
    for (const Decoder& decoder : decoders()) {
        use_once(decoder);
        std::size_t worst = 0;
        for (std::size_t at = 0; at < decoder.sample.size(); ++at) {
            for (const char* tag :
                 {"3f 1e", "3f 1f", "3f 81 ff ff ff 7f", "3f 82 80 80 80 00", "bf 8f ff ff ff 7f",
                  "bf 90 80 80 80 00", "3f 80 80 80 80 80 80 80 01", "1f ff ff ff ff ff ff ff 7f"}) {
                Octets octets = decoder.sample;
                octets.erase(octets.begin() + static_cast<std::ptrdiff_t>(at));
                const Octets large = from_hex(tag);
                octets.insert(octets.begin() + static_cast<std::ptrdiff_t>(at), large.begin(), large.end());
                try_lie(decoder, octets, worst);
            }
        }
        std::printf("%-20s %6zu octets at most\n", decoder.name, worst);
    }
}

}  // namespace
}  // namespace Quillmark::test

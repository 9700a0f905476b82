// What is written and read depends neither on the time zone nor on the locale of the process, and dates past
// January 2038, where 32-bit clocks end, are dates like others.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <locale>
#include <optional>
#include <ostream>
#include <string>

#include "asn1/attribute.h"
#include "asn1/codec.h"
#include "asn1/extension_value.h"
#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "runtime/big_integer.h"
#include "runtime/message_buffer.h"
#include "runtime/object_id.h"
#include "runtime/time_class.h"
#include "tests/robustness/time_stamps.h"
#include "tests/support/blob.h"
#include "values/datetime.h"
#include "values/result.h"

// Read by the leak sanitizer: the C library does not free the path of a locale that is not of the system.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
    return "leak:__argz_add_sep\n";
}

namespace Quillmark::test {
namespace {

using namespace ASN1;
using namespace PKI::TSP;

// Environments

struct Environment {
    const char* name;
    const char* zone;    // a value of TZ
    const char* locale;  // null for the one of C
};

void PrintTo(const Environment& environment, std::ostream* out) {
    *out << environment.zone << " " << (environment.locale == nullptr ? "C" : environment.locale);
}

constexpr Environment kUniversalTime = {"UniversalTimeInC", "UTC0", nullptr};

constexpr Environment kEnvironments[] = {
    kUniversalTime,
    {"CentralEurope", "CET-1CEST,M3.5.0,M10.5.0/3", nullptr},
    {"NewYork", "EST5EDT,M3.2.0,M11.1.0", nullptr},
    {"FourteenHoursAhead", "<+14>-14", nullptr},
    {"QuarterOfAnHour", "<+1245>-12:45", nullptr},
    {"UnknownZone", "No/Such/Zone", nullptr},
    {"GermanInCentralEurope", "CET-1CEST,M3.5.0,M10.5.0/3", "de_DE.UTF-8"},
    {"TurkishThreeHoursAhead", "<+03>-3", "tr_TR.UTF-8"},
    {"TurkishOfSingleOctets", "<+03>-3", "tr_TR.ISO-8859-9"},
};

/// The process in an environment, for the life of the object.
class InEnvironment {
  public:
    explicit InEnvironment(const Environment& environment) {
        setenv("LOCPATH", QUILLMARK_TEST_LOCALES, 1);
        setenv("TZ", environment.zone, 1);
        tzset();
        if (environment.locale != nullptr) {
            there_ = std::setlocale(LC_ALL, environment.locale) != nullptr;
            if (there_) {
                std::locale::global(std::locale(environment.locale));
            }
        }
    }
    ~InEnvironment() {
        std::locale::global(std::locale::classic());
        std::setlocale(LC_ALL, "C");
        unsetenv("LOCPATH");
        unsetenv("TZ");
        tzset();
    }
    InEnvironment(const InEnvironment&) = delete;
    InEnvironment& operator=(const InEnvironment&) = delete;

    /// False when there is no such locale.
    bool is_there() const { return there_; }

  private:
    bool there_ = true;
};

// Outputs

struct Output {
    const char* name;
    std::function<std::string()> make;
    std::string expected;
};

/// Octets as digits without blanks between them.
std::string digits(const CBlob& octets) {
    std::string text = hex(octets);
    std::erase(text, ' ');
    return text;
}

std::string ascii(const CWStringProxy& text) {
    const std::wstring wide = text.c_str();
    return std::string(wide.begin(), wide.end());
}

std::string generalized(const char* text) {
    return CDateTime(text).getGeneralizedTime().c_str();
}

/// Everything about a point in time that is written, in one line.
std::string forms_of(const CDateTime& time) {
    return std::string(time.getGeneralizedTime().c_str()) + " " + time.tostring().c_str() + " " +
           ascii(time.towstring()) + " " + toXsdDateTimeString(time).c_str() + " " +
           std::to_string(time.getTime()) + " " + std::to_string(time.year()) + "-" +
           std::to_string(time.month()) + "-" + std::to_string(time.day()) + " " +
           digits(CTimeChoice(time).encode());
}

/// What a time class makes of the text, and of its fields when they are set one by one.
template <class Time>
std::string read_and_written_by(const char* text) {
    ASN1BEREncodeBuffer buffer;
    Time read(buffer, text);
    const long seconds = read.getTime();
    const char* place = nullptr;
    Time written(buffer, place, 1);
    written.setTime(seconds, 0);
    char copy[64];
    return std::to_string(seconds) + " " + written.getTimeString(copy, sizeof copy);
}

std::string number_text(const char* text, int radix) {
    ASN1BEREncodeBuffer buffer;
    ASN1BigInt value;
    rtBigIntInit(&value);
    char out[200];
    if (rtBigIntSetStr(buffer.getCtxtPtr(), &value, text, 0) != RT_OK ||
        rtBigIntToString(buffer.getCtxtPtr(), &value, radix, out, sizeof out) != RT_OK) {
        return "failed";
    }
    return out;
}

std::string object_id_text(const char* text) {
    ASN1OBJID oid;
    char out[200];
    return rtStrToOid(text, &oid) == 1 && rtOidToStr(&oid, out, sizeof out - 1) == 1 ? out : "failed";
}

std::string request_octets() {
    CRequest request(CAlgorithmIdentifierEx("1.2.3"), blob("aa"), true);
    request.put_reqPolicy("1.2.840.113549");
    return digits(request.encode());
}

std::string token_time(const CDateTime& time) {
    const CToken token("1.2.3", CAlgorithmIdentifierEx("1.2.3"), blob("aa"), number("05"), time, false);
    return std::string(token.get_genTimeZ()) + " " + token.get_genTime().getGeneralizedTime().c_str();
}

const Output kOutputs[] = {
    // The first second that a signed 32-bit clock cannot count.
    {"TimePast2038", [] { return forms_of(CDateTime(2038u, 1u, 19u, 3u, 14u, 8u, 0u, 0u)); },
     "20380119031408Z 19.01.2038 03:14:08 19.01.2038 03:14:08 2038-01-19T03:14:08Z 2147483648 2038-1-19 "
     "170d3338303131393033313430385a"},
    {"TimeWithFraction", [] { return forms_of(CDateTime(2024u, 7u, 1u, 23u, 59u, 59u, 120u, 0u)); },
     "20240701235959.12Z 01.07.2024 23:59:59.120 01.07.2024 23:59:59.120 2024-07-01T23:59:59.120Z 1719878399 "
     "2024-7-1 170d3234303730313233353935395a"},
    // RFC 5652 11.3: UTCTime through 2049, GeneralizedTime from 2050 on.
    {"LastUTCTime",
     [] { return digits(CTimeChoice(CDateTime(2049u, 12u, 31u, 23u, 59u, 59u, 0u, 0u)).encode()); },
     "170d3439313233313233353935395a"},
    {"FirstGeneralizedTime",
     [] { return digits(CTimeChoice(CDateTime(2050u, 1u, 1u, 0u, 0u, 0u, 0u, 0u)).encode()); },
     "180f32303530303130313030303030305a"},
    // The first second that an unsigned 32-bit clock cannot count.
    {"TimePast2106", [] { return forms_of(CDateTime(4294967296LL, 0u)); },
     "21060207062816Z 07.02.2106 06:28:16 07.02.2106 06:28:16 2106-02-07T06:28:16Z 4294967296 2106-2-7 "
     "180f32313036303230373036323831365a"},
    {"LastTimeOfFourDigits", [] { return forms_of(CDateTime("99991231235959Z")); },
     "99991231235959Z 31.12.9999 23:59:59 31.12.9999 23:59:59 9999-12-31T23:59:59Z 253402300799 9999-12-31 "
     "180f39393939313233313233353935395a"},
    {"TimeBefore1970", [] { return generalized("19691231235959Z"); }, "19691231235959Z"},
    {"TimeInTheHourThatSummerTimeSkips", [] { return generalized("20240331023000Z"); }, "20240331023000Z"},
    {"TimeInTheHourThatComesTwice", [] { return generalized("20241027023000Z"); }, "20241027023000Z"},
    {"TimeOfXmlText",
     [] {
         return std::string(
             fromXsdDateTimeString("2040-02-29T12:00:00.25+02:30").getGeneralizedTime().c_str());
     },
     "20400229093000.25Z"},
    {"TimeOfXmlTextWithoutZone",
     [] { return std::string(fromXsdDateTimeString("2040-02-29T12:00:00.5").getGeneralizedTime().c_str()); },
     "20400229120000.5Z"},
    {"TimeMovedByMonths",
     [] {
         const CDateTime time(2040u, 1u, 31u, 0u, 0u, 0u, 0u, 0u);
         return std::string(DateAddA("m", 1, time).getGeneralizedTime().c_str()) + " " +
                DateAddW(L"y", 100, time).getGeneralizedTime().c_str();
     },
     "20400229000000Z 21400131000000Z"},
    {"Span",
     [] {
         return std::string(
             (CDateTimeSpan::OneYear() * 50 + CDateTimeSpan(1, 0)).getGeneralizedTime().c_str());
     },
     "00500000000001Z"},
    {"GeneralizedTimeClass", [] { return read_and_written_by<ASN1CGeneralizedTime>("20400229120000Z"); },
     "2214129600 20400229120000Z"},
    {"GeneralizedTimeClassWithOffset",
     [] { return read_and_written_by<ASN1CGeneralizedTime>("20400229120000+0230"); },
     "2214120600 20400229093000Z"},
    {"UTCTimeClass", [] { return read_and_written_by<ASN1CUTCTime>("400229120000Z"); },
     "2214129600 400229120000Z"},
    {"SigningTime",
     [] { return digits(CAttrSigningTime(CDateTime(2040u, 2u, 29u, 12u, 0u, 0u, 0u, 0u)).get_value()); },
     "170d3430303232393132303030305a"},
    {"TimeOfAToken", [] { return token_time(CDateTime(2040u, 2u, 29u, 12u, 0u, 0u, 250u, 0u)); },
     "20400229120000.25Z 20400229120000.25Z"},
    {"Request", request_octets,
     "3019020101300930040602"
     "2a03"
     "0401aa06062a864886f70d0101ff"},
    {"AuthenticodeRequest", [] { return digits(authenticode_request().encode()); },
     "302c060a2b060104018237030201"
     "310b300906022a093103020101"
     "301106092a864886f70d010701a0040402aabb"},
    {"DecimalNumber", [] { return number_text("-1234567890123456789012345", 10); },
     "-1234567890123456789012345"},
    {"HexadecimalNumber", [] { return number_text("0xFEDCBA9876543210", 16); }, "fedcba9876543210"},
    {"ObjectIdentifier", [] { return object_id_text("1.2.840.113549.1.9.16.1.4"); },
     "1.2.840.113549.1.9.16.1.4"},
    {"HexadecimalText",
     [] {
         CBlob octets;
         octets.readFromHexString("FE DC ba 98 0I");
         return std::string(octets.writeToHexString(2).c_str());
     },
     "FEDC BA98"},
    {"LanguageTag", [] { return std::string(CLanguageTag("EN-INDIA").tostring().c_str()); }, "en-india"},
    {"LanguageTagOfWideText", [] { return std::string(CLanguageTag(L"IT-IT").tostring().c_str()); }, "it-it"},
    {"FreeText",
     [] {
         CPKIStatusInfo status(PKIStatus_rejection);
         status.put_statusString(CPKIFreeText(L"I\u0130\u0131i", CLanguageTag("TR")));
         return digits(status.encode());
     },
     // The tag in front of the text: U+0E01, the letters in lower case in the block of U+0E00, U+0E7E.
     "30190201023014"
     "0c12"
     "e0b881"
     "e0b9b4"
     "e0b9b2"
     "e0b9be"
     "49"
     "c4b0"
     "c4b1"
     "69"},
    {"Utf8String", [] { return digits(encodeCharString(L"\u0130\u00e4\u20ac", StringTypeUTF8)); },
     "0c07c4b0c3a4e282ac"},
    {"PrintableString", [] { return digits(encodeCharString(L"TIti", StringTypePrintable)); },
     "130454497469"},
    {"TextOfUtf8String",
     [] { return std::to_string(static_cast<long>(decodeCharString(blob("0c 02 c4 b0")).c_str()[0])); },
     "304"},
    {"NarrowedText", [] { return std::string(tostring(L"\u0130I").c_str()); }, "\xc4\xb0I"},
    {"WidenedText", [] { return std::to_string(static_cast<long>(towstring("\xc4\xb0").c_str()[0])); },
     "304"},
    {"Name", [] { return digits(CName(L"CN=I,SERIALNUMBER=1234567").encode()); },
     "301e"
     "310a300806035504030c0149"
     "3110300e06035504051307"
     "31323334353637"},
    {"ResultName", [] { return std::string(result_name(CRYPT_E_ASN1_INTERNAL)); }, "CRYPT_E_ASN1_INTERNAL"},
};

class OutputIn : public testing::TestWithParam<Environment> {
  protected:
    void SetUp() override {
        if (!environment_.is_there()) {
            GTEST_SKIP() << "no locale " << GetParam().locale
                         << " (localedef and the locale sources make it)";
        }
    }

    InEnvironment environment_{GetParam()};
};

TEST_P(OutputIn, IsAsEverywhere) {
    for (const Output& output : kOutputs) {
        EXPECT_EQ(output.make(), output.expected) << output.name;
    }
}

/// A whole token: its RSA signature is the same each time.
CBlob rsa_token() {
    CToken token = full_token();
    const TestKey key("tsa_rsa2048");
    token.sign(key.provider(), AT_SIGNATURE, certificate("tsa_rsa2048"), CAlgorithmIdentifierEx(kSha256Text));
    return token.encode();
}

TEST_P(OutputIn, OfASignedTokenIsAsEverywhere) {
    const CBlob here = rsa_token();
    const InEnvironment universal(kUniversalTime);
    EXPECT_EQ(here, rsa_token());
}

/// A stamp of the Authenticode exchange, its signing time past what 32-bit clocks count.
CBlob rsa_stamp() {
    CMSStamp stamp(blob("04 02 aa bb"), CDateTime(2040u, 2u, 29u, 12u, 0u, 0u, 0u, 0u));
    const TestKey key("tsa_rsa2048");
    stamp.sign(key.provider(), AT_SIGNATURE, certificate("tsa_rsa2048"), CAlgorithmIdentifierEx(kSha256Text));
    return stamp.encode();
}

TEST_P(OutputIn, OfASignedStampIsAsEverywhere) {
    const CBlob here = rsa_stamp();
    CMSStamp read;
    read.decode(here);
    EXPECT_STREQ(read.get_signingTime().getGeneralizedTime().c_str(), "20400229120000Z");
    EXPECT_TRUE(read.verify(certificate("tsa_rsa2048")));
    const InEnvironment universal(kUniversalTime);
    EXPECT_EQ(here, rsa_stamp());
}

INSTANTIATE_TEST_SUITE_P(Environments, OutputIn, testing::ValuesIn(kEnvironments),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace Quillmark::test

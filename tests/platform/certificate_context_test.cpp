// Certificate contexts of certificates that the openssl command made, and of bytes that are none.

#include <cstring>
#include <string>
#include <thread>

#include "tests/platform/service.h"

namespace Quillmark::test {
namespace {

PCCERT_CONTEXT create(const Octets& der) {
    return CertCreateCertificateContext(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING, der.data(),
                                        static_cast<DWORD>(der.size()));
}

Octets octets(const CRYPT_DATA_BLOB& blob) {
    return {blob.pbData, blob.pbData + blob.cbData};
}

SYSTEMTIME date(const FILETIME& time) {
    SYSTEMTIME fields{};
    FileTimeToSystemTime(&time, &fields);
    return fields;
}

TEST(CertificateContext, HoldsCopyOfEncoding) {
    Octets der = read_pki("tsa_p256.der");
    const PCCERT_CONTEXT context = create(der);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(context->dwCertEncodingType, X509_ASN_ENCODING | PKCS_7_ASN_ENCODING);
    EXPECT_EQ(context->hCertStore, nullptr);
    EXPECT_NE(context->pbCertEncoded, der.data());
    EXPECT_EQ(Octets(context->pbCertEncoded, context->pbCertEncoded + context->cbCertEncoded), der);
    EXPECT_TRUE(CertFreeCertificateContext(context));
}

TEST(CertificateContext, HasSerialNumberWithLeastSignificantOctetFirst) {
    const Certificate certificate("tsa_p256.der");
    // 0xF123456789ABCDEF is positive, so DER has a sign octet in front of it.
    EXPECT_EQ(to_hex(octets(certificate.info()->SerialNumber)), "ef cd ab 89 67 45 23 f1 00");
}

TEST(CertificateContext, HasFieldsOfCertificate) {
    const Certificate certificate("tsa_p256.der");
    const Certificate authority("ca.der");
    const CERT_INFO& info = *certificate.info();
    EXPECT_EQ(info.dwVersion, 2u);
    EXPECT_STREQ(info.SignatureAlgorithm.pszObjId, "1.2.840.10045.4.3.2");
    EXPECT_EQ(info.SignatureAlgorithm.Parameters.cbData, 0u);
    EXPECT_EQ(octets(info.Issuer), octets(authority.info()->Subject));
    EXPECT_STREQ(info.SubjectPublicKeyInfo.Algorithm.pszObjId, "1.2.840.10045.2.1");
    EXPECT_EQ(octets(info.SubjectPublicKeyInfo.Algorithm.Parameters), object_id("1.2.840.10045.3.1.7"));
    EXPECT_EQ(info.SubjectPublicKeyInfo.PublicKey.cbData, 65u);
    EXPECT_EQ(info.SubjectPublicKeyInfo.PublicKey.cUnusedBits, 0u);
    EXPECT_EQ(info.SubjectPublicKeyInfo.PublicKey.pbData[0], 4);
    EXPECT_EQ(info.IssuerUniqueId.cbData, 0u);
    EXPECT_EQ(info.SubjectUniqueId.cbData, 0u);
}

TEST(CertificateContext, HasNameWithItsHeader) {
    const Certificate certificate("ca.der");
    const Octets name = octets(certificate.info()->Subject);
    const std::string text(name.begin(), name.end());
    EXPECT_EQ(name[0], 0x30);
    EXPECT_EQ(name[1] + 2u, name.size());
    EXPECT_NE(text.find("Test Authority"), std::string::npos);
}

TEST(CertificateContext, HasNullParametersOfRsa) {
    const Certificate certificate("tsa_rsa2048.der");
    EXPECT_EQ(to_hex(octets(certificate.info()->SubjectPublicKeyInfo.Algorithm.Parameters)), "05 00");
}

TEST(CertificateContext, HasExtensionsInOrder) {
    const Certificate certificate("tsa_p256.der");
    const CERT_INFO& info = *certificate.info();
    ASSERT_EQ(info.cExtension, 5u);
    EXPECT_STREQ(info.rgExtension[0].pszObjId, "2.5.29.19");
    EXPECT_EQ(info.rgExtension[0].fCritical, 1);
    EXPECT_EQ(to_hex(octets(info.rgExtension[0].Value)), "30 00");
    EXPECT_STREQ(info.rgExtension[2].pszObjId, "2.5.29.37");
    EXPECT_EQ(octets(info.rgExtension[2].Value), sequence({object_id("1.3.6.1.5.5.7.3.8")}));
    EXPECT_STREQ(info.rgExtension[3].pszObjId, "2.5.29.14");
    EXPECT_EQ(info.rgExtension[3].fCritical, 0);
}

// A certificate put together by hand; only its shape counts.
struct Parts {
    Octets version = {};
    Octets serial = element(0x02, "05");
    Octets algorithm = sequence({object_id("1.2.3.4")});
    Octets issuer = element(0x30, "");
    Octets not_before = text_element(0x17, "500102030405Z");
    Octets not_after = text_element(0x18, "20491231235959Z");
    Octets subject = element(0x30, "31 00");
    Octets public_key = sequence({sequence({object_id("2.999"), element(0x05, "")}), element(0x03, "03 f8")});
    Octets behind = {};
    Octets signature = element(0x03, "00 01");
};

Octets certificate_of(const Parts& parts) {
    return sequence({sequence({parts.version, parts.serial, parts.algorithm, parts.issuer,
                               sequence({parts.not_before, parts.not_after}), parts.subject, parts.public_key,
                               parts.behind}),
                     parts.algorithm, parts.signature});
}

TEST(CertificateContext, ReadsVersion1WithoutExtensions) {
    const PCCERT_CONTEXT context = create(certificate_of({}));
    ASSERT_NE(context, nullptr) << std::hex << GetLastError();
    EXPECT_EQ(context->pCertInfo->dwVersion, 0u);
    EXPECT_EQ(context->pCertInfo->cExtension, 0u);
    EXPECT_EQ(context->pCertInfo->rgExtension, nullptr);
    EXPECT_EQ(context->pCertInfo->SubjectPublicKeyInfo.PublicKey.cUnusedBits, 3u);
    EXPECT_STREQ(context->pCertInfo->SubjectPublicKeyInfo.Algorithm.pszObjId, "2.999");
    CertFreeCertificateContext(context);
}

TEST(CertificateContext, ReadsBothTimeForms) {
    const PCCERT_CONTEXT context = create(certificate_of({}));
    ASSERT_NE(context, nullptr);
    const SYSTEMTIME first = date(context->pCertInfo->NotBefore);
    EXPECT_EQ(first.wYear, 1950);
    EXPECT_EQ(first.wMonth, 1);
    EXPECT_EQ(first.wDay, 2);
    EXPECT_EQ(first.wHour, 3);
    EXPECT_EQ(first.wMinute, 4);
    EXPECT_EQ(first.wSecond, 5);
    const SYSTEMTIME last = date(context->pCertInfo->NotAfter);
    EXPECT_EQ(last.wYear, 2049);
    EXPECT_EQ(last.wSecond, 59);
    CertFreeCertificateContext(context);
}

TEST(CertificateContext, TakesTwoDigitYearsBelow50AsTheNextCentury) {
    const PCCERT_CONTEXT context =
        create(certificate_of({.not_before = text_element(0x17, "491231000000Z")}));
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(date(context->pCertInfo->NotBefore).wYear, 2049);
    CertFreeCertificateContext(context);
}

TEST(CertificateContext, GivesZeroForATimeThatCannotBeRead) {
    for (const char* text : {"500102030405", "501302030405Z", "5001020304Z", "50010203040aZ", ""}) {
        const PCCERT_CONTEXT context = create(certificate_of({.not_before = text_element(0x17, text)}));
        ASSERT_NE(context, nullptr) << text;
        EXPECT_EQ(context->pCertInfo->NotBefore.dwLowDateTime, 0u) << text;
        EXPECT_EQ(context->pCertInfo->NotBefore.dwHighDateTime, 0u) << text;
        CertFreeCertificateContext(context);
    }
}

TEST(CertificateContext, ReadsUniqueIdentifiers) {
    const PCCERT_CONTEXT context =
        create(certificate_of({.behind = join({element(0x81, "00 aa bb"), element(0x82, "04 f0")})}));
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(context->pCertInfo->IssuerUniqueId.cbData, 2u);
    EXPECT_EQ(context->pCertInfo->SubjectUniqueId.cbData, 1u);
    EXPECT_EQ(context->pCertInfo->SubjectUniqueId.cUnusedBits, 4u);
    CertFreeCertificateContext(context);
}

struct BadCase {
    const char* name;
    Octets input;
    DWORD code;
};

void PrintTo(const BadCase& row, std::ostream* out) {
    *out << row.name;
}

class BadCertificate : public testing::TestWithParam<BadCase> {};

TEST_P(BadCertificate, IsRefused) {
    EXPECT_TRUE(fails_with(GetParam().code, create(GetParam().input) != nullptr));
}

const BadCase kBad[] = {
    {"OtherTag", from_hex("31 00"), CRYPT_E_ASN1_BADTAG},
    {"EmptySequence", from_hex("30 00"), CRYPT_E_ASN1_CORRUPT},
    {"OctetsBehind", join({certificate_of({}), {0}}), CRYPT_E_ASN1_CORRUPT},
    {"LongLength", from_hex("30 85 00 00 00 00 00"), CRYPT_E_ASN1_LARGE},
    {"Version4", certificate_of({.version = element(0xA0, element(0x02, "03"))}), CRYPT_E_ASN1_CORRUPT},
    {"VersionWithoutOctets", certificate_of({.version = element(0xA0, element(0x02, ""))}),
     CRYPT_E_ASN1_CORRUPT},
    {"VersionOfTwoOctets", certificate_of({.version = element(0xA0, element(0x02, "00 02"))}),
     CRYPT_E_ASN1_CORRUPT},
    {"SignatureWithoutUnusedBitsOctet", certificate_of({.signature = element(0x03, "")}),
     CRYPT_E_ASN1_CORRUPT},
    {"EmptySerialNumber", certificate_of({.serial = element(0x02, "")}), CRYPT_E_ASN1_CORRUPT},
    {"IssuerOfOtherTag", certificate_of({.issuer = element(0x31, "")}), CRYPT_E_ASN1_BADTAG},
    {"TimeOfOtherTag", certificate_of({.not_before = element(0x04, "")}), CRYPT_E_ASN1_BADTAG},
    {"AlgorithmWithoutOid", certificate_of({.algorithm = sequence({element(0x06, "")})}),
     CRYPT_E_ASN1_CORRUPT},
    {"KeyWithEightUnusedBits",
     certificate_of({.public_key = sequence({sequence({object_id("2.999")}), element(0x03, "08 00")})}),
     CRYPT_E_ASN1_CORRUPT},
    {"KeyWithoutUnusedBitsOctet",
     certificate_of({.public_key = sequence({sequence({object_id("2.999")}), element(0x03, "")})}),
     CRYPT_E_ASN1_CORRUPT},
    {"UnknownFieldBehind", certificate_of({.behind = element(0xA4, "")}), CRYPT_E_ASN1_CORRUPT},
    {"ExtensionWithoutValue",
     certificate_of({.behind = element(0xA3, sequence({sequence({object_id("2.5.29.14")})}))}),
     CRYPT_E_ASN1_CORRUPT},
    {"CriticalOfTwoOctets",
     certificate_of(
         {.behind = element(0xA3, sequence({sequence({object_id("2.5.29.14"), element(0x01, "ff ff"),
                                                      element(0x04, "")})}))}),
     CRYPT_E_ASN1_CORRUPT},
};

INSTANTIATE_TEST_SUITE_P(Shapes, BadCertificate, testing::ValuesIn(kBad),
                         [](const auto& row) { return row.param.name; });

TEST(CertCreateCertificateContext, RefusesEmptyInputAsEndOfData) {
    EXPECT_TRUE(
        fails_with(CRYPT_E_ASN1_EOD, CertCreateCertificateContext(X509_ASN_ENCODING, nullptr, 0) != nullptr));
}

TEST(CertCreateCertificateContext, RefusesBadArguments) {
    const Octets der = read_pki("ca.der");
    const auto size = static_cast<DWORD>(der.size());
    EXPECT_TRUE(fails_with(E_INVALIDARG,
                           CertCreateCertificateContext(PKCS_7_ASN_ENCODING, der.data(), size) != nullptr));
    EXPECT_TRUE(
        fails_with(E_INVALIDARG, CertCreateCertificateContext(X509_ASN_ENCODING, nullptr, 1) != nullptr));
}

TEST(CertCreateCertificateContext, RefusesEveryTruncation) {
    const Octets der = read_pki("tsa_p256.der");
    for (std::size_t size = 0; size < der.size(); ++size) {
        const Octets cut(der.begin(), der.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_TRUE(fails_with(CRYPT_E_ASN1_EOD, create(cut) != nullptr)) << size;
    }
}

TEST(CertFreeCertificateContext, AlwaysAnswersTrue) {
    EXPECT_TRUE(CertFreeCertificateContext(nullptr));
}

TEST(CertDuplicateCertificateContext, KeepsContextForEachHolder) {
    const PCCERT_CONTEXT context = create(read_pki("ca.der"));
    EXPECT_EQ(CertDuplicateCertificateContext(context), context);
    EXPECT_TRUE(CertFreeCertificateContext(context));
    EXPECT_EQ(context->pbCertEncoded[0], 0x30);
    EXPECT_TRUE(CertFreeCertificateContext(context));
    EXPECT_EQ(CertDuplicateCertificateContext(nullptr), nullptr);
}

}  // namespace
}  // namespace Quillmark::test

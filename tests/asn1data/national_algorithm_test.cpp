// Parameters of the national algorithms: exact lengths, and NULL in the place of parameters.

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "tests/asn1data/status_case.h"
#include "tests/support/case_name.h"
#include "tests/support/der.h"

using namespace asn1data;

namespace Quillmark::test {
namespace {

TEST(Gost28147_89_IV, HasEightOctets) {
    using Iv = Decoded<ASN1T_Gost28147_89_IV, ASN1C_Gost28147_89_IV>;
    EXPECT_EQ(Iv(element(0x04, Octets(8))).status(), RT_OK);
    EXPECT_EQ(Iv(element(0x04, Octets(7))).status(), RT_E_CONSVIO);
    EXPECT_EQ(Iv(element(0x04, Octets(9))).status(), RT_E_STROVFL);
    Iv decoded(element(0x04, Octets(8)));
    for (const std::uint32_t count : {7u, 9u}) {
        decoded.record().numocts = count;
        EXPECT_EQ(encode<ASN1C_Gost28147_89_IV>(decoded.record()).result, RT_E_CONSVIO) << count;
    }
}

TEST(PBEQuillmarkGostParameters, HasASaltOfSixteenOctets) {
    using Parameters = Decoded<ASN1T_PBEQuillmarkGostParameters, ASN1C_PBEQuillmarkGostParameters>;
    const Octets count = from_hex("02 01 05");
    const Octets iv = element(0x04, Octets(8));
    Parameters decoded(sequence({element(0x04, Octets(16)), count, iv}));
    EXPECT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(Parameters(sequence({element(0x04, Octets(15)), count, iv})).status(), RT_E_CONSVIO);
    decoded.record().salt.numocts = 15;
    EXPECT_EQ(encode<ASN1C_PBEQuillmarkGostParameters>(decoded.record()).result, RT_E_CONSVIO);
}

TEST(PBEQuillmarkGostParameters, HasAnIvOfEightOctetsAndAnyCount) {
    using Parameters = Decoded<ASN1T_PBEQuillmarkGostParameters, ASN1C_PBEQuillmarkGostParameters>;
    const Octets salt = element(0x04, Octets(16));
    EXPECT_EQ(Parameters(sequence({salt, from_hex("02 01 05"), element(0x04, Octets(7))})).status(),
              RT_E_CONSVIO);
    Parameters decoded(sequence({salt, from_hex("02 01 ff"), element(0x04, Octets(8))}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().iterationCount, -1);
    decoded.record().iv.numocts = 7;
    EXPECT_EQ(encode<ASN1C_PBEQuillmarkGostParameters>(decoded.record()).result, RT_E_CONSVIO);
}

// Lengths that are exact, or have an upper bound

class NationalLength : public testing::TestWithParam<StatusCase> {};

TEST_P(NationalLength, GivesStatus) {
    EXPECT_EQ(GetParam().decode(GetParam().ber), GetParam().status);
}

Octets octets(std::size_t count) {
    return element(0x04, Octets(count, 0x5A));
}

/// A BIT STRING of whole octets.
Octets bits(std::size_t octet_count) {
    return element(0x03, Octets(octet_count + 1, 0x00));
}

const StatusCase kLengths[] = {
    {"BoxOf64", QUILLMARK_DECODE(Gost28147_89_UZ), octets(64), RT_OK},
    {"BoxOf63", QUILLMARK_DECODE(Gost28147_89_UZ), octets(63), RT_E_CONSVIO},
    {"BoxOf65", QUILLMARK_DECODE(Gost28147_89_UZ), octets(65), RT_E_STROVFL},
    {"KeyOf32", QUILLMARK_DECODE(Gost28147_89_Key), octets(32), RT_OK},
    {"KeyOf31", QUILLMARK_DECODE(Gost28147_89_Key), octets(31), RT_E_CONSVIO},
    {"MacOf1", QUILLMARK_DECODE(Gost28147_89_MAC), octets(1), RT_OK},
    {"MacOf4", QUILLMARK_DECODE(Gost28147_89_MAC), octets(4), RT_OK},
    {"MacOf0", QUILLMARK_DECODE(Gost28147_89_MAC), octets(0), RT_E_CONSVIO},
    {"MacOf5", QUILLMARK_DECODE(Gost28147_89_MAC), octets(5), RT_E_STROVFL},
    {"SignatureOf512Bits", QUILLMARK_DECODE(GostR3410_2001_CertificateSignature), bits(64), RT_OK},
    {"SignatureOf520Bits", QUILLMARK_DECODE(GostR3410_2001_CertificateSignature), bits(65), RT_E_STROVFL},
    {"PublicKey2001Of64", QUILLMARK_DECODE(GostR3410_2001_PublicKey), octets(64), RT_OK},
    {"PublicKey2001Of63", QUILLMARK_DECODE(GostR3410_2001_PublicKey), octets(63), RT_E_CONSVIO},
    {"PublicKey256Of64", QUILLMARK_DECODE(GostR3410_2012_256_PublicKey), octets(64), RT_OK},
    {"PublicKey256Of63", QUILLMARK_DECODE(GostR3410_2012_256_PublicKey), octets(63), RT_E_CONSVIO},
    {"PublicKey512Of128", QUILLMARK_DECODE(GostR3410_2012_512_PublicKey), octets(128), RT_OK},
    {"PublicKey512Of127", QUILLMARK_DECODE(GostR3410_2012_512_PublicKey), octets(127), RT_E_CONSVIO},
    {"PublicKey94Of128", QUILLMARK_DECODE(GostR3410_PublicKey), octets(128), RT_OK},
    {"PublicKey94Of127", QUILLMARK_DECODE(GostR3410_PublicKey), octets(127), RT_E_CONSVIO},
    {"DigestOf32", QUILLMARK_DECODE(GostR3411_94_Digest), octets(32), RT_OK},
    {"DigestOf31", QUILLMARK_DECODE(GostR3411_94_Digest), octets(31), RT_E_CONSVIO},
    {"EmptyKeyingMaterial", QUILLMARK_DECODE(Gost3412_15_Encryption_Parameters), sequence({octets(0)}),
     RT_OK},
    // Intended: in an encrypted key the code has 4 octets, though alone it may have 1 to 4.
    {"EncryptedKeyWithMacOf4", QUILLMARK_DECODE(Gost28147_89_EncryptedKey), sequence({octets(32), octets(4)}),
     RT_OK},
    {"EncryptedKeyWithMacOf3", QUILLMARK_DECODE(Gost28147_89_EncryptedKey), sequence({octets(32), octets(3)}),
     RT_E_CONSVIO},
    {"EncryptedKeyWithMask", QUILLMARK_DECODE(Gost28147_89_EncryptedKey),
     sequence({octets(32), element(0x80, Octets(32)), octets(4)}), RT_OK},
    {"EncryptedKeyWithShortMask", QUILLMARK_DECODE(Gost28147_89_EncryptedKey),
     sequence({octets(32), element(0x80, Octets(31)), octets(4)}), RT_E_CONSVIO},
};
INSTANTIATE_TEST_SUITE_P(Lengths, NationalLength, testing::ValuesIn(kLengths), case_name);

TEST(GostR3410_2012_512_PublicKey, HasItsLengthWhenACallerFillsIt) {
    ASN1T_GostR3410_2012_512_PublicKey key;
    std::fill(std::begin(key.data), std::end(key.data), std::uint8_t{0x5A});
    key.numocts = 128;
    EXPECT_EQ(encode<ASN1C_GostR3410_2012_512_PublicKey>(key).result, 131);
    for (const std::uint32_t count : {127u, 129u}) {
        key.numocts = count;
        EXPECT_EQ(encode<ASN1C_GostR3410_2012_512_PublicKey>(key).result, RT_E_CONSVIO) << count;
    }
}

TEST(Gost28147_89_EncryptedKey, HasAMacOfFourOctetsWhenACallerFillsIt) {
    Decoded<ASN1T_Gost28147_89_EncryptedKey, ASN1C_Gost28147_89_EncryptedKey> decoded(
        sequence({octets(32), octets(4)}));
    decoded.record().macKey.numocts = 3;
    EXPECT_EQ(encode<ASN1C_Gost28147_89_EncryptedKey>(decoded.record()).result, RT_E_CONSVIO);
}

TEST(Gost28147_89_BlobParameters, KeepsFurtherElementsInOrder) {
    const Octets der = sequence(
        {from_hex("06 02 2a 03"), from_hex("02 01 05"), from_hex("04 02 ab cd"), from_hex("a0 02 05 00")});
    Decoded<ASN1T_Gost28147_89_BlobParameters, ASN1C_Gost28147_89_BlobParameters> decoded(der);
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().extElem1.count, 3u);
    EXPECT_EQ(to_hex(encode<ASN1C_Gost28147_89_BlobParameters>(decoded.record()).octets), to_hex(der));
    ASN1BEREncodeBuffer other;
    ASN1T_Gost28147_89_BlobParameters copy;
    asn1Copy_Gost28147_89_BlobParameters(other.getCtxtPtr(), &decoded.record(), &copy);
    asn1Free_Gost28147_89_BlobParameters(decoded.context(), &decoded.record());
    EXPECT_EQ(to_hex(encode<ASN1C_Gost28147_89_BlobParameters>(copy).octets), to_hex(der));
    asn1Free_Gost28147_89_BlobParameters(other.getCtxtPtr(), &copy);
}

TEST(Gost28147_89_BlobParameters, NeedsItsIdentifier) {
    EXPECT_EQ((status_of<ASN1T_Gost28147_89_BlobParameters, ASN1C_Gost28147_89_BlobParameters>(
                  from_hex("30 03 02 01 05"))),
              RT_E_IDNOTFOUND);
    EXPECT_EQ(
        (status_of<ASN1T_Gost28147_89_BlobParameters, ASN1C_Gost28147_89_BlobParameters>(from_hex("30 00"))),
        RT_E_SETMISSING);
}

// Parameters that may be NULL

const Octets kOids = sequence({from_hex("06 02 2a 03"), from_hex("06 02 2a 04")});
const Octets kPassword = sequence({octets(16), from_hex("02 01 05"), octets(8)});

template <typename Record, typename Control>
void expect_null_or(const Octets& value) {
    Decoded<Record, Control> null(from_hex("05 00"));
    ASSERT_EQ(null.status(), RT_OK);
    EXPECT_EQ(null.record().t, 1u);
    Decoded<Record, Control> record(value);
    ASSERT_EQ(record.status(), RT_OK);
    EXPECT_EQ(record.record().t, 2u);
    EXPECT_EQ((status_of<Record, Control>(from_hex("02 01 05"))), RT_E_INVOPT);
    for (const std::uint32_t t : {0u, 3u}) {
        Record other;
        other.t = t;
        EXPECT_EQ(encode<Control>(other).result, RT_E_INVOPT) << t;
    }
}

#define QUILLMARK_NULL_OR(name, value) expect_null_or<ASN1T_##name, ASN1C_##name>(value)

TEST(NationalParameters, AreNullOrARecord) {
    QUILLMARK_NULL_OR(_gost2001PubKey_Type, kOids);
    QUILLMARK_NULL_OR(_gost2001DHPubKey_Type, kOids);
    QUILLMARK_NULL_OR(_gost94WithGostR34102001Sign_Type, kOids);
    QUILLMARK_NULL_OR(_gost2012_256_PubKey_Type, kOids);
    QUILLMARK_NULL_OR(_gost2012_512_PubKey_Type, kOids);
    QUILLMARK_NULL_OR(_gost2012_256DH_PubKey_Type, kOids);
    QUILLMARK_NULL_OR(_gost2012_512DH_PubKey_Type, kOids);
    QUILLMARK_NULL_OR(_gostR341194DigestParams_Type, from_hex("06 02 2a 03"));
    QUILLMARK_NULL_OR(_pbeGost28147And3411_Type, kPassword);
}

TEST(Gost28147_89_IV, CopiesNoMoreThanItsRoom) {
    ASN1T_Gost28147_89_IV source;
    std::fill(std::begin(source.data), std::end(source.data), std::uint8_t{7});
    source.numocts = 4000;
    ASN1T_Gost28147_89_IV copy;
    ASN1BEREncodeBuffer buffer;
    asn1Copy_Gost28147_89_IV(buffer.getCtxtPtr(), &source, &copy);
    EXPECT_EQ(copy.numocts, 8u);
}

TEST(GostPublicKeyParameters, NeedTheDigestInTheFormOf2001Only) {
    const Octets one = sequence({from_hex("06 02 2a 03")});
    EXPECT_EQ(
        (Decoded<ASN1T_GostR3410_2001_PublicKeyParameters, ASN1C_GostR3410_2001_PublicKeyParameters>(one)
             .status()),
        RT_E_SETMISSING);
    EXPECT_EQ(
        (Decoded<ASN1T_GostR3410_2012_PublicKeyParameters, ASN1C_GostR3410_2012_PublicKeyParameters>(one)
             .status()),
        RT_OK);
}

TEST(GostSignatureParameters, OfThe94NameAreThoseOf2001) {  // Intended
    Decoded<ASN1T__gost94WithGostR34102001Sign_Type, ASN1C__gost94WithGostR34102001Sign_Type> decoded(
        sequence({from_hex("06 02 2a 03"), from_hex("06 02 2a 04")}));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().t, T__gost94WithGostR34102001Sign_Type_params);
    EXPECT_EQ(decoded.record().u.params->digestParamSet.subid[2], 4u);
}

}  // namespace
}  // namespace Quillmark::test

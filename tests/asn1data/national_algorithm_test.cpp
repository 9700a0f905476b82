// Parameters of the national algorithms: exact lengths, and NULL in the place of parameters.

#include <gtest/gtest.h>

#include "asn1data/codecs.h"
#include "tests/asn1data/record_codec.h"
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

TEST(GostKeyParameters, MayBeNull) {
    Decoded<ASN1T__gost2001PubKey_Type, ASN1C__gost2001PubKey_Type> decoded(from_hex("05 00"));
    ASSERT_EQ(decoded.status(), RT_OK);
    EXPECT_EQ(decoded.record().t, T__gost2001PubKey_Type_null);
    decoded.record().t = 3;
    EXPECT_EQ(encode<ASN1C__gost2001PubKey_Type>(decoded.record()).result, RT_E_INVOPT);
}

}  // namespace
}  // namespace Quillmark::test

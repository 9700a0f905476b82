// A stamp or a certificate with one bit flipped where the signature or the choice of the signer hangs on it
// never verifies.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/interop/authority.h"
#include "tests/support/blob.h"
#include "tsp/response.h"

namespace Quillmark::PKI::TSP {
namespace {

using namespace ASN1;
using test::Octets;
using test::OpenSSLAuthority;

/// True when the bytes decode and their signature holds.
bool verifies(const Octets& token_octets, const Octets& certificate) {
    try {
        CToken token;
        token.decode(test::blob_of(token_octets));
        return token.verify(test::blob_of(certificate));
    } catch (const CAtlException&) {
        return false;
    }
}

struct Range {
    std::size_t begin;
    std::size_t end;
};

/// Where `part` lies in `whole`, exactly once.
Range find_once(const Octets& whole, const Octets& part) {
    const auto found = std::search(whole.begin(), whole.end(), part.begin(), part.end());
    EXPECT_NE(found, whole.end()) << "not there: " << test::to_hex(part);
    EXPECT_EQ(std::search(found + 1, whole.end(), part.begin(), part.end()), whole.end()) << "there twice";
    const auto begin = static_cast<std::size_t>(found - whole.begin());
    return {begin, begin + part.size()};
}

/// Calls `check` with each bit of the range flipped in turn.
template <class Check>
void flip_each_bit(Octets octets, Range range, Check&& check) {
    ASSERT_LT(range.begin, range.end);
    for (std::size_t i = range.begin; i < range.end; ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            octets[i] ^= static_cast<std::uint8_t>(1 << bit);
            check(octets, i, bit);
            octets[i] ^= static_cast<std::uint8_t>(1 << bit);
        }
    }
}

class Tampering : public testing::TestWithParam<const char*> {
  protected:
    void SetUp() override {
        const OpenSSLAuthority openssl;
        const CBlob response_bytes = openssl.reply(openssl.query("-sha256"), GetParam());
        CResponse response;
        response.decode(response_bytes);
        token_ = *response.get_timeStampToken();
        octets_ = test::octets(token_.encode());
        certificate_ = test::octets(test::certificate(GetParam()));
        ASSERT_TRUE(verifies(octets_, certificate_));
    }

    void expect_token_range_is_protected(const Octets& part) const {
        flip_each_bit(octets_, find_once(octets_, part), [&](const Octets& octets, std::size_t at, int bit) {
            EXPECT_FALSE(verifies(octets, certificate_)) << "octet " << at << " bit " << bit;
        });
    }

    void expect_certificate_range_is_protected(Range range) const {
        flip_each_bit(certificate_, range, [&](const Octets& octets, std::size_t at, int bit) {
            EXPECT_FALSE(verifies(octets_, octets)) << "octet " << at << " bit " << bit;
        });
    }

    /// Where a part of the certificate lies, as the service finds it.
    template <class Part>
    Range certificate_part(Part&& part) const {
        const CBlob der = test::blob_of(certificate_);
        PCCERT_CONTEXT context =
            CertCreateCertificateContext(X509_ASN_ENCODING, der.pbData(), static_cast<DWORD>(der.cbData()));
        const Octets octets = part(*context->pCertInfo);
        CertFreeCertificateContext(context);
        const auto found =
            std::search(certificate_.begin(), certificate_.end(), octets.begin(), octets.end());
        EXPECT_NE(found, certificate_.end());
        const auto begin = static_cast<std::size_t>(found - certificate_.begin());
        return {begin, begin + octets.size()};
    }

    CToken token_;
    Octets octets_;
    Octets certificate_;
};

TEST_P(Tampering, ShowsInTheTSTInfo) {
    CToken bare = token_;
    bare.put_nonce(nullptr);  // what is left to encode is the TSTInfo alone
    expect_token_range_is_protected(test::octets(bare.encode()));
}

TEST_P(Tampering, ShowsInEverySignedAttribute) {
    ASSERT_NE(token_.get_signedAttributes(), nullptr);
    ASSERT_GE(token_.get_signedAttributes()->size(), 4u);
    for (const CAttribute& attribute : *token_.get_signedAttributes()) {
        SCOPED_TRACE(attribute.get_oid());
        expect_token_range_is_protected(test::octets(attribute.encode()));
    }
}

TEST_P(Tampering, ShowsInTheSignature) {
    expect_token_range_is_protected(test::octets(token_.get_signerInfo().get_signature()));
}

TEST_P(Tampering, ShowsInThePublicKey) {
    expect_certificate_range_is_protected(certificate_part([](const CERT_INFO& info) {
        const CRYPT_BIT_BLOB& key = info.SubjectPublicKeyInfo.PublicKey;
        return Octets(key.pbData, key.pbData + key.cbData);
    }));
}

TEST_P(Tampering, ShowsInTheIssuer) {
    Range issuer = certificate_part([](const CERT_INFO& info) {
        return Octets(info.Issuer.pbData, info.Issuer.pbData + info.Issuer.cbData);
    });
    issuer.begin += 2;  // tag and length of one octet
    expect_certificate_range_is_protected(issuer);
}

TEST_P(Tampering, ShowsInTheSerialNumber) {
    Range serial = certificate_part([](const CERT_INFO& info) {
        // The service has the least significant octet first. With its header the number is found in its
        // place.
        Octets number(info.SerialNumber.pbData, info.SerialNumber.pbData + info.SerialNumber.cbData);
        std::reverse(number.begin(), number.end());
        number.insert(number.begin(), {0x02, static_cast<std::uint8_t>(number.size())});
        return number;
    });
    serial.begin += 2;
    expect_certificate_range_is_protected(serial);
}

INSTANTIATE_TEST_SUITE_P(Keys, Tampering, testing::Values("tsa_rsa2048", "tsa_p256"),
                         [](const auto& row) { return std::string(row.param); });

}  // namespace
}  // namespace Quillmark::PKI::TSP

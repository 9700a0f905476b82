// Messages cut, changed and nested on purpose. Whatever is read must be answered or refused; the sanitizers
// see the rest.

#include <random>

#include "tests/platform/out_of_memory.h"

namespace Quillmark::test {
namespace {

const Octets kContent = from_hex("30 03 02 01 05");

Octets rich_message() {
    return sign({.signers = {{.signed_attributes = {{"1.2.4", {from_hex("02 01 01"), from_hex("02 01 02")}}},
                              .unsigned_attributes = {{"1.2.5", {from_hex("30 02 05 00")}}}},
                             {.name = "tsa_rsa2048"}},
                 .certificates = {read_pki("tsa_p256.der")},
                 .crls = {from_hex("30 02 05 00")}},
                kContent);
}

// Asks for everything there is, and verifies.
void ask_everything(const Octets& octets, const CERT_INFO* certificate) {
    const Message message(open_to_decode());
    message.update(octets);
    alignas(8) BYTE buffer[8192];
    for (DWORD parameter = 0; parameter < 30; ++parameter) {
        for (DWORD index = 0; index < 3; ++index) {
            DWORD size = 0;
            if (CryptMsgGetParam(message.handle(), parameter, index, nullptr, &size)) {
                const DWORD needed = size;
                size = sizeof(buffer);
                EXPECT_TRUE(CryptMsgGetParam(message.handle(), parameter, index, buffer, &size));
                EXPECT_EQ(size, needed);
            }
        }
    }
    message.verify(certificate);
}

TEST(HostileMessage, CutAnywhereIsRefused) {
    const Octets message = rich_message();
    for (std::size_t size = 0; size < message.size(); ++size) {
        const Octets cut(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(size));
        const Message decoded(open_to_decode());
        ASSERT_TRUE(fails_with(CRYPT_E_ASN1_EOD, decoded.update(cut))) << size;
    }
}

TEST(HostileMessage, CutInIndefiniteFormIsRefused) {
    const TemporaryDirectory directory;
    write_file(directory.path("content"), kContent);
    const std::string key = pki_path("tsa_p256");
    ASSERT_TRUE(directory.run(
        "openssl cms -sign -binary -nodetach -stream -indef -outform DER -in content -out message "
        "-econtent_type " +
        std::string(kTstInfoOid) + " -signer " + key + ".pem -inkey " + key + ".key"));
    const Octets message = read_file(directory.path("message"));
    const Certificate certificate("tsa_p256.der");
    {
        const Message decoded(open_to_decode());
        ASSERT_TRUE(decoded.update(message));
        EXPECT_EQ(decoded.param(CMSG_CONTENT_PARAM), kContent);
        EXPECT_TRUE(decoded.verify(certificate.info()));
    }
    for (std::size_t size = 0; size < message.size(); ++size) {
        const Octets cut(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(size));
        const Message decoded(open_to_decode());
        ASSERT_TRUE(fails_with(CRYPT_E_ASN1_EOD, decoded.update(cut))) << size;
    }
}

TEST(HostileMessage, ChangedAtRandomIsAnsweredOrRefused) {
    const Octets message = rich_message();
    const Certificate certificate("tsa_p256.der");
    std::mt19937 random(20);  // the same octets in every run
    for (int round = 0; round < 20'000; ++round) {
        Octets changed = message;
        const int changes = 1 + static_cast<int>(random() % 4);
        for (int i = 0; i < changes; ++i) {
            changed[random() % changed.size()] = static_cast<std::uint8_t>(random());
        }
        ask_everything(changed, certificate.info());
    }
}

TEST(HostileMessage, WithEveryOctetChangedInItsHighBitsIsAnsweredOrRefused) {
    const Octets message = rich_message();
    const Certificate certificate("tsa_p256.der");
    for (std::size_t at = 0; at < message.size(); ++at) {
        for (const std::uint8_t mask : Octets{0x80, 0x20, 0x01}) {
            Octets changed = message;
            changed[at] ^= mask;
            ask_everything(changed, certificate.info());
        }
    }
}

TEST(HostileMessage, OfIndefiniteHeadersAloneIsRefusedQuickly) {
    Octets headers;
    for (int i = 0; i < 500'000; ++i) {
        headers.push_back(0x30);
        headers.push_back(0x80);
    }
    const Message message(open_to_decode());
    EXPECT_TRUE(fails_with(CRYPT_E_ASN1_CORRUPT, message.update(headers)));
}

TEST(HostileMessage, OfManySignersAndAttributesIsReadInProportion) {
    const Octets attribute = sequence({object_id("1.2.4"), element(0x31, "05 00")});
    Octets attributes;
    for (int i = 0; i < 50'000; ++i) {
        attributes.insert(attributes.end(), attribute.begin(), attribute.end());
    }
    const Octets signer = sequence({element(0x02, "01"), sequence({element(0x30, ""), element(0x02, "05")}),
                                    sequence({object_id(kSha256Oid)}), element(0xA0, attributes),
                                    sequence({object_id("1.2.3")}), element(0x04, "")});
    const Octets data = sequence(
        {element(0x02, "01"), element(0x31, ""), sequence({object_id(kDataOid)}), element(0x31, signer)});
    const Message message(open_to_decode());
    ASSERT_TRUE(message.update(sequence({object_id("1.2.840.113549.1.7.2"), element(0xA0, data)})));
    const Octets block = message.param(CMSG_SIGNER_AUTH_ATTR_PARAM);
    EXPECT_EQ(reinterpret_cast<const CRYPT_ATTRIBUTES*>(block.data())->cAttr, 50'000u);
}

TEST(HostileCertificate, ChangedAtRandomIsReadOrRefused) {
    const Octets der = read_pki("tsa_rsa2048.der");
    std::mt19937 random(21);
    for (int round = 0; round < 20'000; ++round) {
        Octets changed = der;
        for (unsigned i = 0; i < 1 + random() % 3; ++i) {
            changed[random() % changed.size()] = static_cast<std::uint8_t>(random());
        }
        CertFreeCertificateContext(CertCreateCertificateContext(X509_ASN_ENCODING, changed.data(),
                                                                static_cast<DWORD>(changed.size())));
    }
}

TEST(OutOfMemory, WhileEncoding) {
    const SignRequest request{.signers = {{.signed_attributes = {{"1.2.4", {from_hex("05 00")}}}}},
                              .certificates = {read_pki("ca.der")}};
    EncodeRecords records(request);
    expect_out_of_memory_at_each_allocation([&] {
        const HCRYPTMSG message = records.open(request);
        const bool succeeded =
            message != nullptr &&
            CryptMsgUpdate(message, kContent.data(), static_cast<DWORD>(kContent.size()), 1) != 0;
        CryptMsgClose(message);
        return succeeded;
    });
}

TEST(OutOfMemory, WhileDecodingAndVerifying) {
    const Octets octets = rich_message();
    const Certificate certificate("tsa_rsa2048.der");
    expect_out_of_memory_at_each_allocation([&] {
        const HCRYPTMSG message = open_to_decode();
        const bool succeeded =
            message != nullptr &&
            CryptMsgUpdate(message, octets.data(), static_cast<DWORD>(octets.size()), 1) != 0 &&
            CryptMsgControl(message, 0, CMSG_CTRL_VERIFY_SIGNATURE, certificate.info()) != 0;
        CryptMsgClose(message);
        return succeeded;
    });
}

TEST(OutOfMemory, WhileOpeningAKey) {
    const std::string path = pki_path("tsa_p256.key");
    expect_out_of_memory_at_each_allocation([&] {
        HCRYPTPROV handle = 0;
        const bool succeeded = CryptAcquireContextA(&handle, path.c_str(), nullptr, PROV_RSA_AES, 0) != 0;
        if (succeeded) {
            CryptReleaseContext(handle, 0);
        }
        return succeeded;
    });
}

TEST(OutOfMemory, WhileReadingACertificate) {
    const Octets der = read_pki("tsa_p256.der");
    expect_out_of_memory_at_each_allocation([&] {
        const PCCERT_CONTEXT context =
            CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()));
        CertFreeCertificateContext(context);
        return context != nullptr;
    });
}

}  // namespace
}  // namespace Quillmark::test

// What holds for all calls of the service: the last error, libcrypto's error queue and its end, and the
// limits of handles; with outcomes that need a key or a message of their own.

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <functional>
#include <memory>
#include <type_traits>

#include "platform/detail/handle_table.h"
#include "tests/platform/der_tree.h"
#include "tests/platform/service.h"
#include "tests/support/child_process.h"

namespace Quillmark::test {
namespace {

const Octets kContent = from_hex("30 03 02 01 05");

Octets sample_message() {
    return sign({.certificates = {read_pki("tsa_p256.der")}}, kContent);
}

// A message of one SignerInfo after the other, with `change` made to the fields of each.
Octets with_signers(const Octets& message, int count,
                    const std::function<void(int, std::vector<Octets>&)>& change) {
    Octets signers;
    for (int i = 0; i < count; ++i) {
        std::vector<Octets> fields = signer_fields(message);
        change(i, fields);
        Octets contents;
        for (const Octets& field : fields) {
            contents = join({contents, field});
        }
        signers = join({signers, element(0x30, contents)});
    }
    std::vector<Octets> data = signed_data_fields(message);
    data.back() = element(0x31, signers);
    Octets contents;
    for (const Octets& field : data) {
        contents = join({contents, field});
    }
    return sequence({object_id("1.2.840.113549.1.7.2"), element(0xA0, element(0x30, contents))});
}

// The last error

constexpr DWORD kEarlier = 0x1234;

TEST(LastErrorOfMessages, StaysThroughCallsThatSucceed) {
    const Octets octets = sample_message();
    SetLastError(kEarlier);
    const Octets made = sample_message();
    EXPECT_EQ(GetLastError(), kEarlier) << "signing";
    const Certificate certificate("tsa_p256.der");
    EXPECT_EQ(GetLastError(), kEarlier) << "opening a certificate";
    const Message message(open_to_decode());
    EXPECT_TRUE(message.update(octets));
    EXPECT_TRUE(message.verify(certificate.info()));
    EXPECT_FALSE(message.param(CMSG_SIGNER_AUTH_ATTR_PARAM).empty());
    EXPECT_EQ(message.count(CMSG_CERT_COUNT_PARAM), 1u);
    EXPECT_TRUE(CryptMsgClose(CryptMsgDuplicate(message.handle())));
    EXPECT_EQ(GetLastError(), kEarlier) << "decoding, asking and verifying";
}

TEST(CryptMsgControl, LooksAtNoFlags) {
    const Certificate certificate("tsa_p256.der");
    const Message message(open_to_decode());
    ASSERT_TRUE(message.update(sample_message()));
    EXPECT_TRUE(CryptMsgControl(message.handle(), ~0u, CMSG_CTRL_VERIFY_SIGNATURE, certificate.info()));
}

TEST(CryptMsgControl, VerifiesNoMessageThatIsStillToBeSigned) {
    const Certificate certificate("tsa_p256.der");
    const Message message(open_to_encode({}));
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, message.verify(certificate.info())));
}

// Only the signer with the unknown digest cannot be verified.
TEST(CryptMsgUpdate, LeavesTheOtherSignersWhenOneHasAnUnknownDigest) {
    constexpr std::size_t kIdentifier = 1;
    constexpr std::size_t kDigest = 2;
    const Octets octets = with_signers(sample_message(), 2, [](int i, std::vector<Octets>& fields) {
        if (i == 0) {
            fields.at(kIdentifier) = sequence({sequence({}), element(0x02, "05")});
            fields.at(kDigest) = sequence({object_id("1.2.3.4.5")});
        }
    });
    const Message message(open_to_decode());
    EXPECT_TRUE(fails_with(CRYPT_E_UNKNOWN_ALGO, message.update(octets)));
    EXPECT_EQ(message.count(CMSG_SIGNER_COUNT_PARAM), 2u);
    const Certificate certificate("tsa_p256.der");
    EXPECT_TRUE(message.verify(certificate.info()));
    EXPECT_EQ(message.param_error(CMSG_COMPUTED_HASH_PARAM, 0), CRYPT_E_UNKNOWN_ALGO);
    EXPECT_EQ(message.param(CMSG_COMPUTED_HASH_PARAM, 1).size(), 32u);
}

// libcrypto's error queue

TEST(ErrorQueue, StaysAsItWasThroughMessagesThatFail) {
    const Octets octets = sample_message();
    const Certificate certificate("tsa_p256.der");
    constexpr std::size_t kDigest = 2;
    constexpr std::size_t kSignature = 5;
    const auto outcome = [&](std::size_t field, const Octets& value) {
        const Message message(open_to_decode());
        message.update(
            with_signers(octets, 1, [&](int, std::vector<Octets>& fields) { fields.at(field) = value; }));
        EXPECT_FALSE(message.verify(certificate.info()));
    };
    for (const bool is_empty : {true, false}) {
        ERR_clear_error();
        if (!is_empty) {
            ERR_raise(ERR_LIB_USER, 42);
        }
        outcome(kSignature, element(0x04, "30 00"));
        outcome(kDigest, sequence({object_id("1.2.3.4.5")}));
        CERT_INFO off_the_curve = *certificate.info();
        off_the_curve.SubjectPublicKeyInfo.PublicKey.cbData -= 1;
        const Message message(open_to_decode());
        EXPECT_TRUE(message.update(octets));
        EXPECT_FALSE(message.verify(&off_the_curve));
        EXPECT_EQ(ERR_GET_REASON(ERR_get_error()), is_empty ? 0 : 42);
        EXPECT_EQ(ERR_get_error(), 0u);
    }
}

// Keys of the application

struct FreeKey {
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using Key = std::unique_ptr<EVP_PKEY, FreeKey>;

// A message to be signed with this key and SHA-512, the certificate's fields made up around it.
HCRYPTMSG open_with_rsa(EVP_PKEY* key) {
    HCRYPTPROV provider = 0;
    EXPECT_TRUE(KeyContainerFromKey(&provider, key));
    std::uint8_t* der = nullptr;
    const int size = i2d_PublicKey(key, &der);
    Octets public_key(der, der + size);
    OPENSSL_free(der);
    Octets issuer = sequence({});
    Octets serial = {5};
    char rsa_encryption[] = "1.2.840.113549.1.1.1";
    CERT_INFO certificate{};
    certificate.Issuer = {static_cast<DWORD>(issuer.size()), issuer.data()};
    certificate.SerialNumber = {1, serial.data()};
    certificate.SubjectPublicKeyInfo.Algorithm.pszObjId = rsa_encryption;
    certificate.SubjectPublicKeyInfo.PublicKey = {static_cast<DWORD>(public_key.size()), public_key.data(),
                                                  0};
    const SignRequest request{.signers = {{.digest = kSha512Oid}}};
    EncodeRecords records(request);
    records.signers[0].hCryptProv = provider;
    records.signers[0].pCertInfo = &certificate;
    const HCRYPTMSG message = records.open(request);
    EXPECT_TRUE(CryptReleaseContext(provider, 0));
    return message;
}

TEST(CryptMsgUpdate, TellsWhenTheKeyRefusesToSign) {
    // PKCS #1 v1.5 needs 83 octets for SHA-512 (RFC 8017 9.2), and this key has 64.
    const Key key(EVP_RSA_gen(512));
    ASSERT_NE(key, nullptr);
    const Message message(open_with_rsa(key.get()));
    ASSERT_NE(message.handle(), nullptr) << std::hex << GetLastError();
    EXPECT_TRUE(fails_with(NTE_FAIL, message.update(kContent)));
    EXPECT_EQ(message.param_error(CMSG_CONTENT_PARAM), CRYPT_E_MSG_ERROR);
    EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, message.update(kContent)));
}

TEST(CryptMsgUpdate, SignsWithTheLeastKeyThatSuffices) {
    const Key key(EVP_RSA_gen(1024));
    ASSERT_NE(key, nullptr);
    const Message message(open_with_rsa(key.get()));
    ASSERT_NE(message.handle(), nullptr) << std::hex << GetLastError();
    EXPECT_TRUE(message.update(kContent));
}

TEST(CryptAcquireContextFlags, TakeTheFourBitsOfVerificationTogetherOnly) {
    for (const DWORD part : {0x10000000u, 0x80000000u, 0x70000000u, 0xE0000000u}) {
        HCRYPTPROV handle = 0;
        EXPECT_TRUE(
            fails_with(NTE_BAD_FLAGS, CryptAcquireContextA(&handle, nullptr, nullptr, PROV_RSA_AES, part)))
            << std::hex << part;
        EXPECT_TRUE(fails_with(NTE_BAD_FLAGS, CryptAcquireContextA(&handle, pki_path("tsa_p256.key").c_str(),
                                                                   nullptr, PROV_RSA_AES, part)))
            << std::hex << part;
    }
}

// Handles

// Static objects of the application may use handles when those of the service would be gone.
static_assert(std::is_trivially_destructible_v<HandleTable<int>>);

TEST(HandleLimits, RefuseAReferenceBeyondThoseThatCanBeCounted) {
    static auto& table = *new HandleTable<int>(5);
    const std::uint64_t handle = table.add(std::make_shared<int>(1));
    for (std::uint64_t references = 1; references < SlotState::kMaxReferences; ++references) {
        ASSERT_EQ(table.add_reference(handle), ERROR_SUCCESS);
    }
    EXPECT_EQ(table.add_reference(handle), E_OUTOFMEMORY);
    EXPECT_TRUE(table.pin(handle)) << "the generation is as it was";
    EXPECT_EQ(table.release(handle), ERROR_SUCCESS);
    EXPECT_EQ(table.add_reference(handle), ERROR_SUCCESS);
}

// The end of libcrypto, which comes before static objects of the application that are older than its first
// use

// Runs `check` after that end, in a process of its own, which exits with 0 when all of it was as expected.
void exit_after_libcrypto(const std::function<bool()>& check) {
    OPENSSL_cleanup();
    end_child(check() ? 0 : 1);
}

bool fails_at_the_end(bool succeeded) {
    return !succeeded && GetLastError() == E_FAIL;
}

TEST(EndOfLibcryptoDeathTest, NothingIsSignedOrVerifiedAnyMore) {
    const Octets octets = sample_message();
    const Certificate certificate("tsa_p256.der");
    const Message decoded(open_to_decode());
    ASSERT_TRUE(decoded.update(octets));
    ASSERT_TRUE(decoded.verify(certificate.info()));
    const Message open(open_to_encode({}));
    const Provider provider("tsa_p256.key");
    EXPECT_EXIT(exit_after_libcrypto([&] {
                    HCRYPTPROV handle = 0;
                    return fails_at_the_end(open.update(kContent)) &&
                           fails_at_the_end(decoded.verify(certificate.info())) &&
                           fails_at_the_end(CryptAcquireContextA(&handle, pki_path("tsa_p256.key").c_str(),
                                                                 nullptr, PROV_RSA_AES, CRYPT_SILENT));
                }),
                testing::ExitedWithCode(0), "");
}

TEST(EndOfLibcryptoDeathTest, HandlesAreStillClosedAndMessagesRead) {
    const Octets octets = sample_message();
    const Octets unknown = with_signers(octets, 1, [](int, std::vector<Octets>& fields) {
        fields.at(2) = sequence({object_id("1.2.3.4.5")});
    });
    const HCRYPTMSG decoded = open_to_decode();
    const HCRYPTMSG late = open_to_decode();
    const HCRYPTMSG late_unknown = open_to_decode();
    const HCRYPTMSG open = open_to_encode({});
    ASSERT_TRUE(CryptMsgUpdate(decoded, octets.data(), static_cast<DWORD>(octets.size()), 1));
    EXPECT_EXIT(exit_after_libcrypto([&] {
                    DWORD size = 0;
                    return CryptMsgGetParam(decoded, CMSG_CONTENT_PARAM, 0, nullptr, &size) &&
                           CryptMsgUpdate(late, octets.data(), static_cast<DWORD>(octets.size()), 1) &&
                           fails_at_the_end(CryptMsgUpdate(late_unknown, unknown.data(),
                                                           static_cast<DWORD>(unknown.size()), 1)) &&
                           CryptMsgClose(decoded) && CryptMsgClose(late) && CryptMsgClose(late_unknown) &&
                           CryptMsgClose(open);
                }),
                testing::ExitedWithCode(0), "");
    for (const HCRYPTMSG handle : {decoded, late, late_unknown, open}) {
        EXPECT_TRUE(CryptMsgClose(handle));
    }
}

}  // namespace
}  // namespace Quillmark::test

// Handles of messages and providers as the interface has them: closing, duplicating, releasing, in any order,
// any number of times and from several threads.

#include <atomic>
#include <thread>

#include "tests/platform/service.h"

namespace Quillmark::test {
namespace {

const Octets kContent = from_hex("30 03 02 01 05");

HCRYPTMSG handle_of(std::uint64_t number) {
    return reinterpret_cast<HCRYPTMSG>(number);
}

HCRYPTMSG decoded_message() {
    static const Octets token = sign({}, kContent);
    const HCRYPTMSG handle = open_to_decode();
    EXPECT_TRUE(CryptMsgUpdate(handle, token.data(), static_cast<DWORD>(token.size()), 1));
    return handle;
}

// Every call on a handle that is none.
void expect_invalid(HCRYPTMSG handle) {
    DWORD size = 0;
    const CERT_INFO certificate{};
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptMsgUpdate(handle, nullptr, 0, 1)));
    EXPECT_TRUE(
        fails_with(ERROR_INVALID_HANDLE, CryptMsgGetParam(handle, CMSG_CONTENT_PARAM, 0, nullptr, &size)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE,
                           CryptMsgControl(handle, 0, CMSG_CTRL_VERIFY_SIGNATURE, &certificate)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptMsgDuplicate(handle) != nullptr));
    if (handle != nullptr) {
        EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptMsgClose(handle)));
    }
}

TEST(MessageHandle, IsInvalidOnceClosed) {
    const HCRYPTMSG handle = decoded_message();
    EXPECT_TRUE(CryptMsgClose(handle));
    expect_invalid(handle);
}

TEST(MessageHandle, OfNullIsInvalidButClosesWell) {
    expect_invalid(nullptr);
    EXPECT_TRUE(CryptMsgClose(nullptr));
}

TEST(MessageHandle, OfGarbageIsInvalid) {
    for (const std::uint64_t garbage :
         {1ull, 0x1000ull, ~0ull, 0x1000'0001'FFFF'FFFFull, 0x1FFF'FFFF'0000'0000ull}) {
        expect_invalid(handle_of(garbage));
    }
    int on_the_stack = 0;
    expect_invalid(&on_the_stack);
}

TEST(MessageHandle, OfAProviderIsInvalid) {
    const Provider provider("tsa_p256.key");
    expect_invalid(handle_of(provider.handle()));
}

TEST(CryptMsgDuplicate, GivesAHandleOfItsOwn) {
    const HCRYPTMSG first = decoded_message();
    const HCRYPTMSG second = CryptMsgDuplicate(first);
    EXPECT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_TRUE(CryptMsgClose(first));
    EXPECT_TRUE(
        fails_with(ERROR_INVALID_HANDLE, CryptMsgClose(first)));  // takes nothing from the other holder
    const Message survivor(second);
    EXPECT_EQ(survivor.param(CMSG_CONTENT_PARAM), kContent);
}

TEST(CryptMsgDuplicate, ClosesInTheOtherOrderToo) {
    const Message first(decoded_message());
    EXPECT_TRUE(CryptMsgClose(CryptMsgDuplicate(first.handle())));
    EXPECT_EQ(first.param(CMSG_CONTENT_PARAM), kContent);
}

TEST(MessageHandle, MayBeClosedInOneThreadWhileAnotherUsesIt) {
    for (int round = 0; round < 200; ++round) {
        const HCRYPTMSG handle = decoded_message();
        std::atomic<int> closed{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                BYTE buffer[64];
                DWORD size = sizeof(buffer);
                if (CryptMsgGetParam(handle, CMSG_CONTENT_PARAM, 0, buffer, &size)) {
                    EXPECT_EQ(Octets(buffer, buffer + size), kContent);
                } else {
                    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
                }
                closed += CryptMsgClose(handle);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(closed, 1);
    }
}

TEST(MessageHandle, ServesManyThreadsAtOnce) {
    const Message message(decoded_message());
    const Certificate certificate("tsa_p256.der");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 50; ++round) {
                const Message duplicate(CryptMsgDuplicate(message.handle()));
                EXPECT_TRUE(duplicate.verify(certificate.info()));
                EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kContent);
                EXPECT_FALSE(message.param(CMSG_SIGNER_AUTH_ATTR_PARAM).empty());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(MessageHandle, TakesExactlyOneOfManyUpdates) {
    const Octets token = sign({}, kContent);
    for (int round = 0; round < 100; ++round) {
        const Message message(open_to_decode());
        std::atomic<int> taken{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                if (message.update(token)) {
                    ++taken;
                } else {
                    EXPECT_EQ(GetLastError(), CRYPT_E_MSG_ERROR);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(taken, 1);
        EXPECT_EQ(message.param(CMSG_CONTENT_PARAM), kContent);
    }
}

HCRYPTPROV open_provider() {
    HCRYPTPROV handle = 0;
    EXPECT_TRUE(
        CryptAcquireContextA(&handle, pki_path("tsa_p256.key").c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT));
    return handle;
}

TEST(ProviderHandle, IsInvalidOnceReleased) {
    const HCRYPTPROV handle = open_provider();
    EXPECT_TRUE(CryptReleaseContext(handle, 0));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptReleaseContext(handle, 0)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptContextAddRef(handle, nullptr, 0)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptSetProvParam(handle, PP_SIGNATURE_PIN, nullptr, 0)));
}

TEST(ProviderHandle, OfZeroGarbageOrAMessageIsInvalid) {
    const Message message(decoded_message());
    for (const HCRYPTPROV handle :
         {HCRYPTPROV{0}, HCRYPTPROV{42}, ~HCRYPTPROV{0}, reinterpret_cast<HCRYPTPROV>(message.handle())}) {
        EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptReleaseContext(handle, 0)));
        EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptContextAddRef(handle, nullptr, 0)));
    }
}

TEST(CryptReleaseContext, TakesOneReferenceAway) {
    const HCRYPTPROV handle = open_provider();
    EXPECT_TRUE(CryptContextAddRef(handle, nullptr, 0));
    EXPECT_TRUE(CryptReleaseContext(handle, 0));
    EXPECT_TRUE(CryptReleaseContext(handle, 0));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptReleaseContext(handle, 0)));
}

TEST(CryptReleaseContext, ReleasesAndComplainsWithFlags) {
    const HCRYPTPROV handle = open_provider();
    EXPECT_TRUE(fails_with(NTE_BAD_FLAGS, CryptReleaseContext(handle, 1)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptReleaseContext(handle, 0)));
}

TEST(CryptContextAddRef, RefusesReservedArguments) {
    const Provider provider("tsa_p256.key");
    DWORD reserved = 0;
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, CryptContextAddRef(provider.handle(), &reserved, 0)));
    EXPECT_TRUE(fails_with(ERROR_INVALID_PARAMETER, CryptContextAddRef(provider.handle(), nullptr, 1)));
}

TEST(ProviderHandle, MayBeReleasedBetweenOpeningAMessageAndItsUpdate) {
    EncodeRecords records({});
    const HCRYPTPROV handle = open_provider();
    records.signers[0].hCryptProv = handle;
    const Message message(records.open({}));
    ASSERT_NE(message.handle(), nullptr);
    EXPECT_TRUE(CryptReleaseContext(handle, 0));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptReleaseContext(handle, 0)))
        << "the message has no user reference";
    EXPECT_TRUE(message.update(kContent));
}

TEST(ProviderHandle, SignsInManyThreadsAtOnce) {
    const SignRequest request{.signers = {{.name = "tsa_p256"}, {.name = "tsa_rsa2048"}}};
    EncodeRecords records(request);
    const Certificate certificate("tsa_p256.der");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 20; ++round) {
                const Message message(records.open(request));
                EXPECT_TRUE(message.update(kContent));
                EXPECT_TRUE(message.verify(certificate.info()));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(ReleaseContextFlag, GivesTheProviderToTheMessage) {
    const SignRequest request{.flags = CMSG_CMS_ENCAPSULATED_CONTENT_FLAG | CMSG_CRYPT_RELEASE_CONTEXT_FLAG};
    EncodeRecords records(request);
    const HCRYPTPROV handle = open_provider();
    records.signers[0].hCryptProv = handle;
    const HCRYPTMSG message = records.open(request);
    const HCRYPTMSG duplicate = CryptMsgDuplicate(message);
    EXPECT_TRUE(CryptMsgClose(message));
    EXPECT_TRUE(CryptContextAddRef(handle, nullptr, 0)) << "a duplicate still holds it";
    EXPECT_TRUE(CryptReleaseContext(handle, 0));
    EXPECT_TRUE(CryptMsgClose(duplicate));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptReleaseContext(handle, 0)));
}

TEST(ReleaseContextFlag, LeavesTheProviderWhenOpeningFails) {
    const SignRequest request{.inner_type = "no identifier", .flags = CMSG_CRYPT_RELEASE_CONTEXT_FLAG};
    EncodeRecords records(request);
    const HCRYPTPROV handle = open_provider();
    records.signers[0].hCryptProv = handle;
    EXPECT_TRUE(fails_with(CRYPT_E_OID_FORMAT, records.open(request) != nullptr));
    EXPECT_TRUE(CryptReleaseContext(handle, 0));
}

TEST(ReleaseContextFlag, WorksOnDecodingToo) {
    const HCRYPTPROV handle = open_provider();
    const HCRYPTMSG message = CryptMsgOpenToDecode(PKCS_7_ASN_ENCODING, CMSG_CRYPT_RELEASE_CONTEXT_FLAG, 0,
                                                   handle, nullptr, nullptr);
    EXPECT_TRUE(CryptMsgClose(message));
    EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptReleaseContext(handle, 0)));
}

}  // namespace
}  // namespace Quillmark::test

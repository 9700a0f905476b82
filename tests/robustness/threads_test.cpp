// Several threads at once: every operation on objects of their own, what is made at first use, and handles
// that they pass to each other. The thread sanitizer sees here what no result can show.

#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>

#include <array>
#include <atomic>
#include <random>

#include "asn1/name.h"
#include "asn1/pki_status.h"
#include "asn1data/information_objects.h"
#include "tests/platform/service.h"
#include "tests/robustness/operations.h"
#include "tests/robustness/threads.h"
#include "tests/robustness/time_stamps.h"
#include "tests/support/case_name.h"

// Read by the thread sanitizer, which does not see the lock under which the C library reads the time zone.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions();
const char* __tsan_default_suppressions() {
    return "race:tzset_internal\n";
}

namespace Quillmark::test {
namespace {

Operations all_operations() {
    Operations all;
    for (const auto& table :
         {value_operations, time_stamp_operations, authenticode_operations, object_operations,
          heap_operations, encode_operations, decode_operations, list_operations, class_operations,
          service_operations, value_operations_without_memory, time_stamp_operations_without_memory,
          authenticode_operations_without_memory, runtime_operations_without_memory,
          class_operations_without_memory, service_operations_without_memory}) {
        for (Operation& operation : table()) {
            all.push_back(std::move(operation));
        }
    }
    return all;
}

void run(const Operation& operation) {
    Trial trial;
    operation.run(trial);
}

// Each operation in two threads at the same time, and beside each other one.
TEST(Threads, DoEveryOperationOnObjectsOfTheirOwn) {
    const Operations operations = all_operations();
    run_at_once(2, [&](int) {
        for (const Operation& operation : operations) {
            for (int round = 0; round < 3; ++round) {
                run(operation);
            }
        }
    });
}

TEST(Threads, DoDifferentOperationsAtOnce) {
    const Operations operations = all_operations();
    run_at_once(4, [&](int thread) {
        for (std::size_t i = 0; i < operations.size(); ++i) {
            run(operations[(i * 7 + static_cast<std::size_t>(thread) * 60) % operations.size()]);
        }
    });
}

// What is made at first use. Each test is a process of its own, so nothing has been used before.

template <class Set>
void expect_one_for_16_threads() {
    std::array<Set*, 16> seen{};
    run_at_once(16, [&](int thread) {
        Set* const set = Set::instance(nullptr);
        for (std::size_t i = 0; i < set->count(); ++i) {
            EXPECT_NE(set->lookupObject(set->object(i)->id), nullptr);
        }
        seen[static_cast<std::size_t>(thread)] = set;
    });
    for (const Set* set : seen) {
        EXPECT_EQ(set, seen[0]);
    }
}

template <class Set>
class ObjectSetFirstUse : public testing::Test {};

using ObjectSets = testing::Types<asn1data::ExtensionSet, asn1data::SupportedPolicyQualifiers,
                                  asn1data::SupportedContentTypes, asn1data::SupportedContentTypesLegacy,
                                  asn1data::SupportedEContentTypes, asn1data::SupportedSigPolicyQualifiers,
                                  asn1data::SupportedAttributes, asn1data::SupportedAlgorithms,
                                  asn1data::SupportedInfos, asn1data::SupportedOCSPResponseTypes>;
TYPED_TEST_SUITE(ObjectSetFirstUse, ObjectSets);

TYPED_TEST(ObjectSetFirstUse, MakesOneSetFor16Threads) {
    expect_one_for_16_threads<TypeParam>();
}

TEST(FirstUse, OfAResponseIn16Threads) {
    const CBlob der = blob(
        // PKIStatusInfo with status rejection and a text
        "30 0d 30 0b 02 01 02 30 06 0c 04 74 65 78 74");
    run_at_once(16, [&](int) {
        PKI::TSP::CResponse response;
        response.decode(der);
        EXPECT_EQ(response.encode(), der);
    });
}

TEST(FirstUse, OfARequestIn16Threads) {
    run_at_once(16, [&](int) {
        const CBlob der = full_request().encode();
        PKI::TSP::CRequest request;
        request.decode(der);
        EXPECT_EQ(request.encode(), der);
    });
}

TEST(FirstUse, OfATokenIn16Threads) {
    run_at_once(16, [&](int) {
        const CBlob certificate = test::certificate("tsa_p256");
        PKI::TSP::CToken token;
        token.decode(signed_token().encode());
        EXPECT_TRUE(token.verify(certificate));
    });
}

TEST(FirstUse, OfNamesIn16Threads) {
    run_at_once(16, [&](int) {
        const ASN1::CName name(L"CN=A+SN=B,1.2.3=#0500");
        ASN1::CName read;
        read.decode(name.encode());
        EXPECT_EQ(read.toString(), name.toString());
    });
}

TEST(FirstUse, OfTheAttributeRegisterIn16Threads) {
    std::array<const void*, 16> seen{};
    run_at_once(16, [&](int thread) {
        const auto row = ASN1::CATAVRegister::find(L"CN");
        EXPECT_STREQ(row->get_oid(), "2.5.4.3");
        EXPECT_TRUE(ASN1::CATAVRegister::find("2.5.4.3") == row);
        seen[static_cast<std::size_t>(thread)] = &*row;
    });
    for (const void* row : seen) {
        EXPECT_EQ(row, seen[0]);
    }
}

TEST(FirstUse, OfAnEmptyFreeTextIn16Threads) {
    std::array<const ASN1::CPKIFreeTextString*, 16> seen{};
    run_at_once(16, [&](int thread) {
        const ASN1::CPKIFreeText empty;
        const ASN1::CPKIFreeTextString& text = empty;
        EXPECT_STREQ(text.get_value(), L"");
        seen[static_cast<std::size_t>(thread)] = &text;
    });
    for (const ASN1::CPKIFreeTextString* text : seen) {
        EXPECT_EQ(text, seen[0]);
    }
}

TEST(FirstUse, OfAStampIn16Threads) {
    run_at_once(16, [&](int) {
        const PKI::TSP::CMSStamp stamp = signed_stamp();
        PKI::TSP::CMSStamp read;
        read.decode(stamp.encode());
        EXPECT_TRUE(read.verify(test::certificate("tsa_p256")));
        EXPECT_EQ(read.get_content(), stamp.get_content());
    });
}

// Handles

const Octets kContent = from_hex("30 03 02 01 05");

/// Numbers of message handles that threads take from each other, and that others may have closed.
class SharedHandles {
  public:
    HCRYPTMSG get(std::mt19937& random) const { return handles_[random() % handles_.size()].load(); }
    /// Takes a handle out, which has no other holder then that knows of it.
    HCRYPTMSG replace(std::mt19937& random, HCRYPTMSG handle) {
        return handles_[random() % handles_.size()].exchange(handle);
    }

  private:
    std::array<std::atomic<HCRYPTMSG>, 4> handles_{};
};

HCRYPTMSG open_and_decode(const Octets& octets) {
    const HCRYPTMSG handle = open_to_decode();
    EXPECT_TRUE(CryptMsgUpdate(handle, octets.data(), static_cast<DWORD>(octets.size()), 1));
    return handle;
}

void expect_content_or_invalid(HCRYPTMSG handle) {
    BYTE content[16];
    DWORD size = sizeof content;
    if (CryptMsgGetParam(handle, CMSG_CONTENT_PARAM, 0, content, &size)) {
        EXPECT_EQ(Octets(content, content + size), kContent);
    } else {
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }
}

TEST(SharedMessages, AreClosedUsedAgainAndDuplicatedInAnyOrder) {
    const Octets token = sign({}, kContent);
    SharedHandles handles;
    std::atomic<long> opened{0};
    std::atomic<long> closed{0};
    run_at_once(8, [&](int thread) {
        std::mt19937 random(static_cast<unsigned>(thread));
        const auto close = [&](HCRYPTMSG handle) {
            if (handle != nullptr) {
                closed += CryptMsgClose(handle) != 0 ? 1 : 0;
            }
        };
        for (int step = 0; step < 2000; ++step) {
            switch (random() % 4) {
                case 0:
                    ++opened;
                    close(handles.replace(random, open_and_decode(token)));
                    break;
                case 1:
                    if (const HCRYPTMSG copy = CryptMsgDuplicate(handles.get(random)); copy != nullptr) {
                        ++opened;
                        close(handles.replace(random, copy));
                    }
                    break;
                case 2:  // of a handle that another thread may be using or closing
                    close(handles.get(random));
                    break;
                default:
                    expect_content_or_invalid(handles.get(random));
            }
        }
    });
    std::mt19937 random;
    for (int i = 0; i < 100; ++i) {
        const HCRYPTMSG handle = handles.replace(random, nullptr);
        closed += handle != nullptr && CryptMsgClose(handle) ? 1 : 0;
    }
    EXPECT_EQ(opened, closed) << "each handle is closed exactly once";
}

TEST(SharedProviders, SignWhileOthersTakeAndReleaseReferences) {
    const Provider provider("tsa_p256.key");
    const HCRYPTPROV handle = provider.handle();
    run_at_once(8, [&](int thread) {
        for (int round = 0; round < 20; ++round) {
            ASSERT_TRUE(CryptContextAddRef(handle, nullptr, 0));
            if (thread % 2 == 0) {
                SignRequest request;
                request.signers[0].provider = handle;
                EXPECT_FALSE(sign(request, kContent).empty());
            }
            EXPECT_TRUE(CryptReleaseContext(handle, 0));
        }
    });
}

TEST(SharedProviders, AnswerOneReleaseForEachReference) {
    for (int round = 0; round < 50; ++round) {
        HCRYPTPROV handle = 0;
        ASSERT_TRUE(CryptAcquireContextA(&handle, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT));
        std::atomic<int> references{1};
        run_at_once(4, [&](int) {
            references += CryptContextAddRef(handle, nullptr, 0) != 0 ? 1 : 0;
            references -= CryptReleaseContext(handle, 0) != 0 ? 1 : 0;
            references -= CryptReleaseContext(handle, 0) != 0 ? 1 : 0;
        });
        EXPECT_EQ(references, 0);
        EXPECT_TRUE(fails_with(ERROR_INVALID_HANDLE, CryptReleaseContext(handle, 0)));
    }
}

// What the service keeps for all of its callers

TEST(SharedPublicKeys, AreReadAndFoundByManyThreads) {
    const Octets token = sign({}, kContent);
    const Message message(open_and_decode(token));
    const Certificate certificate("tsa_p256.der");
    // More keys than are kept. They are not the signer's, and so its signature does not hold with them.
    std::vector<Octets> points;
    for (int i = 0; i < 80; ++i) {
        EVP_PKEY* const key = EVP_EC_gen("P-256");
        Octets point(65);
        std::size_t size = 0;
        ASSERT_EQ(
            EVP_PKEY_get_octet_string_param(key, OSSL_PKEY_PARAM_PUB_KEY, point.data(), point.size(), &size),
            1);
        ASSERT_EQ(size, point.size());
        EVP_PKEY_free(key);
        points.push_back(point);
    }
    run_at_once(4, [&](int thread) {
        std::mt19937 random(static_cast<unsigned>(thread));
        for (int round = 0; round < 200; ++round) {
            Octets point = points[random() % points.size()];
            CERT_INFO other = *certificate.info();
            other.SubjectPublicKeyInfo.PublicKey.pbData = point.data();
            EXPECT_TRUE(fails_with(NTE_BAD_SIGNATURE, message.verify(&other)));
            EXPECT_TRUE(message.verify(certificate.info()));
        }
    });
}

TEST(SharedProviders, LearnTheirPasswordWhileOthersSign) {
    for (int round = 0; round < 10; ++round) {
        HCRYPTPROV handle = 0;
        const std::string path = pki_path("tsa_p256_encrypted.key");
        ASSERT_TRUE(CryptAcquireContextA(&handle, path.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT));
        run_at_once(4, [&](int thread) {
            if (thread == 0) {
                EXPECT_TRUE(
                    CryptSetProvParam(handle, PP_SIGNATURE_PIN, reinterpret_cast<const BYTE*>("secret"), 0));
            }
            SignRequest request;
            request.signers[0].provider = handle;
            EncodeRecords records(request);
            const HCRYPTMSG message = records.open(request);
            if (message == nullptr) {
                EXPECT_EQ(GetLastError(), NTE_SILENT_CONTEXT);
                return;
            }
            EXPECT_TRUE(Message(message).update(kContent));
        });
        EXPECT_TRUE(CryptReleaseContext(handle, 0));
    }
}

TEST(SharedModules, AreLoadedByManyThreads) {
    const std::string path = pki_path("tsa_p256.key");
    run_at_once(8, [&](int thread) {
        for (const char* const module : {thread % 2 == 0 ? "default" : "base", "default", "base"}) {
            HCRYPTPROV handle = 0;
            EXPECT_TRUE(CryptAcquireContextA(&handle, path.c_str(), module, PROV_RSA_AES, CRYPT_SILENT))
                << module;
            CryptReleaseContext(handle, 0);
        }
    });
}

}  // namespace
}  // namespace Quillmark::test

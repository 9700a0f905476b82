// GOST R 34.10 and 34.11, which come from an engine of OpenSSL. The keys are made by support/make_gost.sh;
// where the engine is not installed the tests are skipped.

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/provider.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <thread>

#include "platform/detail/engine.h"
#include "tests/platform/containers.h"
#include "tests/platform/out_of_memory.h"
#include "tests/platform/pieces.h"
#include "tests/support/case_name.h"
#include "tests/support/child_process.h"

namespace Quillmark::test {
namespace {

constexpr char kStreebog256[] = "1.2.643.7.1.1.2.2";
constexpr char kStreebog512[] = "1.2.643.7.1.1.2.3";
constexpr char kGost94[] = "1.2.643.2.2.9";

// "" where the engine is installed, else why the tests are skipped.
std::string reason_to_skip() {
    const std::string file = pki_path("gost/absent");
    if (!std::filesystem::exists(file)) {
        return {};
    }
    const Octets reason = read_file(file);
    return {reason.begin(), reason.end()};
}

struct GostCase {
    const char* name;
    const char* key;
    const char* digest;
    const char* key_oid;
    const char* signature_oid;  // that names the digest too
    std::size_t point_octets;
};

void PrintTo(const GostCase& row, std::ostream* out) {
    *out << row.name;
}

constexpr GostCase kKinds[] = {
    {.name = "Gost2012Of256Bits",
     .key = "gost/tsa_gost2012_256",
     .digest = kStreebog256,
     .key_oid = "1.2.643.7.1.1.1.1",
     .signature_oid = "1.2.643.7.1.1.3.2",
     .point_octets = 64},
    {.name = "Gost2012Of512Bits",
     .key = "gost/tsa_gost2012_512",
     .digest = kStreebog512,
     .key_oid = "1.2.643.7.1.1.1.2",
     .signature_oid = "1.2.643.7.1.1.3.3",
     .point_octets = 128},
    {.name = "Gost2001",
     .key = "gost/tsa_gost2001",
     .digest = kGost94,
     .key_oid = "1.2.643.2.2.19",
     .signature_oid = "1.2.643.2.2.3",
     .point_octets = 64},
};

class Gost : public testing::Test {
  protected:
    void SetUp() override {
        if (const std::string reason = reason_to_skip(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
    }
};

class GostKind : public Gost, public testing::WithParamInterface<GostCase> {
  protected:
    static Octets signed_message() {
        return sign({.signers = {{.name = GetParam().key, .digest = GetParam().digest}},
                     .certificates = {read_pki(std::string(GetParam().key) + ".der")}},
                    kContent);
    }
    static std::string certificate_file() { return std::string(GetParam().key) + ".der"; }
};

TEST_P(GostKind, VerifiesWhatItSigned) {
    const Octets message = signed_message();
    const Certificate certificate(certificate_file());
    EXPECT_TRUE(verifies(message, certificate.info()));
    EXPECT_TRUE(verifies(message, certificate.info())) << "with the key in the cache";
}

TEST_P(GostKind, VerifiesBareData) {
    const Octets message = sign({.signers = {{.name = GetParam().key, .digest = GetParam().digest}},
                                 .inner_type = std::nullopt,
                                 .flags = 0},
                                kContent);
    const Certificate certificate(certificate_file());
    EXPECT_TRUE(verifies(message, certificate.info()));
}

// RFC 4490 3.2 and RFC 9215 3: digest and signature by these identifiers.
TEST_P(GostKind, WritesTheKeysIdentifierWithoutParametersAsItsSignature) {
    const std::vector<Octets> fields = signer_fields(signed_message());
    EXPECT_EQ(fields.at(Pieces::kDigest), sequence({object_id(GetParam().digest)}));
    EXPECT_EQ(fields.at(Pieces::kAlgorithm), sequence({object_id(GetParam().key_oid)}));
    EXPECT_EQ(contents_of(fields.at(Pieces::kSignature)).size(), GetParam().point_octets);
}

TEST_P(GostKind, TakesTheSignatureIdentifierThatNamesTheDigest) {
    Pieces pieces(signed_message());
    const Certificate certificate(certificate_file());
    const Octets null = element(0x05, "");
    pieces.signer.at(Pieces::kAlgorithm) = sequence({object_id(GetParam().signature_oid)});
    EXPECT_TRUE(verifies(pieces.message(), certificate.info()));
    pieces.signer.at(Pieces::kAlgorithm) = sequence({object_id(GetParam().key_oid), null});
    EXPECT_TRUE(verifies(pieces.message(), certificate.info())) << "as the openssl command writes it";
}

TEST_P(GostKind, RefusesTheSignatureIdentifiersOfOthers) {
    Pieces pieces(signed_message());
    const Certificate certificate(certificate_file());
    for (const GostCase& other : kKinds) {
        if (other.key == GetParam().key) {
            continue;
        }
        for (const char* const oid : {other.key_oid, other.signature_oid}) {
            pieces.signer.at(Pieces::kAlgorithm) = sequence({object_id(oid)});
            EXPECT_TRUE(fails_to_verify(NTE_BAD_ALGID, pieces.message(), certificate.info())) << oid;
        }
    }
    pieces.signer.at(Pieces::kAlgorithm) = sequence({object_id("1.2.840.10045.4.3.2")});
    EXPECT_TRUE(fails_to_verify(NTE_BAD_ALGID, pieces.message(), certificate.info()));
}

TEST_P(GostKind, NoticesAChangedSignature) {
    Pieces pieces(signed_message());
    pieces.signer.at(Pieces::kSignature).back() ^= 1;
    const Certificate certificate(certificate_file());
    EXPECT_TRUE(fails_to_verify(NTE_BAD_SIGNATURE, pieces.message(), certificate.info()));
}

// The engine itself reads past no octet that follows a good signature.
TEST_P(GostKind, RefusesSignaturesOfAnotherSize) {
    const Pieces good(signed_message());
    const Octets signature = contents_of(good.signer.at(Pieces::kSignature));
    const Certificate certificate(certificate_file());
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, signature.size() - 2, signature.size() - 1,
                                   signature.size() + 1, signature.size() + 2}) {
        Pieces pieces = good;
        Octets changed = signature;
        changed.resize(size);
        pieces.signer.at(Pieces::kSignature) = element(0x04, changed);
        EXPECT_TRUE(fails_to_verify(NTE_BAD_SIGNATURE, pieces.message(), certificate.info())) << size;
    }
}

TEST_P(GostKind, NoticesChangedContent) {
    Pieces pieces(signed_message());
    pieces.data.at(2).back() ^= 1;
    const Certificate certificate(certificate_file());
    EXPECT_TRUE(fails_to_verify(CRYPT_E_HASH_VALUE, pieces.message(), certificate.info()));
}

TEST_P(GostKind, SignsWithItsOwnDigestAlone) {
    const Provider provider(std::string(GetParam().key) + ".key");
    for (const char* const digest : {kStreebog256, kStreebog512, kGost94, kSha256Oid, kSha512Oid}) {
        const Message message(open_with(provider.handle(), GetParam().key, AT_SIGNATURE, digest));
        if (std::string_view(digest) == GetParam().digest) {
            EXPECT_NE(message.handle(), nullptr) << std::hex << GetLastError();
        } else {
            EXPECT_TRUE(fails_with(NTE_BAD_ALGID, message.handle() != nullptr)) << digest;
        }
    }
}

TEST_P(GostKind, ComputesTheHashOfItsContent) {
    const Message message(open_to_decode());
    ASSERT_TRUE(message.update(signed_message()));
    EXPECT_EQ(message.param(CMSG_COMPUTED_HASH_PARAM).size(), GetParam().point_octets == 128 ? 64u : 32u);
}

TEST_P(GostKind, RefusesTheCertificateOfAnotherKey) {
    for (const GostCase& other : kKinds) {
        const Provider provider(std::string(other.key) + ".key");
        if (other.key != GetParam().key) {
            EXPECT_TRUE(fails_with(
                NTE_BAD_PUBLIC_KEY,
                open_with(provider.handle(), GetParam().key, AT_SIGNATURE, GetParam().digest) != nullptr));
        }
    }
}

using KeyChange = std::function<void(CERT_PUBLIC_KEY_INFO&, Octets& key, Octets& parameters)>;

testing::AssertionResult refuses_key(const Octets& message, const std::string& file,
                                     const KeyChange& change) {
    const Certificate certificate(file);
    CERT_INFO info = *certificate.info();
    CERT_PUBLIC_KEY_INFO& info_key = info.SubjectPublicKeyInfo;
    Octets key(info_key.PublicKey.pbData, info_key.PublicKey.pbData + info_key.PublicKey.cbData);
    const CRYPT_OBJID_BLOB& blob = info_key.Algorithm.Parameters;
    Octets parameters(blob.pbData, blob.pbData + blob.cbData);
    change(info_key, key, parameters);
    info_key.PublicKey.pbData = key.data();
    info_key.PublicKey.cbData = static_cast<DWORD>(key.size());
    info_key.Algorithm.Parameters = {static_cast<DWORD>(parameters.size()), parameters.data()};
    return fails_to_verify(NTE_BAD_PUBLIC_KEY, message, &info);
}

TEST_P(GostKind, RefusesMalformedPublicKeys) {
    const Octets message = signed_message();
    const std::size_t octets = GetParam().point_octets;
    const auto refused = [&](const KeyChange& change) {
        return refuses_key(message, certificate_file(), change);
    };
    EXPECT_TRUE(refused([](auto& info, Octets&, Octets&) { info.PublicKey.cUnusedBits = 1; }));
    EXPECT_TRUE(refused([](auto&, Octets& key, Octets&) { key.clear(); }));
    EXPECT_TRUE(refused([](auto&, Octets& key, Octets&) { key.pop_back(); }));
    EXPECT_TRUE(refused([](auto&, Octets& key, Octets&) { key.push_back(0); }));
    EXPECT_TRUE(refused([](auto&, Octets& key, Octets&) { key = contents_of(key); })) << "the bare point";
    EXPECT_TRUE(refused([](auto&, Octets& key, Octets&) { key[0] = 0x03; })) << "no OCTET STRING";
    EXPECT_TRUE(refused([&](auto&, Octets& key, Octets&) { key = element(0x04, Octets(octets - 2, 1)); }));
    EXPECT_TRUE(refused([&](auto&, Octets& key, Octets&) { key = element(0x04, Octets(octets + 2, 1)); }));
    EXPECT_TRUE(refused([&](auto&, Octets& key, Octets&) { key = element(0x04, Octets(octets, 1)); }))
        << "off the curve";
    EXPECT_TRUE(refused([&](auto&, Octets& key, Octets&) { key = element(0x04, Octets(octets, 0)); }));
    EXPECT_TRUE(refused([](auto&, Octets&, Octets& parameters) { parameters.clear(); }));
    EXPECT_TRUE(refused([](auto&, Octets&, Octets& parameters) { parameters = element(0x05, ""); }));
    EXPECT_TRUE(refused([](auto&, Octets&, Octets& parameters) { parameters = sequence({}); }));
    EXPECT_TRUE(refused([](auto&, Octets&, Octets& parameters) {
        parameters = sequence({object_id("1.2.840.10045.3.1.7"), object_id("1.2.3.4")});
    })) << "the curve of another standard";
}

TEST_P(GostKind, ReadsAnyChangedPublicKeyWithoutHarm) {
    const Octets message = signed_message();
    const Certificate certificate(certificate_file());
    const CERT_PUBLIC_KEY_INFO& good = certificate.info()->SubjectPublicKeyInfo;
    for (DWORD at = 0; at < good.PublicKey.cbData + good.Algorithm.Parameters.cbData; ++at) {
        for (const std::uint8_t bit : Octets{0x01, 0x20, 0x80}) {
            CERT_INFO info = *certificate.info();
            CERT_PUBLIC_KEY_INFO& changed = info.SubjectPublicKeyInfo;
            Octets key(good.PublicKey.pbData, good.PublicKey.pbData + good.PublicKey.cbData);
            Octets parameters(good.Algorithm.Parameters.pbData,
                              good.Algorithm.Parameters.pbData + good.Algorithm.Parameters.cbData);
            (at < key.size() ? key[at] : parameters[at - key.size()]) ^= bit;
            changed.PublicKey.pbData = key.data();
            changed.Algorithm.Parameters.pbData = parameters.data();
            const Message opened(open_to_decode());
            ASSERT_TRUE(opened.update(message));
            if (opened.verify(&info)) {
                // Only the digest beside the curve may change: its identifier is the last of the parameters.
                EXPECT_GE(at, key.size() + parameters.size() / 2);
            }
        }
    }
}

// OpenSSL's commands as witnesses

TEST_P(GostKind, IsAcceptedByTheCommand) {
    const TemporaryDirectory directory;
    write_file(directory.path("message.der"), signed_message());
    ASSERT_TRUE(directory.run(
        "openssl cms -verify -engine gost -inform DER -in message.der -purpose timestampsign -CAfile " +
        pki_path("gost/ca.pem") + " -out content.der"));
    EXPECT_EQ(read_file(directory.path("content.der")), kContent);
}

TEST_P(GostKind, AcceptsWhatTheCommandSigned) {
    const TemporaryDirectory directory;
    write_file(directory.path("content.der"), kContent);
    const std::string key = pki_path(GetParam().key);
    ASSERT_TRUE(directory.run(
        "openssl cms -sign -engine gost -binary -nodetach -outform DER -in content.der -out message.der "
        "-econtent_type " +
        std::string(kTstInfoOid) + " -signer " + key + ".pem -inkey " + key + ".key"));
    const Certificate certificate(certificate_file());
    EXPECT_TRUE(verifies(read_file(directory.path("message.der")), certificate.info()));
}

// A token of the command's own authority verifies here, and one that is signed anew here verifies there.
TEST_P(GostKind, ExchangesTimeStampsWithTheCommand) {
    const TemporaryDirectory directory;
    const std::string kind = std::string(GetParam().key).substr(5);
    ASSERT_TRUE(
        directory.run("cp " + pki_path("gost/*.*") +
                      " . && echo text > data && openssl ts -query -data data -sha256 -cert -out query && "
                      "OPENSSL_CONF=tsa.cnf openssl ts -reply -config tsa.cnf -section " +
                      kind + " -queryfile query -token_out -out token"));
    const Message token(open_to_decode());
    ASSERT_TRUE(token.update(read_file(directory.path("token")))) << std::hex << GetLastError();
    const Certificate certificate(certificate_file());
    EXPECT_TRUE(token.verify(certificate.info())) << std::hex << GetLastError();

    Octets block = token.param(CMSG_SIGNER_AUTH_ATTR_PARAM);
    const auto* attributes = reinterpret_cast<const CRYPT_ATTRIBUTES*>(block.data());
    const SignRequest request{
        .signers = {{.name = GetParam().key, .digest = GetParam().digest}},
        .certificates = {token.param(CMSG_CERT_PARAM, 0), token.param(CMSG_CERT_PARAM, 1)}};
    EncodeRecords records(request);
    records.signers[0].cAuthAttr = attributes->cAttr;
    records.signers[0].rgAuthAttr = attributes->rgAttr;
    const Message anew(records.open(request));
    ASSERT_TRUE(anew.update(token.param(CMSG_CONTENT_PARAM)));
    write_file(directory.path("anew"), anew.param(CMSG_CONTENT_PARAM));
    EXPECT_TRUE(directory.run(
        "OPENSSL_CONF=openssl.cnf openssl ts -verify -data data -in anew -token_in -CAfile ca.pem"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, GostKind, testing::ValuesIn(kKinds), case_name);

// Digests with keys of other algorithms

TEST_F(Gost, DigestsGoWithNoOtherKeys) {
    for (const char* const signer : {"tsa_rsa2048", "tsa_pss", "tsa_p256", "tsa_ed25519"}) {
        const Provider provider(std::string(signer) + ".key");
        for (const char* const digest : {kStreebog256, kStreebog512, kGost94}) {
            EXPECT_TRUE(fails_with(NTE_BAD_ALGID,
                                   open_with(provider.handle(), signer, AT_SIGNATURE, digest) != nullptr))
                << signer << " " << digest;
        }
    }
}

// Under the same arc: a message authentication code, a signature, a key, a cipher, and nothing.
TEST_F(Gost, IdentifiersOfOtherThingsAreNoDigests) {
    const Provider provider("tsa_rsa2048.key");
    for (const char* const oid : {"1.2.643.2.2.22", "1.2.643.7.1.1.3.2", "1.2.643.7.1.1.1.1",
                                  "1.2.643.7.1.1.5.1", "1.2.643.9999", "1.2.643"}) {
        EXPECT_TRUE(fails_with(CRYPT_E_UNKNOWN_ALGO,
                               open_with(provider.handle(), "tsa_rsa2048", AT_SIGNATURE, oid) != nullptr))
            << oid;
    }
}

TEST_F(Gost, IsNotTheDefaultForAnything) {
    ASSERT_TRUE(load_gost_engine());
    const LibcryptoScope scope;
    for (const char* const name : {"SHA256", "SHA512", "SHA1"}) {
        EVP_MD* const digest = EVP_MD_fetch(nullptr, name, nullptr);
        EXPECT_STREQ(OSSL_PROVIDER_get0_name(EVP_MD_get0_provider(digest)), "default") << name;
        EVP_MD_free(digest);
    }
    const Provider provider("tsa_p256.key");
    EXPECT_TRUE(signs(provider.handle()));
}

// Opening keys

TEST_F(Gost, KeyIsReadFromPkcs12OfEitherEncryption) {
    for (const char* const file : {"gost/tsa_gost2012_256.p12", "gost/tsa_gost2012_256_gost.p12"}) {
        const Acquired provider(pki_path(file));
        ASSERT_TRUE(provider.result) << file;
        EXPECT_TRUE(fails_with(SCARD_W_WRONG_CHV, provider.set_pin("wrong"))) << file;
        EXPECT_TRUE(provider.set_pin("secret")) << file << std::hex << GetLastError();
        EXPECT_TRUE(signs(provider.handle, "gost/tsa_gost2012_256", AT_SIGNATURE, kStreebog256)) << file;
    }
}

TEST_F(Gost, EngineMayBeNamedAsTheModule) {
    const Acquired provider(pki_path("gost/tsa_gost2012_256.key"), "gost");
    ASSERT_TRUE(provider.result) << std::hex << GetLastError();
    EXPECT_TRUE(signs(provider.handle, "gost/tsa_gost2012_256", AT_SIGNATURE, kStreebog256));
}

TEST_F(Gost, EngineHasNoKeysOfItsOwn) {
    EXPECT_TRUE(fails_with(NTE_BAD_KEYSET, Acquired("engine:gost:key").result));
}

TEST_F(Gost, KeyOfTheApplicationSigns) {
    ASSERT_TRUE(load_gost_engine());
    FILE* const file = fopen(pki_path("gost/tsa_gost2012_512.key").c_str(), "r");
    EVP_PKEY* const key = PEM_read_PrivateKey(file, nullptr, nullptr, nullptr);
    fclose(file);
    ASSERT_NE(key, nullptr);
    HCRYPTPROV handle = 0;
    ASSERT_TRUE(KeyContainerFromKey(&handle, key));
    EVP_PKEY_free(key);
    EXPECT_TRUE(signs(handle, "gost/tsa_gost2012_512", AT_SIGNATURE, kStreebog512));
    CryptReleaseContext(handle, 0);
}

TEST_F(Gost, KeysLeaveTheErrorQueueOfTheApplicationAlone) {
    ERR_clear_error();
    ERR_raise(ERR_LIB_USER, 42);
    const Acquired provider(pki_path("gost/tsa_gost2012_256.key"));
    EXPECT_TRUE(signs(provider.handle, "gost/tsa_gost2012_256", AT_SIGNATURE, kStreebog256));
    Pieces pieces(sign({.signers = {{.name = "gost/tsa_gost2012_256", .digest = kStreebog256}}}, kContent));
    pieces.signer.at(Pieces::kSignature).back() ^= 1;
    const Certificate certificate("gost/tsa_gost2012_256.der");
    EXPECT_TRUE(fails_to_verify(NTE_BAD_SIGNATURE, pieces.message(), certificate.info()));
    EXPECT_EQ(ERR_GET_REASON(ERR_get_error()), 42);
    EXPECT_EQ(ERR_get_error(), 0u);
}

TEST_F(Gost, KeySignsAndVerifiesInManyThreads) {
    const SignRequest request{.signers = {{.name = "gost/tsa_gost2012_256", .digest = kStreebog256},
                                          {.name = "gost/tsa_gost2001", .digest = kGost94}}};
    EncodeRecords records(request);
    const Certificate first("gost/tsa_gost2012_256.der");
    const Certificate second("gost/tsa_gost2001.der");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < 10; ++round) {
                const Message message(records.open(request));
                EXPECT_TRUE(message.update(kContent));
                EXPECT_TRUE(message.verify(first.info()));
                EXPECT_TRUE(message.verify(second.info()));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(Gost, KeyIsOpenedAndUsedOrFailsWhenMemoryIsShort) {
    const SignRequest request{.signers = {{.name = "gost/tsa_gost2012_256", .digest = kStreebog256}}};
    EncodeRecords records(request);
    const Certificate certificate("gost/tsa_gost2012_256.der");
    const std::string path = pki_path("gost/tsa_gost2012_256.key");
    expect_out_of_memory_at_each_allocation([&] {
        HCRYPTPROV handle = 0;
        if (!CryptAcquireContextA(&handle, path.c_str(), nullptr, PROV_RSA_AES, 0)) {
            return false;
        }
        records.signers[0].hCryptProv = handle;
        const HCRYPTMSG message = records.open(request);
        const bool succeeded =
            message != nullptr &&
            CryptMsgUpdate(message, kContent.data(), static_cast<DWORD>(kContent.size()), 1) != 0 &&
            CryptMsgControl(message, 0, CMSG_CTRL_VERIFY_SIGNATURE, certificate.info()) != 0;
        const DWORD code = GetLastError();
        CryptMsgClose(message);
        CryptReleaseContext(handle, 0);
        SetLastError(code);
        return succeeded;
    });
}

// Processes of their own: the engine is loaded for the rest of a process.

class GostProcess : public Gost {
  protected:
    // Exits with 0 when `check` was true, in a process that has not done anything before.
    static void exit_with(const std::function<bool()>& check) { end_child(check() ? 0 : 1); }

    void SetUp() override {
        Gost::SetUp();
        GTEST_FLAG_SET(death_test_style, "threadsafe");
    }
};

using GostProcessDeathTest = GostProcess;

TEST_F(GostProcessDeathTest, LoadsTheEngineOnlyWhenItIsNeeded) {
    EXPECT_EXIT(exit_with([] {
                    const Acquired other(pki_path("tsa_p256.key"));
                    const bool was_loaded = !signs(other.handle) || is_gost_engine_loaded();
                    const Acquired gost(pki_path("gost/tsa_gost2012_256.key"));
                    return !was_loaded && gost.result && is_gost_engine_loaded();
                }),
                testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exit_with([] {
                    const Acquired missing(pki_path("missing"));
                    const Acquired locked(pki_path("tsa_p256.p12"));
                    return !missing.result && locked.result && !is_gost_engine_loaded();
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(GostProcessDeathTest, VerifiesBeforeAnyKeyWasOpened) {
    EXPECT_EXIT(exit_with([&] {
                    const Certificate certificate("gost/tsa_gost2012_256.der");
                    const Message message(open_to_decode());
                    const std::string key = pki_path("gost/tsa_gost2012_256");
                    const TemporaryDirectory own;
                    write_file(own.path("content"), kContent);
                    return own.run(
                               "openssl cms -sign -engine gost -binary -nodetach -outform DER -in content "
                               "-out message -signer " +
                               key + ".pem -inkey " + key + ".key") &&
                           message.update(read_file(own.path("message"))) &&
                           message.verify(certificate.info());
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(GostProcessDeathTest, AsksOnceForThePasswordOfAFileThatIsReadTwice) {
    EXPECT_EXIT(exit_with([] {
                    Password password{"secret"};
                    HCRYPTPROV handle = 0;
                    return KeyContainerOpen(&handle, pki_path("gost/tsa_gost2012_256.p12").c_str(), nullptr,
                                            0, give_password, &password) &&
                           password.calls == 1;
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(GostProcessDeathTest, HandlesOfKeysAreReleasedAfterTheEndOfLibcrypto) {
    EXPECT_EXIT(exit_with([] {
                    HCRYPTPROV handle = 0;
                    const std::string key = pki_path("gost/tsa_gost2012_256.key");
                    if (!CryptAcquireContextA(&handle, key.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT) ||
                        !signs(handle, "gost/tsa_gost2012_256", AT_SIGNATURE, kStreebog256)) {
                        return false;
                    }
                    const HCRYPTMSG open =
                        open_with(handle, "gost/tsa_gost2012_256", AT_SIGNATURE, kStreebog256);
                    OPENSSL_cleanup();
                    return !CryptMsgUpdate(open, kContent.data(), static_cast<DWORD>(kContent.size()), 1) &&
                           GetLastError() == E_FAIL && CryptMsgClose(open) && CryptReleaseContext(handle, 0);
                }),
                testing::ExitedWithCode(0), "");
}

// Without the engine. These run wherever it is installed or not: it is looked for where there is none.

class WithoutGostDeathTest : public testing::Test {
  protected:
    static void exit_with(const std::function<bool()>& check) {
        setenv("OPENSSL_ENGINES", "/nonexistent", 1);
        end_child(check() ? 0 : 1);
    }

    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(WithoutGostDeathTest, DigestsAreUnknown) {
    EXPECT_EXIT(exit_with([] {
                    const Provider provider("tsa_rsa2048.key");
                    for (const char* const digest : {kStreebog256, kStreebog512, kGost94}) {
                        if (!fails_with(CRYPT_E_UNKNOWN_ALGO, open_with(provider.handle(), "tsa_rsa2048",
                                                                        AT_SIGNATURE, digest) != nullptr)) {
                            return false;
                        }
                    }
                    return true;
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(WithoutGostDeathTest, MessagesAreReadAndNotVerified) {
    EXPECT_EXIT(exit_with([] {
                    Pieces pieces(sign({}, kContent));
                    pieces.signer.at(Pieces::kDigest) = sequence({object_id(kStreebog256)});
                    const Message message(open_to_decode());
                    const Certificate certificate("tsa_p256.der");
                    return fails_with(CRYPT_E_UNKNOWN_ALGO, message.update(pieces.message())) &&
                           message.param(CMSG_CONTENT_PARAM) == kContent &&
                           fails_with(CRYPT_E_UNKNOWN_ALGO, message.verify(certificate.info()));
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(WithoutGostDeathTest, PublicKeysAreUnknown) {
    EXPECT_EXIT(exit_with([] {
                    Octets point = element(0x04, Octets(64, 1));
                    Octets parameters = sequence({object_id("1.2.643.2.2.35.1")});
                    char oid[] = "1.2.643.7.1.1.1.1";
                    const Certificate certificate("tsa_p256.der");
                    const SignRequest request;
                    EncodeRecords records(request);
                    CERT_INFO info = *certificate.info();
                    info.SubjectPublicKeyInfo = {
                        {oid, {static_cast<DWORD>(parameters.size()), parameters.data()}},
                        {static_cast<DWORD>(point.size()), point.data(), 0}};
                    records.signers[0].pCertInfo = &info;
                    const bool refused = fails_with(NTE_BAD_ALGID, records.open(request) != nullptr);
                    char digest[] = "1.2.643.7.1.1.2.2";
                    records.signers[0].HashAlgorithm.pszObjId = digest;
                    return refused && fails_with(CRYPT_E_UNKNOWN_ALGO, records.open(request) != nullptr);
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(WithoutGostDeathTest, KeyFilesCannotBeRead) {
    if (const std::string reason = reason_to_skip(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    EXPECT_EXIT(exit_with([] {
                    return fails_with(NTE_BAD_KEYSET, Acquired(pki_path("gost/tsa_gost2012_256.key")).result);
                }),
                testing::ExitedWithCode(0), "");
}

TEST_F(WithoutGostDeathTest, TheEngineIsNoModule) {
    EXPECT_EXIT(exit_with([] {
                    return fails_with(NTE_PROVIDER_DLL_FAIL,
                                      Acquired(pki_path("tsa_p256.key"), "gost").result);
                }),
                testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Quillmark::test

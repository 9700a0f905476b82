// The functions of the platform service.

#include <openssl/evp.h>
#include <openssl/pem.h>

#include <cstdio>
#include <memory>
#include <string>

#include "platform/key_container.h"
#include "tests/platform/service.h"
#include "tests/robustness/operations.h"

namespace Quillmark::test {

namespace {

const Octets kContent = from_hex("30 03 02 01 05");

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

Key read_key() {
    std::FILE* const file = std::fopen(pki_path("tsa_p256.key").c_str(), "r");
    Key key(PEM_read_PrivateKey(file, nullptr, nullptr, nullptr), EVP_PKEY_free);
    std::fclose(file);
    return key;
}

std::wstring wide(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

int give_password(char* buffer, int size, LPCSTR /*container*/, void* /*argument*/) {
    return std::snprintf(buffer, static_cast<std::size_t>(size), "secret");
}

/// One signer with attributes, and a certificate.
SignRequest full_message() {
    SignRequest request;
    request.signers[0].signed_attributes = {{"1.2.9", {from_hex("02 01 01")}}};
    request.signers[0].unsigned_attributes = {{"1.2.10", {from_hex("02 01 02")}}};
    request.certificates = {read_pki("tsa_p256.der")};
    return request;
}

const Octets& signed_message() {
    static const Octets message = sign(full_message(), kContent);
    return message;
}

HCRYPTMSG decoded_message() {
    const HCRYPTMSG handle = open_to_decode();
    const Octets& octets = signed_message();
    EXPECT_TRUE(CryptMsgUpdate(handle, octets.data(), static_cast<DWORD>(octets.size()), 1));
    return handle;
}

/// A row for opening a key: no handle after a failure, and another try succeeds.
template <class Open>
Operation opens_key(const char* name, Open open) {
    return {name, [open](Trial& trial) {
                HCRYPTPROV handle = 0;
                if (!trial.service([&] { return open(&handle); })) {
                    EXPECT_EQ(handle, 0u);
                    EXPECT_TRUE(open(&handle));
                }
                EXPECT_TRUE(CryptReleaseContext(handle, 0));
            }};
}

}  // namespace

Operations service_operations() {
    return {
        {"OpenToEncode",
         [](Trial& trial) {
             const SignRequest request = full_message();
             EncodeRecords records(request);
             std::string inner_type = kTstInfoOid;
             const auto open = [&] {
                 return CryptMsgOpenToEncode(PKCS_7_ASN_ENCODING, CMSG_CMS_ENCAPSULATED_CONTENT_FLAG,
                                             CMSG_SIGNED, &records.info, inner_type.data(), nullptr);
             };
             const HCRYPTMSG handle = trial.service(open);
             const Message message(handle != nullptr ? handle : open());
             EXPECT_TRUE(message.update(kContent));
         }},
        {"OpenToDecode",
         [](Trial& trial) {
             const HCRYPTMSG handle = trial.service(
                 [] { return CryptMsgOpenToDecode(PKCS_7_ASN_ENCODING, 0, 0, 0, nullptr, nullptr); });
             EXPECT_TRUE(CryptMsgClose(handle));
         }},
        {"Sign",
         [](Trial& trial) {
             const SignRequest request = full_message();
             EncodeRecords records(request);
             const Message message(records.open(request));
             const BOOL signed_it = trial.service([&] { return message.update(kContent); });
             DWORD size = 0;
             EXPECT_EQ(CryptMsgGetParam(message.handle(), CMSG_CONTENT_PARAM, 0, nullptr, &size), signed_it);
             if (!signed_it) {
                 EXPECT_TRUE(fails_with(CRYPT_E_MSG_ERROR, message.update(kContent)));
             }
         }},
        {"Decode",
         [](Trial& trial) {
             const Octets& octets = signed_message();
             const Message message(open_to_decode());
             if (!trial.service([&] { return message.update(octets); })) {
                 EXPECT_EQ(message.param_error(CMSG_CONTENT_PARAM), CRYPT_E_MSG_ERROR);
             }
         }},
        {"AskForTheEncodedMessage",
         [](Trial& trial) {
             const SignRequest request = full_message();
             EncodeRecords records(request);
             const Message message(records.open(request));
             EXPECT_TRUE(message.update(kContent));
             DWORD size = 0;
             trial.service([&] {
                 return CryptMsgGetParam(message.handle(), CMSG_COMPUTED_HASH_PARAM, 0, nullptr, &size);
             });
         }},
        {"Verify",
         [](Trial& trial) {
             const Message message(decoded_message());
             const Certificate certificate("tsa_p256.der");
             if (!trial.service([&] { return message.verify(certificate.info()); })) {
                 EXPECT_TRUE(message.verify(certificate.info()));
             }
         }},
        {"CreateCertificateContext",
         [](Trial& trial) {
             const Octets octets = read_pki("tsa_p256.der");
             const auto size = static_cast<DWORD>(octets.size());
             PCCERT_CONTEXT context = trial.service(
                 [&] { return CertCreateCertificateContext(X509_ASN_ENCODING, octets.data(), size); });
             EXPECT_TRUE(CertFreeCertificateContext(context));
         }},
        opens_key("AcquireContext",
                  [path = pki_path("tsa_p256.key")](HCRYPTPROV* handle) {
                      return CryptAcquireContextA(handle, path.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT);
                  }),
        opens_key("AcquireContextByWideName",
                  [path = wide(pki_path("tsa_p256.key"))](HCRYPTPROV* handle) {
                      return CryptAcquireContextW(handle, path.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT);
                  }),
        opens_key("AcquireContextOfAnUnlockedContainer",
                  [path = pki_path("tsa_p256_empty.p12")](HCRYPTPROV* handle) {
                      return CryptAcquireContextA(handle, path.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT);
                  }),
        opens_key("KeyContainerOpen",
                  [path = pki_path("tsa_p256_encrypted.key")](HCRYPTPROV* handle) {
                      return KeyContainerOpen(handle, path.c_str(), nullptr, 0, give_password, nullptr);
                  }),
        {"KeyContainerFromKey",
         [](Trial& trial) {
             const Key key = read_key();
             HCRYPTPROV handle = 0;
             if (!trial.service([&] { return KeyContainerFromKey(&handle, key.get()); })) {
                 EXPECT_EQ(handle, 0u);
                 EXPECT_TRUE(KeyContainerFromKey(&handle, key.get()));
             }
             EXPECT_TRUE(CryptReleaseContext(handle, 0));
         }},
        {"SetPassword",
         [](Trial& trial) {
             const std::string path = pki_path("tsa_p256_encrypted.key");
             HCRYPTPROV handle = 0;
             EXPECT_TRUE(CryptAcquireContextA(&handle, path.c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT));
             const auto* const password = reinterpret_cast<const BYTE*>("secret");
             if (!trial.service([&] { return CryptSetProvParam(handle, PP_SIGNATURE_PIN, password, 0); })) {
                 EXPECT_TRUE(CryptSetProvParam(handle, PP_SIGNATURE_PIN, password, 0));
             }
             EXPECT_TRUE(CryptReleaseContext(handle, 0));
         }},
    };
}

Operations service_operations_without_memory() {
    return {
        {"Message",
         [](Trial& trial) {
             const HCRYPTMSG message = decoded_message();
             trial.call([&] {
                 DWORD size = 0;
                 EXPECT_TRUE(CryptMsgGetParam(message, CMSG_CONTENT_PARAM, 0, nullptr, &size));
                 EXPECT_TRUE(CryptMsgGetParam(message, CMSG_ENCODED_SIGNER, 0, nullptr, &size));
                 EXPECT_TRUE(CryptMsgGetParam(message, CMSG_CERT_PARAM, 0, nullptr, &size));
                 EXPECT_TRUE(CryptMsgGetParam(message, CMSG_SIGNER_UNAUTH_ATTR_PARAM, 0, nullptr, &size));
                 alignas(CRYPT_ATTRIBUTES) BYTE attributes[1000];
                 size = sizeof attributes;
                 EXPECT_TRUE(CryptMsgGetParam(message, CMSG_SIGNER_AUTH_ATTR_PARAM, 0, attributes, &size));
                 DWORD count = 0;
                 size = sizeof count;
                 EXPECT_TRUE(CryptMsgGetParam(message, CMSG_SIGNER_COUNT_PARAM, 0, &count, &size));
                 const HCRYPTMSG other = CryptMsgDuplicate(message);
                 EXPECT_TRUE(CryptMsgClose(other));
                 EXPECT_FALSE(CryptMsgClose(other));
                 EXPECT_FALSE(CryptMsgControl(message, 0, 99, nullptr));
             });
             EXPECT_TRUE(CryptMsgClose(message));
         }},
        {"CertificateContext",
         [](Trial& trial) {
             const Certificate certificate("tsa_p256.der");
             trial.call([&] {
                 EXPECT_TRUE(
                     CertFreeCertificateContext(CertDuplicateCertificateContext(certificate.context())));
             });
         }},
        {"Provider",
         [](Trial& trial) {
             const Provider provider("tsa_p256.key");
             trial.call([&] {
                 EXPECT_TRUE(CryptContextAddRef(provider.handle(), nullptr, 0));
                 EXPECT_TRUE(CryptReleaseContext(provider.handle(), 0));
             });
         }},
        {"Support",
         [](Trial& trial) {
             trial.call([] {
                 SetLastError(5);
                 EXPECT_EQ(GetLastError(), 5u);
                 FILETIME time;
                 GetSystemTimeAsFileTime(&time);
                 SYSTEMTIME fields;
                 EXPECT_TRUE(FileTimeToSystemTime(&time, &fields));
                 EXPECT_TRUE(SystemTimeToFileTime(&fields, &time));
                 wchar_t wide[8];
                 EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", -1, wide, 8), 2);
                 char narrow[8];
                 EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide, -1, narrow, 8, nullptr, nullptr), 2);
             });
         }},
    };
}

}  // namespace Quillmark::test

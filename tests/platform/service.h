#pragma once

// The platform service in tests: owners of its handles, messages made with the test keys, and the openssl
// command as a witness from outside.

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/cryptoapi.h"
#include "platform/detail/error_code.h"
#include "platform/key_container.h"
#include "tests/support/der.h"

namespace Quillmark::test {

using namespace Quillmark::platform;

inline constexpr char kSha1Oid[] = "1.3.14.3.2.26";
inline constexpr char kSha256Oid[] = "2.16.840.1.101.3.4.2.1";
inline constexpr char kSha384Oid[] = "2.16.840.1.101.3.4.2.2";
inline constexpr char kSha512Oid[] = "2.16.840.1.101.3.4.2.3";
inline constexpr char kDataOid[] = "1.2.840.113549.1.7.1";
inline constexpr char kTstInfoOid[] = "1.2.840.113549.1.9.16.1.4";

/// What a failing call of the service left, in the form of a test's outcome.
testing::AssertionResult fails_with(DWORD code, bool succeeded);

/// Path of a file that support/make_pki.sh made, and its octets.
std::string pki_path(const std::string& name);
Octets read_pki(const std::string& name);

Octets read_file(const std::string& path);
void write_file(const std::string& path, const Octets& octets);

/// A directory of its own for one test, removed with its files at the end.
class TemporaryDirectory {
  public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::string path(const std::string& name) const { return path_ + "/" + name; }
    /// Runs a command of the shell here; what it printed is the message of a failure.
    testing::AssertionResult run(const std::string& command) const;

  private:
    std::string path_;
};

class Provider {
  public:
    /// The private key in a file of the test keys.
    explicit Provider(const std::string& file);
    ~Provider();
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;
    HCRYPTPROV handle() const { return handle_; }

  private:
    HCRYPTPROV handle_ = 0;
};

class Certificate {
  public:
    /// From a file of the test certificates.
    explicit Certificate(const std::string& file);
    ~Certificate() { CertFreeCertificateContext(context_); }
    Certificate(const Certificate&) = delete;
    Certificate& operator=(const Certificate&) = delete;
    PCCERT_CONTEXT context() const { return context_; }
    CERT_INFO* info() const { return context_->pCertInfo; }

  private:
    PCCERT_CONTEXT context_ = nullptr;
};

class Message {
  public:
    explicit Message(HCRYPTMSG handle) : handle_(handle) {}
    ~Message() { CryptMsgClose(handle_); }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;
    HCRYPTMSG handle() const { return handle_; }
    BOOL update(const Octets& octets) const {
        return CryptMsgUpdate(handle_, octets.data(), static_cast<DWORD>(octets.size()), 1);
    }
    /// The value of a parameter, which must be there.
    Octets param(DWORD type, DWORD index = 0) const;
    DWORD count(DWORD type) const;
    /// The last error of a query that must fail.
    DWORD param_error(DWORD type, DWORD index = 0) const;
    BOOL verify(const CERT_INFO* certificate) const {
        return CryptMsgControl(handle_, 0, CMSG_CTRL_VERIFY_SIGNATURE, certificate);
    }

  private:
    HCRYPTMSG handle_;
};

struct AttributeText {
    std::string oid;
    std::vector<Octets> values;
};

/// One signer of a message, and how it signs.
struct Signer {
    std::string name = "tsa_p256";  // of key and certificate
    std::string digest = kSha256Oid;
    Octets digest_parameters = {};
    DWORD key_spec = AT_SIGNATURE;
    std::vector<AttributeText> signed_attributes = {};
    std::vector<AttributeText> unsigned_attributes = {};
    HCRYPTPROV provider = 0;  // instead of the key of that name
};

struct SignRequest {
    std::vector<Signer> signers = {Signer{}};
    std::optional<std::string> inner_type = kTstInfoOid;
    DWORD flags = CMSG_CMS_ENCAPSULATED_CONTENT_FLAG;
    std::vector<Octets> certificates = {};
    std::vector<Octets> crls = {};
};

/// Keeps the records that a request is turned into; they can be changed before the message is opened.
class EncodeRecords {
  public:
    explicit EncodeRecords(const SignRequest& request);
    ~EncodeRecords();
    EncodeRecords(const EncodeRecords&) = delete;
    EncodeRecords& operator=(const EncodeRecords&) = delete;

    CMSG_SIGNED_ENCODE_INFO info{};
    std::vector<CMSG_SIGNER_ENCODE_INFO> signers;
    HCRYPTMSG open(const SignRequest& request);

  private:
    struct Storage;
    std::unique_ptr<Storage> storage_;
};

HCRYPTMSG open_to_encode(const SignRequest& request);
HCRYPTMSG open_to_decode();

/// The finished message of a request. Failures show in the test and give no octets.
Octets sign(const SignRequest& request, const Octets& content);

/// An object identifier with its tag, from its text; made without the code under test.
Octets object_id(const std::string& text);

}  // namespace Quillmark::test

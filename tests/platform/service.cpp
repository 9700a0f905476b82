#include "tests/platform/service.h"

#include <cstdlib>
#include <deque>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

namespace Quillmark::test {

testing::AssertionResult fails_with(DWORD code, bool succeeded) {
    if (succeeded) {
        return testing::AssertionFailure() << "succeeded, want " << std::hex << code;
    }
    const DWORD got = GetLastError();
    if (got == code) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << std::hex << "failed with " << got << ", want " << code;
}

std::string pki_path(const std::string& name) {
    return std::string(QUILLMARK_TEST_PKI) + "/" + name;
}

Octets read_pki(const std::string& name) {
    return read_file(pki_path(name));
}

Octets read_file(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

void write_file(const std::string& path, const Octets& octets) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(octets.data()), static_cast<std::streamsize>(octets.size()));
}

TemporaryDirectory::TemporaryDirectory()
    : path_(std::filesystem::temp_directory_path() / "quillmark-XXXXXX") {
    EXPECT_NE(mkdtemp(path_.data()), nullptr);
}

TemporaryDirectory::~TemporaryDirectory() {
    std::filesystem::remove_all(path_);
}

testing::AssertionResult TemporaryDirectory::run(const std::string& command) const {
    const std::string log = path("log");
    const int status = std::system(("cd '" + path_ + "' && { " + command + " ; } > log 2>&1").c_str());
    if (status == 0) {
        return testing::AssertionSuccess();
    }
    const Octets output = read_file(log);
    return testing::AssertionFailure() << command << "\n" << std::string(output.begin(), output.end());
}

Provider::Provider(const std::string& file) {
    EXPECT_TRUE(CryptAcquireContextA(&handle_, pki_path(file).c_str(), nullptr, PROV_RSA_AES, CRYPT_SILENT));
}

Provider::~Provider() {
    CryptReleaseContext(handle_, 0);
}

Certificate::Certificate(const std::string& file) {
    const Octets der = read_pki(file);
    context_ = CertCreateCertificateContext(X509_ASN_ENCODING, der.data(), static_cast<DWORD>(der.size()));
    EXPECT_NE(context_, nullptr) << file;
}

Octets Message::param(DWORD type, DWORD index) const {
    DWORD size = 0;
    EXPECT_TRUE(CryptMsgGetParam(handle_, type, index, nullptr, &size)) << std::hex << GetLastError();
    Octets value(size);
    // An empty vector has no address, and a null pointer would ask for the size again.
    EXPECT_TRUE(CryptMsgGetParam(handle_, type, index, value.data(), &size));
    EXPECT_EQ(size, value.size());
    return value;
}

DWORD Message::count(DWORD type) const {
    DWORD value = 0;
    DWORD size = sizeof(value);
    EXPECT_TRUE(CryptMsgGetParam(handle_, type, 0, &value, &size)) << std::hex << GetLastError();
    EXPECT_EQ(size, sizeof(value));
    return value;
}

DWORD Message::param_error(DWORD type, DWORD index) const {
    DWORD size = 0;
    SetLastError(0);
    EXPECT_FALSE(CryptMsgGetParam(handle_, type, index, nullptr, &size));
    return GetLastError();
}

namespace {

CRYPT_DATA_BLOB blob(const Octets& octets) {
    return {.cbData = static_cast<DWORD>(octets.size()), .pbData = const_cast<BYTE*>(octets.data())};
}

}  // namespace

struct EncodeRecords::Storage {
    explicit Storage(const SignRequest& made_for) : request(made_for) {}

    std::vector<CRYPT_ATTRIBUTE>& attributes(const std::vector<AttributeText>& texts) {
        std::vector<CRYPT_ATTRIBUTE>& records = attribute_lists.emplace_back();
        for (const AttributeText& text : texts) {
            std::vector<CRYPT_ATTR_BLOB>& values = blob_lists.emplace_back();
            for (const Octets& value : text.values) {
                values.push_back(blob(value));
            }
            records.push_back({.pszObjId = const_cast<char*>(text.oid.c_str()),
                               .cValue = static_cast<DWORD>(values.size()),
                               .rgValue = values.data()});
        }
        return records;
    }

    std::vector<CRYPT_DATA_BLOB>& blobs(const std::vector<Octets>& pieces) {
        std::vector<CRYPT_DATA_BLOB>& list = blob_lists.emplace_back();
        for (const Octets& piece : pieces) {
            list.push_back(blob(piece));
        }
        return list;
    }

    SignRequest request;
    std::deque<Provider> providers;
    std::deque<Certificate> certificates;
    std::deque<std::vector<CRYPT_ATTRIBUTE>> attribute_lists;
    std::deque<std::vector<CRYPT_ATTR_BLOB>> blob_lists;
};

EncodeRecords::EncodeRecords(const SignRequest& request) : storage_(std::make_unique<Storage>(request)) {
    for (const Signer& signer : storage_->request.signers) {
        const HCRYPTPROV provider = signer.provider != 0
                                        ? signer.provider
                                        : storage_->providers.emplace_back(signer.name + ".key").handle();
        const Certificate& certificate = storage_->certificates.emplace_back(signer.name + ".der");
        auto& with_signature = storage_->attributes(signer.signed_attributes);
        auto& without_signature = storage_->attributes(signer.unsigned_attributes);
        signers.push_back({.cbSize = sizeof(CMSG_SIGNER_ENCODE_INFO),
                           .pCertInfo = certificate.info(),
                           .hCryptProv = provider,
                           .dwKeySpec = signer.key_spec,
                           .HashAlgorithm = {.pszObjId = const_cast<char*>(signer.digest.c_str()),
                                             .Parameters = blob(signer.digest_parameters)},
                           .pvHashAuxInfo = nullptr,
                           .cAuthAttr = static_cast<DWORD>(with_signature.size()),
                           .rgAuthAttr = with_signature.data(),
                           .cUnauthAttr = static_cast<DWORD>(without_signature.size()),
                           .rgUnauthAttr = without_signature.data()});
    }
    auto& certificates = storage_->blobs(storage_->request.certificates);
    auto& crls = storage_->blobs(storage_->request.crls);
    info = {.cbSize = sizeof(CMSG_SIGNED_ENCODE_INFO),
            .cSigners = static_cast<DWORD>(signers.size()),
            .rgSigners = signers.data(),
            .cCertEncoded = static_cast<DWORD>(certificates.size()),
            .rgCertEncoded = certificates.data(),
            .cCrlEncoded = static_cast<DWORD>(crls.size()),
            .rgCrlEncoded = crls.data()};
}

EncodeRecords::~EncodeRecords() = default;

HCRYPTMSG EncodeRecords::open(const SignRequest& request) {
    char* const inner_type = request.inner_type ? const_cast<char*>(request.inner_type->c_str()) : nullptr;
    return CryptMsgOpenToEncode(PKCS_7_ASN_ENCODING | X509_ASN_ENCODING, request.flags, CMSG_SIGNED, &info,
                                inner_type, nullptr);
}

HCRYPTMSG open_to_encode(const SignRequest& request) {
    return EncodeRecords(request).open(request);
}

HCRYPTMSG open_to_decode() {
    return CryptMsgOpenToDecode(PKCS_7_ASN_ENCODING | X509_ASN_ENCODING, 0, 0, 0, nullptr, nullptr);
}

Octets sign(const SignRequest& request, const Octets& content) {
    const Message message(open_to_encode(request));
    EXPECT_NE(message.handle(), nullptr) << std::hex << GetLastError();
    EXPECT_TRUE(message.update(content)) << std::hex << GetLastError();
    return message.param(CMSG_CONTENT_PARAM);
}

Octets object_id(const std::string& text) {
    std::istringstream stream(text);
    std::vector<unsigned long> arcs;
    for (std::string arc; std::getline(stream, arc, '.');) {
        arcs.push_back(std::stoul(arc));
    }
    arcs[1] += 40 * arcs[0];
    Octets content;
    for (std::size_t i = 1; i < arcs.size(); ++i) {
        Octets arc{static_cast<std::uint8_t>(arcs[i] & 0x7F)};
        for (unsigned long rest = arcs[i] >> 7; rest != 0; rest >>= 7) {
            arc.insert(arc.begin(), static_cast<std::uint8_t>(0x80 | (rest & 0x7F)));
        }
        content = join({content, arc});
    }
    return element(0x06, content);
}

}  // namespace Quillmark::test

// The message service as reader. Whatever the octets, `CryptMsgUpdate` takes them or fails with a code of its
// header, and answers neither way with more than was asked: each query gives the size that it announced,
// writes nothing with one octet less room, and is refused behind the last index; what it hands out lies in
// its own buffer. A message cut short is refused, octets behind it are ignored, and a duplicate answers as
// the first handle does.

#include <algorithm>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "platform/cryptoapi.h"

namespace Quillmark::fuzz {

namespace {

constexpr Codes kMalformed = {CRYPT_E_ASN1_EOD, CRYPT_E_ASN1_CORRUPT, CRYPT_E_ASN1_LARGE, CRYPT_E_ASN1_BADTAG,
                              CRYPT_E_INVALID_MSG_TYPE};
constexpr Codes kQuery = {CRYPT_E_MSG_ERROR, CRYPT_E_INVALID_MSG_TYPE, CRYPT_E_INVALID_INDEX,
                          CRYPT_E_ATTRIBUTES_MISSING, CRYPT_E_UNKNOWN_ALGO};
constexpr Codes kVerify = {CRYPT_E_SIGNER_NOT_FOUND, CRYPT_E_UNKNOWN_ALGO, CRYPT_E_AUTH_ATTR_MISSING,
                           CRYPT_E_HASH_VALUE,       NTE_BAD_PUBLIC_KEY,   NTE_BAD_ALGID,
                           NTE_BAD_SIGNATURE,        CRYPT_E_MSG_ERROR};

/// The last error, which must be one of `codes`.
HRESULT failure(const char* operation, Codes codes) {
    return attempt(operation, codes, [] { throw CAtlException(HRESULT_FROM_WIN32(GetLastError())); });
}

class Message {
  public:
    Message() : handle_(CryptMsgOpenToDecode(PKCS_7_ASN_ENCODING, 0, 0, 0, nullptr, nullptr)) {
        require(handle_ != nullptr, "a message opens");
    }
    explicit Message(HCRYPTMSG handle) : handle_(handle) {
        require(handle_ != nullptr, "a message is duplicated");
    }
    ~Message() { CryptMsgClose(handle_); }
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    HCRYPTMSG handle() const { return handle_; }
    /// `S_OK` or the failure.
    HRESULT update(Octets octets) const {
        if (CryptMsgUpdate(handle_, octets.data(), static_cast<DWORD>(octets.size()), 1)) {
            return S_OK;
        }
        if (GetLastError() == static_cast<DWORD>(CRYPT_E_UNKNOWN_ALGO)) {
            return CRYPT_E_UNKNOWN_ALGO;
        }
        return failure("CryptMsgUpdate", kMalformed);
    }

  private:
    HCRYPTMSG handle_;
};

struct Answer {
    bool given = false;
    std::vector<ULONG_PTR> words;  // aligned for records
    DWORD size = 0;

    BYTE* octets() { return reinterpret_cast<BYTE*>(words.data()); }
    Octets view() const { return {reinterpret_cast<const BYTE*>(words.data()), size}; }
};

void check_too_little_room(const Message& message, DWORD parameter, DWORD index, DWORD needed) {
    std::vector<BYTE> room(needed - 1);  // exactly, so that a sanitizer sees a write behind it
    DWORD size = needed - 1;
    SetLastError(0);
    require(!CryptMsgGetParam(message.handle(), parameter, index, room.data(), &size), "room is needed");
    require(GetLastError() == ERROR_MORE_DATA && size == needed, "the size needed is told");
    require(std::all_of(room.begin(), room.end(), [](BYTE octet) { return octet == 0; }),
            "nothing is written without room");
}

Answer ask(const Message& message, DWORD parameter, DWORD index) {
    Answer answer;
    DWORD needed = 0;
    if (!CryptMsgGetParam(message.handle(), parameter, index, nullptr, &needed)) {
        failure("CryptMsgGetParam", kQuery);
        return answer;
    }
    if (needed > 1) {
        check_too_little_room(message, parameter, index, needed);
    }
    answer.words.resize((needed + sizeof(ULONG_PTR) - 1) / sizeof(ULONG_PTR) + 1);
    answer.size = needed;
    require(CryptMsgGetParam(message.handle(), parameter, index, answer.octets(), &answer.size) != 0,
            "a query that has a size has an answer");
    require(answer.size == needed, "an answer has the size that was told");
    answer.given = true;
    return answer;
}

bool lies_in(const Answer& answer, const void* start, std::size_t size) {
    const auto* from = static_cast<const BYTE*>(start);
    const Octets all = answer.view();
    return size == 0 || (from >= all.data() && from <= all.data() + all.size() &&
                         size <= static_cast<std::size_t>(all.data() + all.size() - from));
}

void check_attributes(const Answer& answer) {
    require(answer.size >= sizeof(CRYPT_ATTRIBUTES), "attributes have their record");
    const auto& list = *reinterpret_cast<const CRYPT_ATTRIBUTES*>(answer.view().data());
    require(list.cAttr != 0, "attributes that are missing are told so");
    require(lies_in(answer, list.rgAttr, list.cAttr * sizeof(CRYPT_ATTRIBUTE)),
            "attributes lie in the answer");
    for (const CRYPT_ATTRIBUTE& attribute : std::span(list.rgAttr, list.cAttr)) {
        const Octets all = answer.view();
        const auto* type = reinterpret_cast<const BYTE*>(attribute.pszObjId);
        require(lies_in(answer, type, 1) &&
                    std::find(type, all.data() + all.size(), 0) != all.data() + all.size(),
                "a type is terminated in the answer");
        require(lies_in(answer, attribute.rgValue, attribute.cValue * sizeof(CRYPT_ATTR_BLOB)),
                "values lie in the answer");
        for (const CRYPT_ATTR_BLOB& value : std::span(attribute.rgValue, attribute.cValue)) {
            require(lies_in(answer, value.pbData, value.cbData), "a value lies in the answer");
        }
    }
}

DWORD count_of(const Message& message, DWORD parameter) {
    const Answer answer = ask(message, parameter, 0);
    if (!answer.given) {
        return 0;
    }
    require(answer.size == sizeof(DWORD), "a count is a DWORD");
    return *reinterpret_cast<const DWORD*>(answer.view().data());
}

constexpr DWORD kAskedOfAList = 8;  // so that a long one takes no longer than reading it

/// Each element of a list, and the first index behind it.
void ask_list(const Message& message, DWORD count_parameter, DWORD parameter) {
    const DWORD count = count_of(message, count_parameter);
    for (DWORD i = 0; i < std::min(count, kAskedOfAList); ++i) {
        require(ask(message, parameter, i).given, "an element below the count is there");
    }
    DWORD size = 0;
    require(!CryptMsgGetParam(message.handle(), parameter, count, nullptr, &size),
            "none is behind the count");
}

void ask_signers(const Message& message) {
    const DWORD count = count_of(message, CMSG_SIGNER_COUNT_PARAM);
    for (DWORD i = 0; i < std::min(count, kAskedOfAList); ++i) {
        require(ask(message, CMSG_ENCODED_SIGNER, i).given, "a signer below the count is there");
        for (const DWORD parameter : {CMSG_SIGNER_AUTH_ATTR_PARAM, CMSG_SIGNER_UNAUTH_ATTR_PARAM}) {
            const Answer attributes = ask(message, parameter, i);
            if (attributes.given) {
                check_attributes(attributes);
            }
        }
        ask(message, CMSG_COMPUTED_HASH_PARAM, i);
    }
}

void verify(const Message& message, Octets certificate) {
    const PCCERT_CONTEXT context = CertCreateCertificateContext(X509_ASN_ENCODING, certificate.data(),
                                                                static_cast<DWORD>(certificate.size()));
    if (context == nullptr) {
        failure("CertCreateCertificateContext", kMalformed);
        return;
    }
    if (!CryptMsgControl(message.handle(), 0, CMSG_CTRL_VERIFY_SIGNATURE, context->pCertInfo)) {
        failure("CryptMsgControl", kVerify);
    }
    CertFreeCertificateContext(context);
}

void verify_with_each(const Message& message) {
    const DWORD count = std::min(count_of(message, CMSG_CERT_COUNT_PARAM), kAskedOfAList);
    for (DWORD i = 0; i < count; ++i) {
        verify(message, ask(message, CMSG_CERT_PARAM, i).view());
    }
}

void check_read(const Message& message) {
    for (const DWORD parameter : {CMSG_TYPE_PARAM, CMSG_CONTENT_PARAM, CMSG_BARE_CONTENT_PARAM}) {
        ask(message, parameter, 0);
    }
    const Answer type = ask(message, CMSG_INNER_CONTENT_TYPE_PARAM, 0);
    if (type.given) {
        const Octets text = type.view();
        require(std::find(text.begin(), text.end(), 0) == text.end() - 1,
                "the content type is terminated text");
    }
    ask_signers(message);
    ask_list(message, CMSG_CERT_COUNT_PARAM, CMSG_CERT_PARAM);
    ask_list(message, CMSG_CRL_COUNT_PARAM, CMSG_CRL_PARAM);
    verify_with_each(message);
}

void check_duplicate(const Message& message) {
    const Message duplicate(CryptMsgDuplicate(message.handle()));
    for (const DWORD parameter : {CMSG_CONTENT_PARAM, CMSG_INNER_CONTENT_TYPE_PARAM, CMSG_ENCODED_SIGNER}) {
        const Answer one = ask(message, parameter, 0);
        const Answer other = ask(duplicate, parameter, 0);
        require(one.given == other.given && std::ranges::equal(one.view(), other.view()),
                "a duplicate answers alike");
    }
}

}  // namespace

void check_service_message(Octets octets) {
    const std::vector<std::uint8_t> exact(octets.begin(), octets.end());
    const Message message;
    const HRESULT code = message.update(exact);
    if (code != S_OK && code != CRYPT_E_UNKNOWN_ALGO) {
        DWORD size = 0;
        require(!CryptMsgGetParam(message.handle(), CMSG_CONTENT_PARAM, 0, nullptr, &size) &&
                    GetLastError() == static_cast<DWORD>(CRYPT_E_MSG_ERROR),
                "a message that was refused answers nothing");
        return;
    }
    require(!CryptMsgUpdate(message.handle(), exact.data(), static_cast<DWORD>(exact.size()), 1) &&
                GetLastError() == static_cast<DWORD>(CRYPT_E_MSG_ERROR),
            "a message is updated once");
    check_read(message);
    check_duplicate(message);

    std::vector<std::uint8_t> longer = exact;
    longer.insert(longer.end(), {0xFF, 0xFF});
    const Message of_longer;
    require(of_longer.update(longer) == code, "octets behind the message are ignored");
}

void check_service_certificate(Octets octets) {
    const std::vector<std::uint8_t> exact(octets.begin(), octets.end());
    const PCCERT_CONTEXT context =
        CertCreateCertificateContext(X509_ASN_ENCODING, exact.data(), static_cast<DWORD>(exact.size()));
    if (context == nullptr) {
        failure("CertCreateCertificateContext", kMalformed);
        return;
    }
    require(std::ranges::equal(Octets(context->pbCertEncoded, context->cbCertEncoded), exact),
            "the encoding is the one given");
    const CERT_INFO& info = *context->pCertInfo;
    require(info.dwVersion <= 2, "the version is 0 to 2");
    // Each octet is looked at, so that a sanitizer sees what lies outside.
    unsigned seen = 0;
    const auto look = [&seen](const auto& blob) {
        for (const BYTE octet : std::span(blob.pbData, blob.cbData)) {
            seen += octet;
        }
    };
    look(info.SerialNumber);
    look(info.SignatureAlgorithm.Parameters);
    look(info.Issuer);
    look(info.Subject);
    look(info.SubjectPublicKeyInfo.Algorithm.Parameters);
    for (const CRYPT_BIT_BLOB* bits :
         {&info.SubjectPublicKeyInfo.PublicKey, &info.IssuerUniqueId, &info.SubjectUniqueId}) {
        look(*bits);
        require(bits->cUnusedBits <= 7, "at most seven bits of an octet are not used");
    }
    for (const CERT_EXTENSION& extension : std::span(info.rgExtension, info.cExtension)) {
        look(extension.Value);
        seen += static_cast<unsigned>(std::string_view(extension.pszObjId).size());
    }
    const PCCERT_CONTEXT duplicate = CertDuplicateCertificateContext(context);
    CertFreeCertificateContext(context);
    require(duplicate->cbCertEncoded == exact.size(), "a duplicate outlives the first");
    CertFreeCertificateContext(duplicate);

    std::vector<std::uint8_t> longer = exact;
    longer.push_back(0);
    require(CertCreateCertificateContext(X509_ASN_ENCODING, longer.data(),
                                         static_cast<DWORD>(longer.size())) == nullptr,
            "exactly one certificate is read");
}

}  // namespace Quillmark::fuzz

// The messages of the two exchanges: each `decode` takes the octets or throws a code that its header names,
// and leaves what the header says of a failure.

#include "fuzz/ber_form.h"
#include "fuzz/input.h"
#include "fuzz/target.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"

namespace Quillmark::fuzz {

namespace {

using namespace PKI::TSP;

constexpr Codes kRequest = {CRYPT_E_ASN1_EOD, CRYPT_E_ASN1_INTERNAL, E_INVALIDARG};
constexpr Codes kToken = {CRYPT_E_ASN1_EOD,    CRYPT_E_ASN1_CORRUPT,     CRYPT_E_ASN1_LARGE,
                          CRYPT_E_ASN1_BADTAG, CRYPT_E_INVALID_MSG_TYPE, CRYPT_E_INVALID_INDEX,
                          TRUST_E_TIME_STAMP,  CRYPT_E_BAD_MSG,          CRYPT_E_ASN1_INTERNAL,
                          E_INVALIDARG};
constexpr Codes kResponse = {CRYPT_E_ASN1_EOD,    CRYPT_E_ASN1_CORRUPT,     CRYPT_E_ASN1_LARGE,
                             CRYPT_E_ASN1_BADTAG, CRYPT_E_INVALID_MSG_TYPE, CRYPT_E_INVALID_INDEX,
                             TRUST_E_TIME_STAMP,  CRYPT_E_BAD_MSG,          CRYPT_E_ASN1_INTERNAL,
                             E_INVALIDARG,        CRYPT_E_ASN1_UTF8};
constexpr Codes kStamp = {CRYPT_E_ASN1_EOD,
                          CRYPT_E_ASN1_CORRUPT,
                          CRYPT_E_ASN1_LARGE,
                          CRYPT_E_ASN1_BADTAG,
                          CRYPT_E_INVALID_MSG_TYPE,
                          CRYPT_E_INVALID_INDEX,
                          CRYPT_E_BAD_MSG,
                          CRYPT_E_ASN1_INTERNAL,
                          CRYPT_E_ATTRIBUTES_MISSING,
                          CRYPT_E_UNKNOWN_ALGO,
                          E_INVALIDARG,
                          E_FAIL,
                          NTE_BAD_ALGID,
                          HRESULT_FROM_WIN32(ERROR_INVALID_TIME)};
constexpr Codes kEncode = {CRYPT_E_ASN1_INTERNAL, E_INVALIDARG};
constexpr Codes kTime = {E_FAIL, HRESULT_FROM_WIN32(ERROR_INVALID_TIME)};
/// Of a certificate that is none, and of a message whose algorithms are not known or which holds none.
constexpr Codes kVerify = {CRYPT_E_ASN1_EOD,    CRYPT_E_ASN1_CORRUPT, CRYPT_E_ASN1_LARGE,
                           CRYPT_E_ASN1_BADTAG, CRYPT_E_UNKNOWN_ALGO, E_FAIL,
                           CRYPT_E_MSG_ERROR};

template <class Message>
void require_encoding(const Message& message, const CBlob& expected, const char* law) {
    must(law, [&] { require(message.encode() == expected, law); });
}

constexpr std::size_t kVerifiedWith = 4;  // certificates at most, as hostile keys are slow

/// Verifies with the certificates of the message itself.
template <class Message>
void verify_with_each(const Message& message) {
    const CBlobList* certificates = message.get_certificates();
    if (certificates == nullptr) {
        return;
    }
    std::size_t left = kVerifiedWith;
    for (const CBlob& certificate : *certificates) {
        if (left-- == 0) {
            return;
        }
        attempt("verify", kVerify, [&] { (void)message.verify(certificate); });
    }
}

void require_same_pointer_value(const char* field, bool one, bool other) {
    if (one != other) {
        broken(std::string("what is encoded comes back: ") + field);
    }
}

void require_same_fields(const CRequest& one, const CRequest& other) {
    require(one.get_version() == other.get_version(), "the version comes back");
    require(one.get_hashAlgorithm() == other.get_hashAlgorithm(), "the algorithm comes back");
    require(one.get_hashedMessage() == other.get_hashedMessage(), "the hash comes back");
    require(one.get_certReq() == other.get_certReq(), "certReq comes back");
    require_same_pointer_value("nonce", one.get_nonce() != nullptr, other.get_nonce() != nullptr);
    require_same_pointer_value("policy", one.get_reqPolicy() != nullptr, other.get_reqPolicy() != nullptr);
    if (one.get_nonce() != nullptr) {
        require(*one.get_nonce() == *other.get_nonce(), "the nonce comes back");
    }
}

}  // namespace

// What was decoded can be encoded, and comes back with the same fields and the same octets. Nothing at all
// changes nothing.
void check_request(Octets octets) {
    CRequest request;
    const ASN1::CBigInteger nonce(octets.data(), 1);
    if (octets.empty()) {
        request.put_nonce(&nonce);
    }
    const HRESULT code = attempt("decode", kRequest, [&] { request.decode(blob_of(octets)); });
    if (octets.empty()) {
        require(code == CRYPT_E_ASN1_EOD && request.get_nonce() != nullptr,
                "an empty request changes nothing");
        return;
    }
    CBlob first;
    const HRESULT encoded = attempt("encode", kEncode, [&] { first = request.encode(); });
    if (code != S_OK || (encoded != S_OK && !is_whole(octets))) {
        return;
    }
    require(encoded == S_OK, "what was decoded can be encoded");
    require_encoding(CRequest(request), first, "a copy encodes as its source");
    // Intended: a version of more than one octet is read as another number.
    if (!is_whole(octets) || request.get_version() > 0xFF) {
        return;
    }
    CRequest again;
    must("decoding what was encoded", [&] { again.decode(first); });
    require_same_fields(request, again);
    require_encoding(again, first, "what was encoded is encoded as before");
    must("decode in place", [&] { again.decode(blob_of(octets)); });
    require_encoding(again, first, "decoding replaces everything");
}

// A token is kept as it came, also one that was refused. Its fields can be read, its signature checked with
// any certificate in it, and once a field was put the bare TSTInfo or a failure is what is encoded.
void check_token(Octets octets) {
    const CBlob bytes = blob_of(octets);
    CToken token;
    const HRESULT code = attempt("decode", kToken, [&] { token.decode(bytes); });
    if (octets.empty()) {
        return;
    }
    require_encoding(token, bytes, "a token is kept as it came");
    attempt("get_genTime", kTime, [&] { (void)token.get_genTime(); });
    require(token.get_policy() != nullptr && token.get_genTimeZ() != nullptr, "texts are never null");
    if (code != S_OK) {
        return;
    }
    const CToken copy(token);
    require_encoding(copy, bytes, "a copy encodes as its source");
    verify_with_each(copy);
    token.put_nonce(copy.get_nonce());
    attempt("encode of the message", kToken, [&] { (void)token.encode(); });
}

// What was decoded can be encoded, and that is read as it was written: a token in a response comes out in
// DER.
void check_response(Octets octets) {
    CResponse response;
    const HRESULT code = attempt("decode", kResponse, [&] { response.decode(blob_of(octets)); });
    if (octets.empty()) {
        require(code == E_INVALIDARG, "an empty response is refused");
    }
    if (code != S_OK) {
        return;
    }
    CBlob first;
    const HRESULT encoded = attempt("encode", kEncode, [&] { first = response.encode(); });
    require(encoded == S_OK || !is_whole(octets), "what was decoded can be encoded");
    if (encoded != S_OK) {
        return;
    }
    require_encoding(CResponse(response), first, "a copy encodes as its source");
    // Intended: language tags are written once more.
    if (!is_whole(octets) || !response.get_status().get_statusString().empty()) {
        return;
    }
    CResponse again;
    must("decoding what was encoded", [&] { again.decode(first); });
    require_encoding(again, first, "what was encoded is encoded as before");
    require((response.get_timeStampToken() != nullptr) == (again.get_timeStampToken() != nullptr),
            "a token comes back");
}

// A request that was refused leaves the old one; another can be encoded and comes back.
void check_cms_request(Octets octets) {
    CMSRequest request("1.3.6.1.4.1.311.3.2.1", ASN1::CContentInfo("1.2.840.113549.1.7.1", CBlob()));
    const ASN1::CBigInteger zero(1);
    request.put_contentInfo(ASN1::CContentInfo("1.2.840.113549.1.7.1", ASN1::toOctetString(zero)));
    const CBlob before = request.encode();
    const HRESULT code = attempt("decode", {CRYPT_E_ASN1_INTERNAL}, [&] { request.decode(blob_of(octets)); });
    if (code != S_OK) {
        require_encoding(request, before, "a request that is refused changes nothing");
        return;
    }
    CBlob first;
    const HRESULT encoded = attempt("encode", kEncode, [&] { first = request.encode(); });
    if (!is_whole(octets)) {
        return;
    }
    require(encoded == S_OK, "what was decoded can be encoded");
    require_encoding(CMSRequest(request), first, "a copy encodes as its source");
    CMSRequest again;
    must("decoding what was encoded", [&] { again.decode(first); });
    require_encoding(again, first, "what was encoded is encoded as before");
}

// A stamp that was read cannot be encoded, as nothing was signed; its fields can be read and its signature
// checked.
void check_cms_stamp(Octets octets) {
    CMSStamp stamp;
    const HRESULT code = attempt("decode", kStamp, [&] { stamp.decode(blob_of(octets)); });
    require(attempt("encode", {E_FAIL}, [&] { (void)stamp.encode(); }) == E_FAIL,
            "only sign makes a message");
    const CMSStamp copy(stamp);
    require(copy.get_content() == stamp.get_content() && copy.get_signingTime() == stamp.get_signingTime(),
            "a copy has the same fields");
    if (code != S_OK) {
        return;
    }
    attempt("get_signerInfo", kStamp, [&] { (void)copy.get_signerInfo(); });
    verify_with_each(copy);
    const CDateTime time = stamp.get_signingTime();
    must("put_signingTime", [&] { stamp.put_signingTime(time + CDateTimeSpan::oneSecond); });
    must("decode again", [&] { stamp.decode(blob_of(octets)); });
    require(stamp.get_signingTime() == time && stamp.get_content() == copy.get_content(),
            "decoding replaces everything");
}

}  // namespace Quillmark::fuzz

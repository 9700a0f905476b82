#include "inspect/kind.h"

#include <algorithm>
#include <set>

#include "inspect/names.h"

namespace inspect {

namespace {

constexpr char kDataType[] = "1.2.840.113549.1.7.1";
constexpr char kSignedDataType[] = "1.2.840.113549.1.7.2";
constexpr char kTSTInfoType[] = "1.2.840.113549.1.9.16.1.4";
constexpr char kIndirectDataType[] = "1.3.6.1.4.1.311.2.1.4";
constexpr char kAuthenticodeRequestType[] = "1.3.6.1.4.1.311.3.2.1";

// The first members of an element; a member that is not there has the tag 0 and no members.
class Members {
  public:
    explicit Members(const Octets& octets) : members_(outline(octets, 8)) {}

    std::size_t size() const { return members_.size(); }
    unsigned char tag(std::size_t index) const { return index < size() ? members_[index].tag : 0; }
    bool is_context(std::size_t index) const { return (tag(index) & 0xC0) == 0x80; }
    Octets content(std::size_t index) const { return index < size() ? members_[index].content : Octets(); }
    Members inside(std::size_t index) const { return Members(content(index)); }

    // Empty when the member is none.
    std::string object_id(std::size_t index) const {
        try {
            return tag(index) == kObjectId ? inspect::object_id(members_[index]) : "";
        } catch (const Malformed&) {
            return "";
        }
    }

    // Whether the member is a SEQUENCE that begins with an OBJECT IDENTIFIER, as AlgorithmIdentifier and
    // ContentInfo do.
    bool is_typed(std::size_t index) const {
        return tag(index) == kSequence && inside(index).tag(0) == kObjectId;
    }

    // Whether the member is a SEQUENCE that begins with one of those, as MessageImprint and
    // SubjectPublicKeyInfo do.
    bool is_described(std::size_t index) const {
        return tag(index) == kSequence && inside(index).is_typed(0);
    }

  private:
    std::vector<Element> members_;
};

bool is_time(unsigned char tag) {
    return tag == kUtcTime || tag == kGeneralizedTime;
}

// TSTInfo (RFC 3161 2.4.2)
bool is_tst_info(const Members& info) {
    return info.tag(0) == kInteger && info.tag(1) == kObjectId && info.is_described(2);
}

// TimeStampResp (RFC 3161 2.4.2): PKIStatusInfo, and a ContentInfo behind it if there is one
bool is_response(const Members& message) {
    const Members status = message.inside(0);
    const bool text = status.tag(1) == kSequence && status.inside(1).tag(0) == kUtf8String;
    const bool status_info =
        status.tag(0) == kInteger && (status.size() == 1 || text || status.tag(1) == kBitString);
    return status_info && (message.size() == 1 || message.is_typed(1)) && message.size() <= 2;
}

// TBSCertificate (RFC 5280 4.1) with its version, and of version 1 without it
bool is_certificate(const Members& body) {
    const bool versioned = body.tag(0) == kContext0 && body.tag(1) == kInteger && body.is_typed(2);
    const bool plain = body.tag(0) == kInteger && body.is_typed(1) && is_time(body.inside(3).tag(0));
    return versioned || plain;
}

// TBSCertList (RFC 5280 5.1) with its version, and of version 1 without it
bool is_revocation_list(const Members& body) {
    const std::size_t first = body.tag(0) == kInteger ? 1 : 0;
    return body.is_typed(first) && body.tag(first + 1) == kSequence && is_time(body.tag(first + 2));
}

// CertificationRequestInfo (RFC 2986 4.1)
bool is_certification_request(const Members& body) {
    return body.tag(0) == kInteger && body.tag(1) == kSequence && body.is_described(2);
}

// PKIMessage (RFC 4210 5.1): a header of version and general names, a body under the tag of its kind
bool is_management_message(const Members& message) {
    const Members header = message.inside(0);
    return header.tag(0) == kInteger && header.is_context(1) && message.is_context(1);
}

// OCSPRequest (RFC 6960 4.1.1): the list of requests behind version and name, each of them begun by a CertID
bool is_status_request(const Members& message) {
    const Members body = message.inside(0);
    std::size_t list = 0;
    while (body.is_context(list)) {
        ++list;
    }
    const Members certificate_id = body.inside(list).inside(0).inside(0);
    return certificate_id.is_typed(0) && certificate_id.tag(1) == kOctetString &&
           certificate_id.tag(2) == kOctetString;
}

// ResponseData (RFC 6960 4.2.1) of a BasicOCSPResponse
bool is_response_data(const Members& body) {
    const std::size_t responder = body.tag(0) == kContext0 ? 1 : 0;
    return (body.tag(responder) == kContext1 || body.tag(responder) == kContext2) &&
           body.tag(responder + 1) == kGeneralizedTime;
}

// SignerInfo (RFC 5652 5.3) with just the signed attributes that the Authenticode exchange gives
bool is_stamp_signer(const Members& signer) {
    if (signer.tag(1) != kSequence || signer.tag(3) != kContext0) {
        return false;
    }
    std::set<std::string> types;
    for (const Element& attribute : outline(signer.content(3), 4)) {
        types.insert(Members(attribute.content).object_id(0));
    }
    return types ==
           std::set<std::string>{"1.2.840.113549.1.9.3", "1.2.840.113549.1.9.4", "1.2.840.113549.1.9.5"};
}

bool is_stamp(const Members& signed_data) {
    const Members signers = signed_data.inside(signed_data.size() - 1);
    const bool has_content = signed_data.inside(2).tag(1) == kContext0;
    return has_content && signed_data.size() > 3 && signers.size() == 1 && is_stamp_signer(signers.inside(0));
}

Recognised recognise_signed_data(const Members& signed_data) {
    const Members content = signed_data.inside(2);
    const std::string type = content.object_id(0);
    // The TSTInfo lies in an OCTET STRING under [0].
    const bool stamped = is_tst_info(content.inside(1).inside(0).inside(0));
    if (type == kTSTInfoType || (type == kDataType && stamped)) {
        return {Kind::kToken, "token", "time-stamp token"};
    }
    if (type == kDataType && is_stamp(signed_data)) {
        return {Kind::kStamp, "stamp", "Authenticode time stamp"};
    }
    if (type == kIndirectDataType) {
        return {Kind::kSignedData, "authenticode-signeddata", "Authenticode signature"};
    }
    return {Kind::kSignedData, "cms", "CMS SignedData of " + name_or_oid(type)};
}

Recognised other(const char* word, const std::string& title) {
    return {Kind::kOther, word, title};
}

Recognised begun_by_object_id(const Members& message) {
    const std::string type = message.object_id(0);
    if (type == kSignedDataType) {
        return recognise_signed_data(message.inside(1).inside(0));
    }
    if (type == kAuthenticodeRequestType) {
        return {Kind::kAuthenticodeRequest, "authenticode-request", "Authenticode time-stamp request"};
    }
    if (message.tag(1) == kContext0) {
        return other("cms", "CMS ContentInfo of " + name_or_oid(type));
    }
    return other("der", "SEQUENCE begun by the object identifier " + name_and_oid(type));
}

Recognised begun_by_number(const Members& message) {
    if (message.is_described(1)) {
        return {Kind::kRequest, "request", "time-stamp request"};
    }
    if (is_tst_info(message)) {
        return other("tstinfo", "TSTInfo, the content of a time-stamp token without its signature");
    }
    if (message.is_typed(1) && message.tag(2) == kOctetString) {
        return other("private-key", "PKCS #8 private key");
    }
    if (message.is_typed(1) && message.inside(1).tag(1) == kContext0) {
        return other("pkcs12", "PKCS #12 container");
    }
    return other("der", "SEQUENCE begun by an INTEGER");
}

Recognised begun_by_sequence(const Members& message) {
    const Members body = message.inside(0);
    if (is_response(message)) {
        return {Kind::kResponse, "response", "time-stamp response"};
    }
    if (is_certificate(body)) {
        return {Kind::kCertificate, "cert", "certificate"};
    }
    if (is_revocation_list(body)) {
        return {Kind::kRevocationList, "crl", "certificate revocation list"};
    }
    if (is_certification_request(body)) {
        return other("pkcs10", "PKCS #10 certification request");
    }
    if (is_management_message(message)) {
        return other("cmp", "CMP PKIMessage");
    }
    if (is_status_request(message)) {
        return other("ocsp", "OCSP request");
    }
    if (is_response_data(body)) {
        return other("ocsp", "OCSP BasicOCSPResponse");
    }
    if (message.is_typed(0) && message.tag(1) == kBitString) {
        return other("public-key", "SubjectPublicKeyInfo");
    }
    if (message.is_typed(0) && message.tag(1) == kOctetString) {
        return other("private-key", "encrypted PKCS #8 private key");
    }
    return other("der", "SEQUENCE begun by a SEQUENCE");
}

Recognised recognise_message(const Members& message) {
    switch (message.tag(0)) {
        case 0:
            return other("der", "empty SEQUENCE");
        case kObjectId:
            return begun_by_object_id(message);
        case kInteger:
            return begun_by_number(message);
        case kSequence:
            return begun_by_sequence(message);
        case kEnumerated:
            return other("ocsp", "OCSP response");
        default:
            return other("der", "SEQUENCE begun by " + tag_name(message.tag(0)));
    }
}

}  // namespace

Recognised recognise(const Octets& octets) {
    const Members file(octets);
    if (file.size() == 0) {
        return other("unknown", "message");
    }
    if (file.tag(0) == kSequence) {
        return recognise_message(file.inside(0));
    }
    return other("der", tag_name(file.tag(0)));
}

}  // namespace inspect

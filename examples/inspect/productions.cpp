// The types of RFC 3161, RFC 5652, RFC 5280 and of the Authenticode exchange, as far as a stamp and its
// certificates need them.

#include "asn1/algorithm_identifier.h"
#include "asn1/attribute.h"
#include "asn1/certificate.h"
#include "asn1/content_info.h"
#include "asn1/extension.h"
#include "asn1/extension_value.h"
#include "asn1/general_name.h"
#include "asn1/pki_status.h"
#include "asn1/signer_info.h"
#include "inspect/grammar.h"
#include "inspect/text.h"

namespace inspect {

namespace {

using namespace Quillmark;

constexpr bool kOptional = true;
constexpr bool kRequired = false;
constexpr unsigned char kOctetSegments = 0x24;  // an OCTET STRING in the constructed form
constexpr char kTSTInfoType[] = "1.2.840.113549.1.9.16.1.4";

// What reads a part.

template <class Value>
void read_as(const Element& element) {
    Value value;
    value.decode(to_blob(element.whole));
}

void read_object_id(const Element& element) {
    object_id(element);
}

void read_name(const Element& element) {
    name_text(element.whole);
}

// As strictly as in a response: by the codec of the whole certificate.
void read_certificate(const Element& element) {
    ASN1::CCertificateValue(to_blob(element.whole)).encode();
}

void read_content_type(const Element& element) {
    const std::string type = object_id(element);
    if (type != kTSTInfoType) {
        throw Malformed(element.whole.offset, "the content has the type " + type + " and not TSTInfo");
    }
}

void read_signers(const Element& signers) {
    if (Elements(signers).at_end()) {
        throw Malformed(signers.whole.offset, "signerInfos is empty: nobody has signed");
    }
}

void read_attributes(const Element& attributes) {
    if (Elements(attributes).at_end()) {
        throw Malformed(attributes.whole.offset, "attributes is empty: without any it is left out");
    }
}

void refuse_indefinite(const Element& sequence, int depth) {
    for (Elements elements(sequence); depth != 0 && !elements.at_end();) {
        const Element element = elements.next();
        if (element.indefinite) {
            throw Malformed(element.whole.offset, "this element has the indefinite length");
        }
        if (element.tag == kSequence || element.tag == kSet) {
            refuse_indefinite(element, depth - 1);
        }
    }
}

// The codecs take the indefinite length on the outside alone: a SEQUENCE leaves its end-of-contents octets
// unread, and they end what is around it.
void read_definite(const Element& sequence) {
    constexpr int kDepth = 8;  // deeper than these types go
    refuse_indefinite(sequence, kDepth);
}

// RFC 5280 4.1.1.2 and 4.1.2

const Production kOid{"OBJECT IDENTIFIER", Form::kAlone, {}, read_object_id};
const Production kName{"Name", Form::kAlone, {}, read_name};
const Production kGeneralName{"GeneralName", Form::kAlone, {}, read_as<ASN1::CGeneralName>};
const Production kTime{"Time", Form::kAlone, {}, read_as<ASN1::CTimeChoice>};

const Production kAlgorithm{
    "AlgorithmIdentifier",
    Form::kSequence,
    {{"algorithm", {kObjectId}, kRequired, &kOid}, {"parameters", {}, kOptional, nullptr}},
    read_as<ASN1::CAlgorithmIdentifier>};
const Production kAlgorithms{"digestAlgorithms",
                             Form::kSequenceOf,
                             {{"AlgorithmIdentifier", {kSequence}, kRequired, &kAlgorithm}},
                             nullptr};

const std::vector<Part> kExtensionParts{{"extnID", {kObjectId}, kRequired, &kOid},
                                        {"critical", {kBoolean}, kOptional, nullptr},
                                        {"extnValue", {kOctetString}, kRequired, nullptr}};
const Production kExtension{"Extension", Form::kSequence, kExtensionParts, read_as<ASN1::CExtension>};
const Production kExtensions{
    "Extensions", Form::kSequenceOf, {{"Extension", {kSequence}, kRequired, &kExtension}}, nullptr};
// Of certificates and lists, whose extensions nobody decodes
const Production kRawExtension{"Extension", Form::kSequence, kExtensionParts, nullptr};
const Production kRawExtensions{
    "Extensions", Form::kSequenceOf, {{"Extension", {kSequence}, kRequired, &kRawExtension}}, nullptr};
const Production kTaggedExtensions{
    "extensions", Form::kSequence, {{"Extensions", {kSequence}, kRequired, &kRawExtensions}}, nullptr};

const Production kTaggedVersion{
    "version", Form::kSequence, {{"Version", {kInteger}, kRequired, nullptr}}, nullptr};
const Production kValidity{"Validity",
                           Form::kSequence,
                           {{"notBefore", {kUtcTime, kGeneralizedTime}, kRequired, nullptr},
                            {"notAfter", {kUtcTime, kGeneralizedTime}, kRequired, nullptr}},
                           nullptr};
const Production kPublicKey{
    "SubjectPublicKeyInfo",
    Form::kSequence,
    {{"algorithm", {kSequence}, kRequired, nullptr}, {"subjectPublicKey", {kBitString}, kRequired, nullptr}},
    nullptr};
const Production kTBSCertificate{"TBSCertificate",
                                 Form::kSequence,
                                 {{"version", {kContext0}, kOptional, &kTaggedVersion},
                                  {"serialNumber", {kInteger}, kRequired, nullptr},
                                  {"signature", {kSequence}, kRequired, nullptr},
                                  {"issuer", {kSequence}, kRequired, &kName},
                                  {"validity", {kSequence}, kRequired, &kValidity},
                                  {"subject", {kSequence}, kRequired, &kName},
                                  {"subjectPublicKeyInfo", {kSequence}, kRequired, &kPublicKey},
                                  {"issuerUniqueID", {0x81}, kOptional, nullptr},
                                  {"subjectUniqueID", {0x82}, kOptional, nullptr},
                                  {"extensions", {0xA3}, kOptional, &kTaggedExtensions}},
                                 nullptr};
const std::vector<Part> kCertificateParts{{"tbsCertificate", {kSequence}, kRequired, &kTBSCertificate},
                                          {"signatureAlgorithm", {kSequence}, kRequired, nullptr},
                                          {"signatureValue", {kBitString}, kRequired, nullptr}};
const Production kCertificate{"Certificate", Form::kSequence, kCertificateParts, nullptr};
const Production kDecodedCertificate{"Certificate", Form::kSequence, kCertificateParts, read_certificate};

// RFC 5280 5.1

const Production kRevoked{"revokedCertificate",
                          Form::kSequence,
                          {{"userCertificate", {kInteger}, kRequired, nullptr},
                           {"revocationDate", {kUtcTime, kGeneralizedTime}, kRequired, &kTime},
                           {"crlEntryExtensions", {kSequence}, kOptional, &kRawExtensions}},
                          nullptr};
const Production kRevokedList{"revokedCertificates",
                              Form::kSequenceOf,
                              {{"revokedCertificate", {kSequence}, kRequired, &kRevoked}},
                              nullptr};
const Production kTBSCertList{"TBSCertList",
                              Form::kSequence,
                              {{"version", {kInteger}, kOptional, nullptr},
                               {"signature", {kSequence}, kRequired, &kAlgorithm},
                               {"issuer", {kSequence}, kRequired, &kName},
                               {"thisUpdate", {kUtcTime, kGeneralizedTime}, kRequired, &kTime},
                               {"nextUpdate", {kUtcTime, kGeneralizedTime}, kOptional, &kTime},
                               {"revokedCertificates", {kSequence}, kOptional, &kRevokedList},
                               {"crlExtensions", {kContext0}, kOptional, &kTaggedExtensions}},
                              nullptr};
const Production kCertificateList{"CertificateList",
                                  Form::kSequence,
                                  {{"tbsCertList", {kSequence}, kRequired, &kTBSCertList},
                                   {"signatureAlgorithm", {kSequence}, kRequired, &kAlgorithm},
                                   {"signatureValue", {kBitString}, kRequired, nullptr}},
                                  nullptr};

// RFC 3161 2.4.1

const Production kImprint{"MessageImprint",
                          Form::kSequence,
                          {{"hashAlgorithm", {kSequence}, kRequired, &kAlgorithm},
                           {"hashedMessage", {kOctetString, kOctetSegments}, kRequired, nullptr}},
                          nullptr};
const Production kRequest{"TimeStampReq",
                          Form::kSequence,
                          {{"version", {kInteger}, kRequired, nullptr},
                           {"messageImprint", {kSequence}, kRequired, &kImprint},
                           {"reqPolicy", {kObjectId}, kOptional, &kOid},
                           {"nonce", {kInteger}, kOptional, nullptr},
                           {"certReq", {kBoolean}, kOptional, nullptr},
                           {"extensions", {kContext0, 0x80}, kOptional, &kExtensions}},
                          read_definite};

// RFC 3161 2.4.2

const Production kAccuracy{"Accuracy",
                           Form::kSequence,
                           {{"seconds", {kInteger}, kOptional, nullptr},
                            {"millis", {0x80, kContext0}, kOptional, nullptr},
                            {"micros", {0x81, kContext1}, kOptional, nullptr}},
                           nullptr};
const Production kAuthority{"tsa", Form::kSequence, {{"GeneralName", {}, kRequired, &kGeneralName}}, nullptr};
const Production kTSTInfo{"TSTInfo",
                          Form::kSequence,
                          {{"version", {kInteger}, kRequired, nullptr},
                           {"policy", {kObjectId}, kRequired, &kOid},
                           {"messageImprint", {kSequence}, kRequired, &kImprint},
                           {"serialNumber", {kInteger}, kRequired, nullptr},
                           {"genTime", {kGeneralizedTime}, kRequired, nullptr},
                           {"accuracy", {kSequence}, kOptional, &kAccuracy},
                           {"ordering", {kBoolean}, kOptional, nullptr},
                           {"nonce", {kInteger}, kOptional, nullptr},
                           {"tsa", {kContext0}, kOptional, &kAuthority},
                           {"extensions", {kContext1}, kOptional, &kExtensions}},
                          read_definite};

// The TSTInfo lies in an OCTET STRING. One in segments is not looked into: its octets have no one place.
void read_info_content(const Element& content) {
    const Element string = Elements(content).next();
    if (string.tag == kOctetString) {
        check(kTSTInfo, string.content);
    }
}

// RFC 5652 5.3

const Production kAttribute{
    "Attribute",
    Form::kSequence,
    {{"attrType", {kObjectId}, kRequired, &kOid}, {"attrValues", {kSet}, kRequired, nullptr}},
    nullptr};
const Production kAttributes{
    "attributes", Form::kSequenceOf, {{"Attribute", {kSequence}, kRequired, &kAttribute}}, nullptr};

// The request of the Authenticode exchange

const Production kDecodedAttribute{"Attribute", Form::kSequence, kAttribute.parts, read_as<ASN1::CAttribute>};
const Production kDecodedAttributes{"attributes",
                                    Form::kSequenceOf,
                                    {{"Attribute", {kSequence}, kRequired, &kDecodedAttribute}},
                                    read_attributes};
const Production kStampedContent{
    "ContentInfo",
    Form::kSequence,
    {{"contentType", {kObjectId}, kRequired, &kOid}, {"content", {kContext0}, kRequired, nullptr}},
    read_as<ASN1::CContentInfo>};
const Production kAuthenticodeRequest{"TimeStampAuthenticodeRequest",
                                      Form::kSequence,
                                      {{"timeStampAlgorithm", {kObjectId}, kRequired, &kOid},
                                       {"attributes", {kSet}, kOptional, &kDecodedAttributes},
                                       {"content", {kSequence}, kRequired, &kStampedContent}},
                                      read_definite};

// RFC 5652 5.3

std::vector<Part> signer_parts(const Production* algorithm) {
    return {{"version", {kInteger}, kRequired, nullptr},
            {"sid", {kSequence, 0x80, kContext0}, kRequired, nullptr},
            {"digestAlgorithm", {kSequence}, kRequired, algorithm},
            {"signedAttrs", {kContext0}, kOptional, &kAttributes},
            {"signatureAlgorithm", {kSequence}, kRequired, algorithm},
            {"signature", {kOctetString, kOctetSegments}, kRequired, nullptr},
            {"unsignedAttrs", {kContext1}, kOptional, &kAttributes}};
}

const Production kRawSigner{"SignerInfo", Form::kSequence, signer_parts(nullptr), nullptr};
const Production kRawSigners{
    "signerInfos", Form::kSequenceOf, {{"SignerInfo", {kSequence}, kRequired, &kRawSigner}}, nullptr};
const Production kSigner{"SignerInfo", Form::kSequence, signer_parts(&kAlgorithm),
                         read_as<ASN1::CSignerInfo>};
const Production kSigners{
    "signerInfos", Form::kSequenceOf, {{"SignerInfo", {kSequence}, kRequired, &kSigner}}, read_signers};

// RFC 5652 5.1 and 5.2

const Production kInfoType{"eContentType", Form::kAlone, {}, read_content_type};
const Production kInfoContent{"eContent", Form::kAlone, {}, read_info_content};
const Production kInfo{"EncapsulatedContentInfo",
                       Form::kSequence,
                       {{"eContentType", {kObjectId}, kRequired, &kInfoType},
                        {"eContent", {kContext0}, kRequired, &kInfoContent}},
                       nullptr};
const Production kAnyContent{
    "EncapsulatedContentInfo",
    Form::kSequence,
    {{"eContentType", {kObjectId}, kRequired, &kOid}, {"eContent", {kContext0}, kOptional, nullptr}},
    nullptr};

// A response is read by the codec of SignedData, which knows certificates and attribute certificates of
// version 1 (RFC 5652 10.2.2) and no others; a token by the message service, which steps over them.
const Production kAttributeCertificateInfo{"AttributeCertificateInfo",
                                           Form::kSequence,
                                           {{"version", {kInteger}, kOptional, nullptr},
                                            {"subject", {kContext0, kContext1}, kRequired, nullptr},
                                            {"issuer", {kSequence}, kRequired, nullptr},
                                            {"signature", {kSequence}, kRequired, nullptr},
                                            {"serialNumber", {kInteger}, kRequired, nullptr},
                                            {"attCertValidityPeriod", {kSequence}, kRequired, nullptr},
                                            {"attributes", {kSequence}, kRequired, nullptr},
                                            {"issuerUniqueID", {kBitString}, kOptional, nullptr},
                                            {"extensions", {kSequence}, kOptional, nullptr}},
                                           nullptr};
const Production kAttributeCertificate{"v1AttrCert",
                                       Form::kSequence,
                                       {{"acInfo", {kSequence}, kRequired, &kAttributeCertificateInfo},
                                        {"signatureAlgorithm", {kSequence}, kRequired, nullptr},
                                        {"signature", {kBitString}, kRequired, nullptr}},
                                       nullptr};

void check_choice(const Element& certificate) {
    switch (certificate.tag) {
        case kSequence:
            return check(kDecodedCertificate, certificate.whole);
        case kContext1:
            return check_content(kAttributeCertificate, certificate);
        default:
            return;
    }
}

const Production kChoice{"CertificateChoices", Form::kAlone, {}, check_choice};
const Production kDecodedCertificates{
    "certificates",
    Form::kSequenceOf,
    {{"CertificateChoices", {kSequence, kContext0, kContext1}, kRequired, &kChoice}},
    nullptr};

std::vector<Part> signed_data_parts(const Production* algorithms, const Production* content,
                                    const Production* certificates, const Production* signers) {
    return {{"version", {kInteger}, kRequired, nullptr},
            {"digestAlgorithms", {kSet}, kRequired, algorithms},
            {"encapContentInfo", {kSequence}, kRequired, content},
            {"certificates", {kContext0}, kOptional, certificates},
            {"crls", {kContext1}, kOptional, nullptr},
            {"signerInfos", {kSet}, kRequired, signers}};
}

const Production kSignedData{"SignedData", Form::kSequence,
                             signed_data_parts(nullptr, &kAnyContent, nullptr, &kRawSigners), nullptr};
const Production kTokenData{"SignedData", Form::kSequence,
                            signed_data_parts(nullptr, &kInfo, nullptr, &kSigners), nullptr};
const Production kDecodedData{"SignedData", Form::kSequence,
                              signed_data_parts(&kAlgorithms, &kInfo, &kDecodedCertificates, &kSigners),
                              read_definite};

// RFC 5652 3

struct ContentInfo {
    explicit ContentInfo(const Production& signed_data)
        : content{"content",
                  Form::kSequence,
                  {{"SignedData", {kSequence}, kRequired, &signed_data}},
                  nullptr},
          type{
              "ContentInfo",
              Form::kSequence,
              {{"contentType", {kObjectId}, kRequired, &kOid}, {"content", {kContext0}, kRequired, &content}},
              nullptr} {}

    Production content;
    Production type;
};

const ContentInfo kSignedMessage(kSignedData);
const ContentInfo kToken(kTokenData);
const ContentInfo kDecodedToken(kDecodedData);

const Production kStatus{"PKIStatusInfo",
                         Form::kSequence,
                         {{"status", {kInteger}, kRequired, nullptr},
                          {"statusString", {kSequence}, kOptional, nullptr},
                          {"failInfo", {kBitString}, kOptional, nullptr}},
                         read_as<ASN1::CPKIStatusInfo>};
const Production kResponse{"TimeStampResp",
                           Form::kSequence,
                           {{"status", {kSequence}, kRequired, &kStatus},
                            {"timeStampToken", {kSequence}, kOptional, &kDecodedToken.type}},
                           nullptr};

}  // namespace

const Production& time_stamp_request() {
    return kRequest;
}

const Production& time_stamp_response() {
    return kResponse;
}

const Production& time_stamp_token() {
    return kToken.type;
}

const Production& authenticode_request() {
    return kAuthenticodeRequest;
}

const Production& signed_message() {
    return kSignedMessage.type;
}

const Production& certificate() {
    return kCertificate;
}

const Production& certificate_list() {
    return kCertificateList;
}

}  // namespace inspect

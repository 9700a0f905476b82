#pragma once

// Requests, tokens, responses and stamps with every field in use, for the tests of this folder.

#include "tests/support/blob.h"
#include "tests/support/test_keys.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"
#include "tsp/request.h"
#include "tsp/response.h"
#include "tsp/token.h"

namespace Quillmark::test {

inline constexpr char kSha256Text[] = "2.16.840.1.101.3.4.2.1";

inline ASN1::CBigInteger number(const char* hex) {
    const CBlob octets = blob(hex);
    return ASN1::CBigInteger(octets.pbData(), octets.cbData());
}

inline PKI::TSP::CRequest small_request() {
    return PKI::TSP::CRequest(ASN1::CAlgorithmIdentifierEx("1.2.3"), blob("aa"), false);
}

inline ASN1::CExtensions some_extensions() {
    ASN1::CExtensions extensions;
    extensions.insert(ASN1::CExtension(ASN1::CExtValue("1.2.5", blob("05 00")), true));
    return extensions;
}

inline ASN1::CExtensions other_extensions() {
    ASN1::CExtensions extensions = some_extensions();
    extensions.insert(ASN1::CExtension(ASN1::CExtValue("1.2.6", blob("01 01 ff"))));
    return extensions;
}

inline ASN1::CAttributes some_attributes() {
    ASN1::CAttributes attributes;
    attributes.push_back(ASN1::CAttribute("1.2.9"));
    attributes.back().add(blob("02 01 01"));
    return attributes;
}

inline ASN1::CAttributes other_attributes() {
    ASN1::CAttributes attributes = some_attributes();
    attributes.push_back(ASN1::CAttribute("1.2.10"));
    return attributes;
}

inline ASN1::CGeneralName authority_name(const wchar_t* text = L"tsa.example") {
    ASN1::CGeneralName name;
    name.put_dNSName(text);
    return name;
}

inline CBlobList certificate_list() {
    CBlobList certificates;
    certificates.push_back(certificate("tsa_p256"));
    return certificates;
}

inline ASN1::CPKIStatusInfo rejection() {
    ASN1::CPKIStatusInfo status(ASN1::PKIStatus_rejection);
    status.put_statusString(ASN1::CPKIFreeText(L"refused", ASN1::CLanguageTagDefaultRead()));
    return status;
}

inline PKI::TSP::CRequest full_request() {
    PKI::TSP::CRequest request(ASN1::CAlgorithmIdentifierEx(kSha256Text), blob("aa bb"), true);
    request.put_reqPolicy("1.2.3");
    const ASN1::CBigInteger nonce = number("2a");
    request.put_nonce(&nonce);
    const ASN1::CExtensions extensions = some_extensions();
    request.put_extensions(&extensions);
    return request;
}

inline PKI::TSP::CToken small_token() {
    return PKI::TSP::CToken("1.2.3", ASN1::CAlgorithmIdentifierEx(kSha256Text), blob("aa bb"), number("05"),
                            CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u), true);
}

inline PKI::TSP::CToken full_token() {
    PKI::TSP::CToken token = small_token();
    const PKI::TSP::CAccuracy accuracy{1, 2, 3};
    token.put_accuracy(&accuracy);
    const ASN1::CBigInteger nonce = number("2a");
    token.put_nonce(&nonce);
    const ASN1::CGeneralName tsa = authority_name();
    token.put_tsa(&tsa);
    const ASN1::CExtensions extensions = some_extensions();
    token.put_extensions(&extensions);
    const ASN1::CAttributes attributes = some_attributes();
    token.put_signedAttributes(&attributes);
    token.put_unsignedAttributes(&attributes);
    const CBlobList certificates = certificate_list();
    token.put_certificates(&certificates);
    return token;
}

inline PKI::TSP::CToken signed_token() {
    PKI::TSP::CToken token = full_token();
    const TestKey key("tsa_p256");
    token.sign(key.provider(), AT_SIGNATURE, certificate("tsa_p256"),
               ASN1::CAlgorithmIdentifierEx(kSha256Text));
    return token;
}

inline PKI::TSP::CResponse full_response() {
    PKI::TSP::CResponse response;
    ASN1::CPKIStatusInfo status(ASN1::PKIStatus_grantedWithMods);
    status.put_statusString(ASN1::CPKIFreeText(L"text", ASN1::CLanguageTagDefaultRead()));
    response.put_status(status);
    const PKI::TSP::CToken token = signed_token();
    response.put_timeStampToken(&token);
    return response;
}

/// A request of the Authenticode exchange.
inline PKI::TSP::CMSRequest authenticode_request() {
    PKI::TSP::CMSRequest request("1.3.6.1.4.1.311.3.2.1",
                                 ASN1::CContentInfo("1.2.840.113549.1.7.1", blob("04 02 aa bb")));
    const ASN1::CAttributes attributes = some_attributes();
    request.put_attributes(&attributes);
    return request;
}

/// A stamp of that exchange, not signed.
inline PKI::TSP::CMSStamp small_stamp() {
    PKI::TSP::CMSStamp stamp(blob("04 02 aa bb"), CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u));
    const CBlobList certificates = certificate_list();
    stamp.put_certificates(&certificates);
    return stamp;
}

inline PKI::TSP::CMSStamp signed_stamp() {
    PKI::TSP::CMSStamp stamp = small_stamp();
    const TestKey key("tsa_p256");
    stamp.sign(key.provider(), AT_SIGNATURE, certificate("tsa_p256"),
               ASN1::CAlgorithmIdentifierEx(kSha256Text));
    return stamp;
}

}  // namespace Quillmark::test

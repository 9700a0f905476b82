// What callers are warned of and do all the same: it is defined, and it does no harm.

#include <gtest/gtest.h>

#include <memory>

#include "asn1/algorithm_identifier.h"
#include "asn1/certificate.h"
#include "asn1/certificate_identifier.h"
#include "asn1/content_info.h"
#include "asn1/distribution_point.h"
#include "asn1/distribution_point_name.h"
#include "asn1/info_type_and_value.h"
#include "asn1/pki_status.h"
#include "asn1/policy_information.h"
#include "asn1/revocation_announcement.h"
#include "asn1/signing_certificate.h"
#include "runtime/big_integer.h"
#include "runtime/bit_string.h"
#include "runtime/der_encode.h"
#include "runtime/list.h"
#include "runtime/memory_buffer.h"
#include "runtime/message_buffer.h"
#include "runtime/seq_of_list.h"
#include "runtime/stream.h"
#include "tests/robustness/time_stamps.h"
#include "tests/support/blob.h"
#include "tests/support/result_code.h"
#include "tests/support/test_keys.h"
#include "values/string_proxy.h"

namespace Quillmark::test {
namespace {

using namespace ASN1;
using namespace PKI::TSP;

constexpr HRESULT kInvalidHandle = HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE);

/// A token that was signed, and then could not be signed anew with a provider that is released.
std::unique_ptr<CToken> token_after_failed_signing() {
    auto token = std::make_unique<CToken>(signed_token());
    HCRYPTPROV stale = 0;
    {
        const TestKey key("tsa_p256");
        stale = key.provider();
    }
    EXPECT_CODE(kInvalidHandle, token->sign(stale, AT_SIGNATURE, certificate("tsa_p256"),
                                            CAlgorithmIdentifierEx(kSha256Text)));
    return token;
}

// Tokens whose signing failed: their message is closed, and their handle names it still.

TEST(TokenAfterFailedSigning, HasNothingToEncode) {
    const auto token = token_after_failed_signing();
    EXPECT_CODE(kInvalidHandle, token->encode());
    EXPECT_CODE(kInvalidHandle, token->encode());
}

TEST(TokenAfterFailedSigning, HasNothingToVerify) {
    const auto token = token_after_failed_signing();
    EXPECT_CODE(kInvalidHandle, token->verify(certificate("tsa_p256")));
}

TEST(TokenAfterFailedSigning, HasItsFields) {
    const auto token = token_after_failed_signing();
    EXPECT_STREQ(token->get_policy(), "1.2.3");
    EXPECT_TRUE(*token->get_nonce() == number("2a"));
    EXPECT_EQ(token->get_certificates()->size(), 1u);
}

TEST(TokenAfterFailedSigning, HasCopiesWithoutMessage) {
    const auto token = token_after_failed_signing();
    const CToken copy(*token);
    EXPECT_STREQ(copy.get_policy(), "1.2.3");
    EXPECT_CODE(E_FAIL, copy.encode());
    EXPECT_CODE(E_FAIL, copy.verify(certificate("tsa_p256")));
    CToken assigned = signed_token();
    assigned = *token;
    EXPECT_CODE(E_FAIL, assigned.encode());
}

TEST(TokenAfterFailedSigning, TakesNoMessageFromAnother) {
    auto token = token_after_failed_signing();
    const CToken other = signed_token();  // may come to lie in the slot of the closed message
    token.reset();
    EXPECT_TRUE(other.verify(certificate("tsa_p256")));
}

TEST(TokenAfterFailedSigning, SignsDecodesAndTakesAssignments) {
    const CToken good = signed_token();
    auto token = token_after_failed_signing();
    const TestKey key("tsa_p256");
    token->sign(key.provider(), AT_SIGNATURE, certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256Text));
    EXPECT_TRUE(token->verify(certificate("tsa_p256")));
    token = token_after_failed_signing();
    token->decode(good.encode());
    EXPECT_TRUE(token->verify(certificate("tsa_p256")));
    token = token_after_failed_signing();
    *token = good;
    EXPECT_TRUE(token->verify(certificate("tsa_p256")));
}

TEST(TokenAfterFailedSigning, MakesAResponseThatCannotBeEncoded) {
    CResponse response;
    response.put_timeStampToken(token_after_failed_signing().get());
    EXPECT_CODE(E_FAIL, response.encode());
    response.put_timeStampToken(nullptr);
    EXPECT_NE(response.encode().cbData(), 0u);
}

TEST(StaleProvider, IsReleasedInVain) {
    HCRYPTPROV provider = 0;
    {
        const TestKey key("tsa_p256");
        provider = key.provider();
    }
    EXPECT_FALSE(CryptReleaseContext(provider, 0));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(CryptContextAddRef(provider, nullptr, 0));
    const TestKey other("tsa_p256");  // may come to lie in its slot
    EXPECT_FALSE(CryptReleaseContext(provider, 0));
    CToken token = full_token();
    token.sign(other.provider(), AT_SIGNATURE, certificate("tsa_p256"), CAlgorithmIdentifierEx(kSha256Text));
}

// Things that are closed or freed twice

TEST(FreedTwice, ContextIsFreedOnce) {
    ASN1CTXT ctxt{};
    ASSERT_EQ(rtInitContext(&ctxt, nullptr), RT_OK);
    ASSERT_NE(rtMemHeapAlloc(&ctxt.typeHeap, 10), nullptr);
    rtFreeContext(&ctxt);
    rtFreeContext(&ctxt);
    rtFreeContext(&ctxt);
}

TEST(FreedTwice, EncodeBufferIsFreedOnce) {
    ASN1BEREncodeBuffer buffer;
    xe_free(buffer.getCtxtPtr());
    xe_free(buffer.getCtxtPtr());
    EXPECT_EQ(xe_setp(buffer.getCtxtPtr(), nullptr, 0), RT_OK);
    EXPECT_EQ(xe_null(buffer.getCtxtPtr(), ASN1EXPL), 2);
}

TEST(FreedTwice, HeapWithoutCellIsLeftAlone) {
    rtMemHeap* heap = nullptr;
    ASSERT_EQ(rtMemHeapCreate(&heap, nullptr), RT_OK);
    rtMemHeapRelease(&heap);
    EXPECT_EQ(heap, nullptr);
    rtMemHeapRelease(&heap);
    rtMemHeapFreePtr(&heap, nullptr);
}

TEST(FreedTwice, ListsAreFreedOnce) {
    ASN1BEREncodeBuffer buffer;
    ASN1CTXT* const ctxt = buffer.getCtxtPtr();
    ASN1TSeqOfList list;
    rtDListInit(&list);
    ASSERT_NE(rtDListAppend(ctxt, &list, rtMemHeapAlloc(&ctxt->typeHeap, 4)), nullptr);
    rtDListFreeAll(ctxt, &list);
    rtDListFreeAll(ctxt, &list);
    rtDListFreeNodes(ctxt, &list);
    rtSList single;
    rtSListInitEx(nullptr, &single);
    ASSERT_NE(rtSListAppend(&single, nullptr), nullptr);
    rtSListFree(&single);
    rtSListFree(&single);
}

TEST(FreedTwice, NumberIsFreedOnce) {
    ASN1BEREncodeBuffer buffer;
    ASN1BigInt value;
    rtBigIntInit(&value);
    ASSERT_EQ(rtBigIntSetStr(buffer.getCtxtPtr(), &value, "123456789012345678901234567890", 0), RT_OK);
    rtBigIntFree(buffer.getCtxtPtr(), &value);
    rtBigIntFree(buffer.getCtxtPtr(), &value);
    EXPECT_EQ(rtBigIntSetStr(buffer.getCtxtPtr(), &value, "5", 0), RT_OK);
}

TEST(FreedTwice, MessageIsClosedOnce) {
    const DWORD encoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;
    const HCRYPTMSG message = CryptMsgOpenToDecode(encoding, 0, 0, 0, nullptr, nullptr);
    ASSERT_NE(message, nullptr);
    EXPECT_TRUE(CryptMsgClose(message));
    const HCRYPTMSG other = CryptMsgOpenToDecode(encoding, 0, 0, 0, nullptr, nullptr);
    EXPECT_FALSE(CryptMsgClose(message)) << "and not the other, which may lie in its slot";
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_TRUE(CryptMsgClose(other));
}

TEST(FreedTwice, CertificateLivesUntilItsLastHolderFreesIt) {
    const CBlob der = certificate("tsa_p256");
    const auto size = static_cast<DWORD>(der.cbData());
    PCCERT_CONTEXT first = CertCreateCertificateContext(X509_ASN_ENCODING, der.pbData(), size);
    PCCERT_CONTEXT second = CertDuplicateCertificateContext(first);
    EXPECT_TRUE(CertFreeCertificateContext(first));
    EXPECT_EQ(CBlob(second->pbCertEncoded, second->cbCertEncoded), der);
    EXPECT_EQ(second->pCertInfo->dwVersion, 2u);
    EXPECT_TRUE(CertFreeCertificateContext(second));
}

TEST(FreedTwice, NullIsFreed) {
    QM_free(nullptr);
    rtDefaultFree(nullptr, nullptr);
    EXPECT_TRUE(CertFreeCertificateContext(nullptr));
    EXPECT_TRUE(CryptMsgClose(nullptr));
}

// Removing what is not there

TEST(RemovalOfWhatIsAbsent, LeavesLists) {
    CExtensions extensions = some_extensions();
    extensions.erase("1.2.99");
    extensions.erase("");
    EXPECT_EQ(extensions.size(), 1u);
    CAttributes attributes = some_attributes();
    attributes.erase("1.2.99");
    EXPECT_EQ(attributes.size(), 1u);
    CInfoTypeAndValueList infos{CInfoTypeAndValue("1.2.3")};
    infos.remove("1.2.99");
    EXPECT_EQ(infos.size(), 1u);
}

TEST(RemovalOfWhatIsAbsent, LeavesEmptyLists) {
    CExtensions extensions;
    extensions.erase("1.2.5");
    EXPECT_TRUE(extensions.empty());
    CAttributes attributes;
    attributes.erase("1.2.9");
    EXPECT_TRUE(attributes.empty());
    CInfoTypeAndValueList infos;
    infos.remove("1.2.3");
    EXPECT_TRUE(infos.empty());
}

TEST(RemovalOfWhatIsAbsent, IsRefusedByTheClassOfLists) {
    ASN1BEREncodeBuffer buffer;
    ASN1CSeqOfList list(buffer);
    int element = 0;
    int stranger = 0;
    ASSERT_EQ(list.append(&element), RT_OK);
    EXPECT_EQ(list.remove(&stranger), RT_E_INVPARAM);
    EXPECT_EQ(list.remove(1), RT_E_INVPARAM);
    EXPECT_EQ(list.set(1, &stranger), RT_E_INVPARAM);
    EXPECT_EQ(list.size(), 1);
}

TEST(RemovalOfWhatIsAbsent, PutsNullIntoFieldsThatAreNull) {
    CToken token = small_token();
    token.put_accuracy(nullptr);
    token.put_nonce(nullptr);
    token.put_tsa(nullptr);
    token.put_extensions(nullptr);
    token.put_signedAttributes(nullptr);
    token.put_unsignedAttributes(nullptr);
    token.put_certificates(nullptr);
    EXPECT_EQ(token.get_certificates(), nullptr);
    CResponse response;
    response.put_timeStampToken(nullptr);
    EXPECT_EQ(response.get_timeStampToken(), nullptr);
}

// Free text without texts

TEST(EmptyFreeText, IsAnEmptyTextEachTime) {
    const CPKIFreeText empty;
    const CPKIFreeTextString& first = empty;
    const CPKIFreeTextString& second = CPKIFreeText();
    EXPECT_STREQ(first.get_value(), L"");
    EXPECT_STREQ(second.get_value(), L"");
}

TEST(EmptyFreeText, StaysEmptyWhenItsTextIsPut) {
    CPKIFreeText empty;
    const CPKIFreeTextString& text = empty;
    empty.insert(text);
    EXPECT_EQ(empty.size(), 1u);
    EXPECT_STREQ(static_cast<const CPKIFreeTextString&>(CPKIFreeText()).get_value(), L"");
}

// Taking in a part of oneself

TEST(PartOfItself, IsPutIntoARequest) {
    CRequest request = full_request();
    const CBlob before = request.encode();
    request.put_reqPolicy(request.get_reqPolicy());
    request.put_nonce(request.get_nonce());
    request.put_extensions(request.get_extensions());
    EXPECT_EQ(request.encode(), before);
    request.put_reqPolicy(request.get_reqPolicy() + 2);
    EXPECT_STREQ(request.get_reqPolicy(), "2.3");
}

TEST(PartOfItself, IsPutIntoAToken) {
    CToken token = full_token();
    token.put_accuracy(token.get_accuracy());
    token.put_nonce(token.get_nonce());
    token.put_nonce(&token.get_serialNumber());
    token.put_tsa(token.get_tsa());
    token.put_extensions(token.get_extensions());
    token.put_certificates(token.get_certificates());
    token.put_signedAttributes(token.get_signedAttributes());
    token.put_unsignedAttributes(token.get_signedAttributes());
    EXPECT_TRUE(*token.get_nonce() == number("05"));
    EXPECT_STREQ(token.get_tsa()->get_dNSName(), L"tsa.example");
    EXPECT_TRUE(*token.get_signedAttributes() == some_attributes());
    EXPECT_EQ(token.get_certificates()->front(), certificate("tsa_p256"));
}

TEST(PartOfItself, IsPutIntoAResponse) {
    CResponse response = full_response();
    const CBlob before = response.encode();
    response.put_status(response.get_status());
    response.put_timeStampToken(response.get_timeStampToken());
    EXPECT_EQ(response.encode(), before);
}

TEST(PartOfItself, IsTheAlgorithmThatATokenIsSignedWith) {
    CToken token = full_token();
    const TestKey key("tsa_p256");
    token.sign(key.provider(), AT_SIGNATURE, token.get_certificates()->front(), token.get_hashAlgorithm());
    EXPECT_TRUE(token.verify(token.get_certificates()->front()));
}

TEST(PartOfItself, IsAddedToAList) {
    CAttributes attributes = some_attributes();
    attributes.push_back(attributes.front());
    attributes.front().add(attributes.front().begin()->get_value());
    attributes.front().add(*attributes.front().begin());
    EXPECT_EQ(attributes.front().size(), 3u);
    attributes.erase(attributes.front().get_oid());
    EXPECT_EQ(attributes.size(), 1u);
    CExtensions extensions = some_extensions();
    extensions.insert(extensions.front());
    EXPECT_EQ(extensions.size(), 1u);
    extensions.erase(extensions.front().get_extnID());
    EXPECT_TRUE(extensions.empty());
    CBlobList blobs{blob("01 02")};
    blobs.push_back(blobs.front());
    blobs.front().assign(blobs.front().pbData() + 1, 1);
    EXPECT_EQ(blobs, (CBlobList{blob("02"), blob("01 02")}));
}

TEST(PartOfItself, IsPutIntoValues) {
    CAlgorithmIdentifier algorithm("1.2.840.1");
    algorithm.put_parameters(blob("05 00"));
    algorithm.put_algorithm(algorithm.get_algorithm() + 2);
    algorithm.put_parameters(algorithm.get_parameters());
    EXPECT_STREQ(algorithm.get_algorithm(), "2.840.1");
    EXPECT_EQ(hex(algorithm.get_parameters()), hex(blob("05 00")));
    CContentInfo content("1.2.3", blob("04 01 aa"));
    content.put_contentType(content.get_contentType());
    content.put_content(content.get_content());
    EXPECT_EQ(hex(content.get_content()), hex(blob("04 01 aa")));
    CPKIStatusInfo status = rejection();
    status.put_statusString(status.get_statusString());
    EXPECT_STREQ(static_cast<const CPKIFreeTextString&>(status.get_statusString()).get_value(), L"refused");
    CPKIFreeText text = status.get_statusString();
    text.insert(text.front());
    text.remove(text.front().get_language());
    CStringProxy proxy("a text that is too long for the string object");
    proxy = CStringProxy(proxy.c_str() + 2);
    EXPECT_STREQ(proxy.c_str(), "text that is too long for the string object");
}

TEST(PartOfItself, IsTheNameInAGeneralName) {
    CGeneralName name = authority_name();
    name.put_rfc822Name(name.get_dNSName());
    EXPECT_STREQ(name.get_rfc822Name(), L"tsa.example");
    name.put_uniformResourceIdentifier(name.get_rfc822Name() + 4);
    EXPECT_STREQ(name.get_uniformResourceIdentifier(), L"example");
    name.put_registeredID(name.get_uniformResourceIdentifier());
    EXPECT_STREQ(name.get_registeredID(), L"example");
    name.put_iPAddress(blob("7f 00 00 01"));
    name.put_directoryName(*name.get_iPAddress());
    EXPECT_EQ(*name.get_directoryName(), blob("7f 00 00 01"));
    const CGeneralName& same = name;
    name = same;
    EXPECT_EQ(*name.get_directoryName(), blob("7f 00 00 01"));
}

TEST(PartOfItself, IsCombinedWithABitString) {
    ASN1BEREncodeBuffer buffer;
    ASN1CBitStr bits(buffer, 16);
    ASSERT_EQ(bits.set(3), RT_OK);
    ASSERT_EQ(bits.set(12), RT_OK);
    const auto size = static_cast<uint32_t>(bits.size());
    EXPECT_EQ(bits.doOr(bits.getBytes(), size), RT_OK);
    EXPECT_EQ(bits.doAnd(bits.getBytes(), size), RT_OK);
    EXPECT_EQ(bits.cardinality(), 2);
    EXPECT_EQ(bits.doXor(bits.getBytes(), size), RT_OK);
    EXPECT_EQ(bits.cardinality(), 0);
}

TEST(PartOfItself, IsPutIntoAStampRequest) {
    CMSRequest request = authenticode_request();
    const CBlob before = request.encode();
    request.put_contentInfo(request.get_contentInfo());
    request.put_attributes(request.get_attributes());
    request.put_timeStampAlgorithm(request.get_timeStampAlgorithm());
    EXPECT_EQ(request.encode(), before);
    request.put_timeStampAlgorithm(request.get_timeStampAlgorithm() + 2);
    EXPECT_STREQ(request.get_timeStampAlgorithm(), "3.6.1.4.1.311.3.2.1");
}

TEST(PartOfItself, IsPutIntoAStamp) {
    CMSStamp stamp = signed_stamp();
    stamp.put_content(stamp.get_content());
    stamp.put_signingTime(stamp.get_signingTime());
    stamp.put_certificates(stamp.get_certificates());
    EXPECT_TRUE(stamp.verify(stamp.get_certificates()->front()));
    EXPECT_EQ(stamp.get_content(), small_stamp().get_content());
}

TEST(PartOfItself, IsPutIntoIdentifiersOfCertificates) {
    CGeneralNames names{authority_name()};
    CIssuerSerial issuer(names, number("05"));
    issuer.put_issuer(issuer.get_issuer());
    issuer.put_serialNumber(issuer.get_serialNumber());
    CESSCertIDv2 identifier(blob("aa bb"), CAlgorithmIdentifier("1.2.3"));
    identifier.put_issuerSerial(&issuer);
    identifier.put_issuerSerial(identifier.get_issuerSerial());
    identifier.put_certHash(identifier.get_certHash());
    identifier.put_hashAlgorithm(identifier.get_hashAlgorithm());
    EXPECT_EQ(*identifier.get_issuerSerial(), issuer);
    EXPECT_EQ(identifier.get_certHash(), blob("aa bb"));
    COtherCertID other(blob("aa bb"), CAlgorithmIdentifier("1.2.3"));
    other.put_otherCertHash(other.get_otherCertHash());
    COtherHash hash = other.get_otherCertHash();
    hash.put_otherHash(*hash.get_otherHash());
    hash.put_sha1Hash(hash.get_otherHash()->get_hashValue());
    hash.put_sha1Hash(*hash.get_sha1Hash());
    EXPECT_EQ(*hash.get_sha1Hash(), blob("aa bb"));
    CAttrSigningCertificateV2 attribute(CESSCertIDv2List{identifier});
    const CPolicyInformationList policies{CPolicyInformation("1.2.3")};
    attribute.put_policies(&policies);
    attribute.put_policies(attribute.get_policies());
    attribute.put_certs(attribute.get_certs());
    EXPECT_EQ(attribute.get_certs().front(), identifier);
    EXPECT_EQ(attribute.get_policies()->size(), 1u);
}

TEST(PartOfItself, IsPutIntoDistributionPoints) {
    const CGeneralNames names{authority_name()};
    CDistributionPointName name(names);
    name.put_fullName(*name.get_fullName());
    EXPECT_EQ(*name.get_fullName(), names);
    CDistributionPoint point;
    point.put_distributionPoint(&name);
    point.put_cRLIssuer(&names);
    const CReasonFlags reasons(6);
    point.put_reasons(&reasons);
    point.put_distributionPoint(point.get_distributionPoint());
    point.put_cRLIssuer(point.get_distributionPoint()->get_fullName());
    point.put_cRLIssuer(point.get_cRLIssuer());
    point.put_reasons(point.get_reasons());
    EXPECT_EQ(*point.get_cRLIssuer(), names);
    EXPECT_EQ(*point.get_reasons(), reasons);
}

TEST(PartOfItself, IsPutIntoARevocationAnnouncement) {
    CRevAnnContent announcement;
    const CExtensions details = some_extensions();
    announcement.put_crlDetails(&details);
    announcement.put_crlDetails(announcement.get_crlDetails());
    announcement.put_certId(announcement.get_certId());
    announcement.put_badSinceDate(announcement.get_willBeRevokedAt());
    EXPECT_EQ(announcement.get_crlDetails()->size(), 1u);
}

TEST(PartOfItself, IsRemovedFromAListByItsOwnName) {
    CInfoTypeAndValueList infos{CInfoTypeAndValue("1.2.3"), CInfoTypeAndValue("1.2.4", blob("05 00"))};
    infos.insert(infos.back());
    infos.remove(infos.front().get_infoType());
    ASSERT_EQ(infos.size(), 1u);
    infos.remove(infos.front().get_infoType());
    EXPECT_TRUE(infos.empty());
    const CLanguageTag german("de");
    CPKIFreeText texts;
    texts.push_back(CPKIFreeTextString(L"", german));
    texts.push_back(CPKIFreeTextString(L"", german));
    texts.remove(texts.front().get_language());
    EXPECT_TRUE(texts.empty());
}

TEST(PartOfItself, IsTheValueThatIsRead) {
    CGeneralName name;
    name.put_directoryName(blob("82 0b 74 73 61 2e 65 78 61 6d 70 6c 65"));
    name.decode(*name.get_directoryName());
    EXPECT_STREQ(name.get_dNSName(), L"tsa.example");
    CContentInfo content("1.2.3", blob("30 09 06 02 2a 03 a0 03 04 01 aa"));
    content.decode(content.get_content());
    EXPECT_EQ(content.get_content(), blob("04 01 aa"));
    CExtensions extensions;
    extensions.insert(CExtension(CExtValue("1.2.5", some_extensions().encode())));
    extensions.decode(extensions.front().get_extnValue());
    EXPECT_EQ(extensions.encode(), some_extensions().encode());
    CAttributes attributes{CAttribute("1.2.9")};
    attributes.front().add(other_attributes().encode());
    attributes.decode(attributes.front().begin()->get_value());
    EXPECT_EQ(attributes.size(), 2u);
    CBigInteger integer = number("02 01 07");
    integer.decode(integer);
    EXPECT_EQ(integer, number("07"));
    CCertificateValue octets(certificate("tsa_p256"));
    octets.decode(octets);
    EXPECT_EQ(octets.encode(), certificate("tsa_p256"));
}

TEST(BlobAppendedToItself, KeepsItsOctetsInFront) {
    CBlob octets = blob("01 02 03");
    octets += octets;
    EXPECT_EQ(octets.cbData(), 6u);
    EXPECT_EQ(CBlob(octets.pbData(), 3), blob("01 02 03"));
    CBlob empty;
    empty += empty;
    EXPECT_EQ(empty.cbData(), 0u);
}

TEST(BlobDecodedIntoItsOwner, IsReadBeforeItGoes) {
    CRequest request(CAlgorithmIdentifierEx(kSha256Text), full_request().encode(), false);
    request.decode(request.get_hashedMessage());
    EXPECT_STREQ(request.get_reqPolicy(), "1.2.3");
    CToken token("1.2.3", CAlgorithmIdentifierEx(kSha256Text), signed_token().encode(), number("05"),
                 CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u), false);
    token.decode(token.get_hashedMessage());
    EXPECT_TRUE(token.verify(certificate("tsa_p256")));
    CResponse response;
    const CToken carrier("1.2.3", CAlgorithmIdentifierEx(kSha256Text), full_response().encode(), number("05"),
                         CDateTime(2024u, 1u, 2u, 3u, 4u, 5u, 0u, 0u), false);
    response.put_timeStampToken(&carrier);
    response.decode(response.get_timeStampToken()->get_hashedMessage());
    EXPECT_TRUE(response.get_timeStampToken()->verify(certificate("tsa_p256")));
    CMSRequest stamp_request("1.2.3", CContentInfo("1.2.4", authenticode_request().encode()));
    stamp_request.decode(stamp_request.get_contentInfo().get_content());
    EXPECT_EQ(stamp_request.encode(), authenticode_request().encode());
    const CBlob message = signed_stamp().encode();
    CMSStamp stamp(message, CDateTime(0L, 0));
    stamp.decode(stamp.get_content());
    EXPECT_EQ(stamp.get_content(), small_stamp().get_content());
    EXPECT_TRUE(stamp.verify(stamp.get_certificates()->front()));
}

TEST(AssignmentToItself, ChangesNothing) {
    CRequest request = full_request();
    CToken token = signed_token();
    CResponse response = full_response();
    const CBlob encoded_request = request.encode();
    const CBlob encoded_token = token.encode();
    const CBlob encoded_response = response.encode();
    const CRequest& same_request = request;
    const CToken& same_token = token;
    const CResponse& same_response = response;
    request = same_request;
    token = same_token;
    response = same_response;
    EXPECT_EQ(request.encode(), encoded_request);
    EXPECT_EQ(token.encode(), encoded_token);
    EXPECT_EQ(response.encode(), encoded_response);
}

}  // namespace
}  // namespace Quillmark::test

#pragma once

// The fields of a token, and their way to and from TSTInfo (RFC 3161 2.4.2).

#include <cstdint>
#include <memory>
#include <string>

#include "asn1data/records.h"
#include "platform/cryptoapi.h"
#include "tsp/token.h"

namespace Quillmark::PKI::TSP {

class QUILLMARK_API CToken::Impl {
  public:
    /// Chooses the copy that has no message yet.
    struct WithoutMessage {};

    Impl();
    /// The copy has a handle of its own to the message.
    Impl(const Impl& other);
    Impl(const Impl& other, WithoutMessage);
    Impl& operator=(const Impl&) = delete;
    /// Closes the message.
    ~Impl();

    /// Fills `record` anew, on the heap of `ctxt`, which alone owns what the record points to.
    void fillTSTInfo(asn1data::ASN1T_TSTInfo& record, ASN1CTXT* ctxt) const;
    /// Writes over the fields; optional ones that `record` lacks stay as they are.
    void readTSTInfo(const asn1data::ASN1T_TSTInfo& record);

    /// Takes a handle of its own to the message of `other`, if that has one.
    void duplicate_message(const Impl& other);
    /// Reads `encodedToken` into all other fields, which are as in a new object.
    void decode();

    std::uint32_t version = 1;
    std::string policy;
    ASN1::CAlgorithmIdentifierEx hashAlgorithm;
    CBlob hashedMessage;
    ASN1::CBigInteger serialNumber;
    std::string genTime;
    bool ordering = false;
    std::unique_ptr<CAccuracy> accuracy;
    std::unique_ptr<ASN1::CBigInteger> nonce;
    std::unique_ptr<ASN1::CGeneralName> tsa;
    std::unique_ptr<ASN1::CExtensions> extensions;
    std::unique_ptr<ASN1::CAttributes> signedAttributes;
    std::unique_ptr<ASN1::CAttributes> unsignedAttributes;
    std::unique_ptr<CBlobList> certificates;
    HCRYPTMSG messageHandle =
        nullptr;  ///< owned; after a failed `sign` it may name a message that is closed already
    ASN1::CSignerInfo signerInfo;
    CBlob encodedToken;             ///< empty when there is no cached form
    bool unknownAlgorithm = false;  ///< the service did not know an algorithm of the decoded message
};

}  // namespace Quillmark::PKI::TSP

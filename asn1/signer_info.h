#pragma once

// SignerInfo (RFC 5652 5.3) of a signer who is named by issuer and serial number. It is only read, never
// written.

#include "asn1/algorithm_identifier.h"
#include "asn1/big_integer.h"
#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_SignerInfo;
}

namespace Quillmark::ASN1 {

/// Who signed, and how.
class CSignerInfo {
  public:
    CSignerInfo() = default;

    unsigned int get_version() const { return version_; }
    /// The DER of the issuer's Name as it was received.
    const CBlob& get_issuer() const { return issuer_; }
    const CBigInteger& get_serialNumber() const { return serialNumber_; }
    const CAlgorithmIdentifier& get_signatureAlgorithm() const { return signatureAlgorithm_; }
    const CAlgorithmIdentifier& get_digestAlgorithm() const { return digestAlgorithm_; }
    const CBlob& get_signature() const { return signature_; }
    void put_version(unsigned int version) { version_ = version; }
    void put_issuer(const CBlob& issuer) { issuer_ = issuer; }
    void put_serialNumber(const CBigInteger& serialNumber) { serialNumber_ = serialNumber; }
    void put_signatureAlgorithm(const CAlgorithmIdentifier& algorithm) { signatureAlgorithm_ = algorithm; }
    void put_digestAlgorithm(const CAlgorithmIdentifier& algorithm) { digestAlgorithm_ = algorithm; }
    void put_signature(const CBlob& signature) { signature_ = signature; }

    /// Throws `CRYPT_E_ASN1_INTERNAL` when the signer is named by subject key identifier.
    void decode(const CBlob& der);

  private:
    friend struct ASN1T_SignerInfo_traits;

    unsigned int version_ = 0;
    CBlob issuer_;
    CBigInteger serialNumber_;
    CAlgorithmIdentifier signatureAlgorithm_;
    CAlgorithmIdentifier digestAlgorithm_;
    CBlob signature_;
};

bool operator==(const CSignerInfo& left, const CSignerInfo& right);
bool operator!=(const CSignerInfo& left, const CSignerInfo& right);

/// What the traits' `get` does.
void ASN1T_SignerInfo_get(CSignerInfo& value, const asn1data::ASN1T_SignerInfo& record);

struct ASN1T_SignerInfo_traits {
    typedef asn1data::ASN1T_SignerInfo ASN1_T;
    static void get(const ASN1_T& record, CSignerInfo& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1

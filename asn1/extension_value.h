#pragma once

// Typed forms of extension values, and the Time CHOICE (RFC 5280 4.1.2.5) that attributes use too.

#include "asn1/codec.h"
#include "asn1/extension.h"
#include "asn1/general_name.h"

namespace asn1data {
struct ASN1T_PrivateKeyUsagePeriod;
struct ASN1T_Time;
}  // namespace asn1data

namespace Quillmark::ASN1 {

class CTimeChoiceImpl;

/// A time as UTCTime (type 1) through the year 2049 and as GeneralizedTime (type 2) after it, in whole
/// seconds.
class CTimeChoice {
  public:
    /// The first instant that `CDateTime` can hold, as type 1.
    CTimeChoice();
    explicit CTimeChoice(const CDateTime& time);
    CTimeChoice(const CTimeChoice& other);
    CTimeChoice& operator=(const CTimeChoice& other);
    ~CTimeChoice();

    /// Ends the use of this object: afterwards it can only be assigned to or destroyed.
    void clear();

    unsigned int get_type() const;
    /// Null when there is no value.
    const CDateTime* get_time() const;
    void put_time(const CDateTime& time);

    CBlob encode() const;
    /// The type follows from the year and not from the wire.
    void decode(const CBlob& der);

  private:
    auto_ptr<CTimeChoiceImpl> impl_;
};

// Typed values. The default constructor leaves the DER empty; the constructor from a typed value encodes it;
// the constructor from a blob takes the DER of the value and decodes it; `encode` writes the typed member
// into the DER, `decode` reads it back; `put_` stores the member and then encodes, so that after a failed
// `put_` the member is new and the DER old.

/// Why a certificate was revoked (RFC 5280 5.3.1). Any number of 32 bits is a value; those beyond the largest
/// name are refused by the codec.
enum CrlReason : unsigned int {
    CrlReasonUnspecified = 0,
    CrlReasonKeyCompromise = 1,
    CrlReasonCACompromise = 2,
    CrlReasonAffiliationChanged = 3,
    CrlReasonSuperseded = 4,
    CrlReasonCessationOfOperation = 5,
    CrlReasonCertificateHold = 6,
    CrlReasonRemoveFromCRL = 8,
    CrlReasonPrivilegeWithdrawn = 9,
    CrlReasonAACompromise = 10
};

/// reasonCode (RFC 5280 5.3.1).
class CExtCRLReason : public CExtValue {
  public:
    CExtCRLReason();
    explicit CExtCRLReason(CrlReason reason);
    explicit CExtCRLReason(const CBlob& der);

    void encode();
    void decode();
    CrlReason get_reason() const { return reason_; }
    void put_reason(CrlReason reason);

  private:
    CrlReason reason_ = CrlReasonUnspecified;
};

/// holdInstructionCode (RFC 3280 5.3.2).
class CExtHoldInstructionCode : public CExtValue {
  public:
    CExtHoldInstructionCode();
    explicit CExtHoldInstructionCode(const char* code);
    explicit CExtHoldInstructionCode(const CBlob& der);

    void encode();
    void decode();
    const char* get_code() const { return code_.c_str(); }
    void put_code(const char* code);

  private:
    CStringProxy code_;
};

/// invalidityDate (RFC 5280 5.3.2).
class CExtInvalidityDate : public CExtValue {
  public:
    CExtInvalidityDate();
    explicit CExtInvalidityDate(const CDateTime& invalidityDate);
    explicit CExtInvalidityDate(const CBlob& der);

    void encode();
    void decode();
    const CDateTime& get_invalidityDate() const { return invalidityDate_; }
    void put_invalidityDate(const CDateTime& invalidityDate);

  private:
    CDateTime invalidityDate_;
};

/// certificateIssuer (RFC 5280 5.3.3).
class CExtCertificateIssuer : public CExtValue {
  public:
    CExtCertificateIssuer();
    explicit CExtCertificateIssuer(const CGeneralNames& issuer);
    explicit CExtCertificateIssuer(const CBlob& der);

    void encode();
    void decode();
    const CGeneralNames& get_issuer() const { return issuer_; }
    void put_issuer(const CGeneralNames& issuer);

  private:
    CGeneralNames issuer_;
};

/// privateKeyUsagePeriod (RFC 3280 4.2.1.4), in whole seconds.
class CExtPrivateKeyUsagePeriod : public CExtValue {
  public:
    /// Null for a date that is absent; both may be.
    CExtPrivateKeyUsagePeriod(const CDateTime* notBefore, const CDateTime* notAfter);
    explicit CExtPrivateKeyUsagePeriod(const CBlob& der);
    CExtPrivateKeyUsagePeriod(const CExtPrivateKeyUsagePeriod& other);
    CExtPrivateKeyUsagePeriod& operator=(const CExtPrivateKeyUsagePeriod& other);
    ~CExtPrivateKeyUsagePeriod();

    void encode();
    /// The DER is then this library's own.
    void decode();
    /// Null when absent.
    const CDateTime* get_notBefore() const { return notBefore_.get(); }
    /// Null when absent.
    const CDateTime* get_notAfter() const { return notAfter_.get(); }
    /// Null clears.
    void put_notBefore(const CDateTime* notBefore);
    /// Null clears.
    void put_notAfter(const CDateTime* notAfter);

  private:
    auto_ptr<CDateTime> notBefore_;
    auto_ptr<CDateTime> notAfter_;
};

/// The number as it is.
struct ASN1T_CRLReason_traits {
    typedef unsigned int ASN1_T;
    static void set(ASN1CTXT* ctxt, unsigned int& record, const CrlReason& value);
    static void get(const unsigned int& record, CrlReason& value);
    static void copy(ASN1CTXT* ctxt, const unsigned int& source, unsigned int& target);
};

struct ASN1T_PrivateKeyUsagePeriod_traits {
    typedef asn1data::ASN1T_PrivateKeyUsagePeriod ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CExtPrivateKeyUsagePeriod& value);
    static void get(const ASN1_T& record, CExtPrivateKeyUsagePeriod& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

struct ASN1T_Time_traits {
    typedef asn1data::ASN1T_Time ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CTimeChoice& value);
    static void get(const ASN1_T& record, CTimeChoice& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1

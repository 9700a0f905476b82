#pragma once

// Typed forms of extension values, and the Time CHOICE (RFC 5280 4.1.2.5) that attributes use too.

#include "asn1/codec.h"
#include "asn1/extension.h"
#include "asn1/general_name.h"

namespace asn1data {
struct ASN1T_Time;
}

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

// Typed values. The default constructor leaves the DER empty; the constructor from a blob takes the DER of
// the value and decodes it; `encode` writes the typed member into the DER, `decode` reads it back; `put_`
// does both.

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

struct ASN1T_Time_traits {
    typedef asn1data::ASN1T_Time ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CTimeChoice& value);
    static void get(const ASN1_T& record, CTimeChoice& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1

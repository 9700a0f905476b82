#pragma once

// AlgorithmIdentifier (RFC 5280 4.1.1.2): an algorithm's OID and the DER of its parameters.

#include "asn1/codec.h"

namespace asn1data {
struct ASN1T_AlgorithmIdentifier;
}

namespace Quillmark::ASN1 {

/// An algorithm with its parameters.
class CAlgorithmIdentifier {
  public:
    CAlgorithmIdentifier();
    explicit CAlgorithmIdentifier(const char* oid);
    CAlgorithmIdentifier(const CAlgorithmIdentifier& other);
    CAlgorithmIdentifier& operator=(const CAlgorithmIdentifier& other);
    virtual ~CAlgorithmIdentifier();

    /// Replaces the OID in dotted text; it is not looked at before `encode`.
    virtual void put_algorithm(const char* oid);

    /// Takes both fields of `other` through `put_algorithm` and `put_parameters`.
    void assign(const CAlgorithmIdentifier& other);
    void swap(CAlgorithmIdentifier& other);

    const char* get_algorithm() const { return algorithm_.c_str(); }
    /// The whole DER of the parameters; empty means absent, and a NULL is two octets.
    const CBlob& get_parameters() const { return parameters_; }
    void put_parameters(CBlob parameters);

    CBlob encode() const;
    void decode(const CBlob& der);

  private:
    friend void ASN1T_AlgorithmIdentifier_get(CAlgorithmIdentifier& value,
                                              const asn1data::ASN1T_AlgorithmIdentifier& record);

    CStringProxy algorithm_;
    CBlob parameters_;
};

/// Same OID text and same parameters, octet by octet.
bool operator==(const CAlgorithmIdentifier& left, const CAlgorithmIdentifier& right);
bool operator!=(const CAlgorithmIdentifier& left, const CAlgorithmIdentifier& right);

/// An algorithm with a number of the application's own that belongs to the OID: another OID clears it.
class CAlgorithmIdentifierEx : public CAlgorithmIdentifier {
  public:
    CAlgorithmIdentifierEx() = default;
    explicit CAlgorithmIdentifierEx(const char* oid);
    explicit CAlgorithmIdentifierEx(const CAlgorithmIdentifier& other);
    CAlgorithmIdentifierEx(const CAlgorithmIdentifierEx& other) = default;
    CAlgorithmIdentifierEx& operator=(const CAlgorithmIdentifierEx& other) = default;
    ~CAlgorithmIdentifierEx() override;

    /// Does nothing when the text is the same as before; else clears `algExtra`.
    void put_algorithm(const char* oid) override;

    unsigned int get_algExtra() const { return algExtra_; }
    void put_algExtra(unsigned int algExtra) { algExtra_ = algExtra; }

  private:
    unsigned int algExtra_ = 0;
};

/// A record on the heap of `ctxt`, with null or empty `parameters` absent. A bad OID and parameters that do
/// not fit a known OID throw `CRYPT_E_ASN1_INTERNAL`.
asn1data::ASN1T_AlgorithmIdentifier* ASN1T_AlgorithmIdentifier_set(ASN1CTXT* ctxt, const char* oid,
                                                                   const CBlob* parameters);
void ASN1T_AlgorithmIdentifier_get(CAlgorithmIdentifier& value,
                                   const asn1data::ASN1T_AlgorithmIdentifier& record);

struct ASN1T_AlgorithmIdentifier_traits {
    typedef asn1data::ASN1T_AlgorithmIdentifier ASN1_T;
    static void set(ASN1CTXT* ctxt, ASN1_T& record, const CAlgorithmIdentifier& value);
    static void get(const ASN1_T& record, CAlgorithmIdentifier& value);
    static void copy(ASN1CTXT* ctxt, const ASN1_T& source, ASN1_T& target);
};

}  // namespace Quillmark::ASN1

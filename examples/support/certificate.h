#pragma once

// What a certificate says of itself, read by the platform service.

#include <string>

#include "asn1/big_integer.h"
#include "platform/cryptoapi.h"
#include "values/blob.h"
#include "values/datetime.h"

namespace example {

class Certificate {
  public:
    explicit Certificate(const Quillmark::CBlob& der);
    ~Certificate();
    Certificate(const Certificate&) = delete;
    Certificate& operator=(const Certificate&) = delete;

    /// The DER of the Names.
    Quillmark::CBlob subject() const;
    Quillmark::CBlob issuer() const;
    Quillmark::ASN1::CBigInteger serial_number() const;
    /// The object identifier of the public key's algorithm.
    std::string key_algorithm() const;
    Quillmark::CDateTime not_before() const;
    Quillmark::CDateTime not_after() const;
    /// Whether the key is for time-stamping and nothing else, and everybody must heed it (RFC 3161 2.3): one
    /// extended key usage, id-kp-timeStamping alone, and critical.
    bool is_for_time_stamping() const;

  private:
    PCCERT_CONTEXT context_;
};

/// The text of a Name in DER, as "CN=...,O=...".
std::string name_text(const Quillmark::CBlob& name);

std::string to_utf8(const wchar_t* text);

}  // namespace example

#pragma once

// Makes stamps.

#include <string>

#include "authority/clock.h"
#include "authority/options.h"
#include "authority/serial_numbers.h"
#include "support/key.h"
#include "tsp/cms_request.h"
#include "tsp/cms_stamp.h"
#include "tsp/request.h"
#include "tsp/token.h"

namespace authority {

/// What all threads share; it may be used by all of them at once.
struct Authority {
    const Options& options;
    const example::Key& key;
    SerialNumbers& serial_numbers;
    Clock& clock;
};

/// What one thread stamps with: an object of the library is for one thread at a time, so each has copies of
/// those that go into every stamp.
class Stamper {
  public:
    /// `certificates` begins with the authority's own.
    Stamper(const Authority& authority, const Quillmark::CBlobList& certificates);

    /// Makes a stamp under each policy that is never given away, and throws `example::Failure` unless its
    /// signature holds with the certificate. Takes no serial number.
    void try_out();

    const example::Terms& terms() const { return authority_.options.terms; }

    /// Throws `example::Refusal`, `example::Failure` and what the library throws.
    Quillmark::PKI::TSP::CToken stamp(const Quillmark::PKI::TSP::CRequest& request);

    /// `content` is the DER of an OCTET STRING.
    Quillmark::PKI::TSP::CMSStamp stamp(const Quillmark::CBlob& content);

  private:
    Quillmark::PKI::TSP::CToken sign(const Quillmark::PKI::TSP::CRequest& request, const std::string& policy,
                                     const Quillmark::ASN1::CBigInteger& serial_number);
    Quillmark::CDateTime time_of_stamp();

    Authority authority_;
    Quillmark::CBlob certificate_;
    Quillmark::CBlobList certificates_;
    Quillmark::CDateTime not_before_;
    Quillmark::CDateTime not_after_;
    Quillmark::ASN1::CAlgorithmIdentifierEx digest_;
    Quillmark::ASN1::CAttributes attributes_;
    Quillmark::ASN1::CGeneralName name_;
};

}  // namespace authority

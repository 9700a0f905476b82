#include "authority/stamper.h"

#include "support/certificate.h"
#include "support/failure.h"
#include "support/hash.h"
#include "support/number.h"
#include "support/signer.h"

namespace authority {

namespace {

using namespace Quillmark;
using example::Certificate;
using example::Failure;
using example::Refusal;

ASN1::CAlgorithmIdentifierEx digest_for(const Options& options, const CBlob& certificate) {
    const char* bound = example::bound_digest(Certificate(certificate).key_algorithm());
    if (options.signature_hash != nullptr) {
        return ASN1::CAlgorithmIdentifierEx(options.signature_hash->oid);
    }
    return ASN1::CAlgorithmIdentifierEx(bound != nullptr ? bound : example::sha256().oid);
}

// The attribute's own hash is of use only to those who know it: a signature by SHA-1 is for clients that know
// no other.
const example::HashAlgorithm& identifying_hash(const Options& options) {
    return options.signature_hash != nullptr ? *options.signature_hash : example::sha256();
}

ASN1::CGeneralName subject_of(const CBlob& certificate) {
    ASN1::CGeneralName name;
    name.put_directoryName(Certificate(certificate).subject());
    return name;
}

}  // namespace

Stamper::Stamper(const Authority& authority, const CBlobList& certificates)
    : authority_(authority),
      certificate_(certificates.front()),
      certificates_(certificates),
      not_before_(Certificate(certificate_).not_before()),
      not_after_(Certificate(certificate_).not_after()),
      digest_(digest_for(authority.options, certificate_)),
      attributes_(example::signing_certificate(certificate_, identifying_hash(authority.options))),
      name_(subject_of(certificate_)) {}

void Stamper::try_out() {
    const CBlob nothing = example::hash_of(example::sha256(), CBlob());
    const PKI::TSP::CRequest request(ASN1::CAlgorithmIdentifierEx(example::sha256().oid), nothing, true);
    for (const std::string& policy : terms().policies) {
        example::attempt("signing with the key, the hash of signatures and the policy " + policy, [&] {
            const PKI::TSP::CToken token = sign(request, policy, example::random_number(16));
            if (!token.verify(certificate_)) {
                throw Failure("the signature of the key does not hold with the certificate");
            }
        });
    }
}

PKI::TSP::CToken Stamper::stamp(const PKI::TSP::CRequest& request) {
    const char* asked = request.get_reqPolicy();
    return sign(request, asked != nullptr ? asked : terms().policies.front(),
                example::positive_number(authority_.serial_numbers.next()));
}

PKI::TSP::CToken Stamper::sign(const PKI::TSP::CRequest& request, const std::string& policy,
                               const ASN1::CBigInteger& serial_number) {
    PKI::TSP::CToken token(policy.c_str(), request.get_hashAlgorithm(), request.get_hashedMessage(),
                           serial_number, time_of_stamp(), authority_.options.ordering);
    token.put_accuracy(authority_.options.accuracy ? &*authority_.options.accuracy : nullptr);
    token.put_nonce(request.get_nonce());
    token.put_tsa(authority_.options.tsa_name ? &name_ : nullptr);
    token.put_signedAttributes(&attributes_);
    token.put_certificates(request.get_certReq() ? &certificates_ : nullptr);
    token.sign(authority_.key.provider(), AT_SIGNATURE, certificate_, digest_);
    return token;
}

PKI::TSP::CMSStamp Stamper::stamp(const CBlob& content) {
    PKI::TSP::CMSStamp stamp(content, time_of_stamp());
    stamp.put_certificates(&certificates_);
    stamp.sign(authority_.key.provider(), AT_SIGNATURE, certificate_, digest_);
    return stamp;
}

CDateTime Stamper::time_of_stamp() {
    const CDateTime time = authority_.clock.now();
    if (time < not_before_ || not_after_ < time) {
        throw Failure("the certificate is not valid at this time");
    }
    return time;
}

}  // namespace authority
